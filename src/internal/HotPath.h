#pragma once

/// For short functions that keep no array on the stack, so that a stack guard has nothing to protect: with it they
/// would take half as many instructions again. g++ guards them for an address that they hand out, or for a result that
/// is built in their caller's storage.
#if defined(__has_attribute) && __has_attribute(no_stack_protector)
#define VORN_NO_STACK_GUARD __attribute__((no_stack_protector))
#else
#define VORN_NO_STACK_GUARD
#endif
