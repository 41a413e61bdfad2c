#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn_testing::checks {

/// What the next instruction of a thread reads or writes in memory.
struct Operand {
  std::uintptr_t address, size;
  bool writes;
  /// Surely no std::atomic: more than eight bytes, a repetition, or a change of what stands there that is not locked.
  bool plain;
};

/// Of a context that a handler of signals is given. On x86-64; no instruction is understood elsewhere. May be called by
/// that handler.
std::uintptr_t instructionOf(const void* context);
std::size_t operandsOf(const void* context, Operand (&operands)[2]);

}  // namespace vorn_testing::checks
