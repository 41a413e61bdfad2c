#pragma once

/// For functions that are called all the time and keep no array on the stack, so that a stack guard has nothing to
/// protect: with it they would take half as many instructions again.
#if defined(__has_attribute) && __has_attribute(no_stack_protector)
#define VORN_NO_STACK_GUARD __attribute__((no_stack_protector))
#else
#define VORN_NO_STACK_GUARD
#endif
