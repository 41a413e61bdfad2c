#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vorn_testing::checks {

/// In which order the threads of this process take mutexes, told by a program that stands before the C library's
/// functions; nothing is seen in others.
///
/// An order that is turned round is a suspicion and no more: something else may keep the two apart. So those who take
/// the mutexes are made to meet, each of them holding one when it asks for the next: what then does not go on is broken.
class LockOrder {
 public:
  LockOrder();   ///< Looks from now on; one at a time.
  ~LockOrder();  ///< Looks no more.
  LockOrder(const LockOrder&) = delete;
  LockOrder& operator=(const LockOrder&) = delete;

  /// Whether this program tells of mutexes at all.
  static bool sees();

  /// What is done from now on is step number `step`; negative for what is not looked at.
  static void at(int step);

  /// Steps that take mutexes in an order that ends where it began: two or three of them.
  std::vector<std::vector<int>> circles() const;

  /// Until the next call: a thread that asks for a mutex of that circle while it holds the one before waits for the
  /// others of the circle, a moment at most.
  static void meetAt(std::size_t circle);

  /// Whether a thread came to the mutex that step number `which` of the circle asks for.
  static bool came(std::size_t which);
};

/// Notes that this thread holds a mutex.
void noteHeld(const void* mutex);

/// The mutexes that this thread holds, as many as there is place for, while somebody looks. Returns how many they are.
std::size_t heldMutexes(const void** mutexes, std::size_t most);

}  // namespace vorn_testing::checks
