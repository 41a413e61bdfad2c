#pragma once

#include <cstddef>

/// The heap as a test sees it: the program that links blocks.cpp watches what is allocated on its thread.
namespace blocks {

/// Watches the blocks that this thread allocates from now on, while it lives. One at a time.
class Watch {
 public:
  Watch();
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  /// How many are not freed yet, counting those of at least `size` bytes.
  std::size_t live(std::size_t size = 0) const;

  /// The size of the block that begins at this address; 0 when none does.
  std::size_t at(const void* address) const;
};

/// This thread's `nth` allocation from now on fails, once; 0 lets all succeed.
void fail(std::size_t nth);

}  // namespace blocks
