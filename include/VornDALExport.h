#pragma once

/// Marks a class whose members, type information and virtual table cross the library's border.
/// Everything else is built with hidden visibility and cannot be reached from outside.
#define VORN_DAL_API __attribute__((visibility("default")))
