#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn_testing::checks {

/// What the next instruction of a thread reads or writes in memory.
struct Operand {
  std::uintptr_t address, size;
  bool writes;
  bool wide;            ///< More than eight bytes, or by a repetition.
  bool changes;         ///< What stands there, without locking it.
  bool locked = false;  ///< In one step that nobody comes between.
};

/// Of a context that a handler of signals is given. On x86-64; no instruction is understood elsewhere. May be called by
/// that handler.
std::uintptr_t instructionOf(const void* context);
std::size_t operandsOf(const void* context, Operand (&operands)[2]);

}  // namespace vorn_testing::checks
