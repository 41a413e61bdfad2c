#pragma once

#include <new>
#include <utility>

#include "Stack.h"

namespace vorn_testing {

/// Pages that hold arguments only while a call runs.
///
/// takeBack() makes the memory unreachable. Whoever touches it then makes `onKept` run, on its own thread, with
/// the operation that the argument belonged to and the stack of that call; the touch is let through afterwards.
using OnKept = void (*)(const char* operation, const Stack& call);
void watchLent(OnKept onKept);
void* lend();
void takeBack(void* memory, const char* operation);

/// A copy of an argument, lent to the host for one call. What the host wrote into a mutable one goes back.
template <class T>
class Lent {
 public:
  Lent(const T& original, const char* operation)
      : m_original(nullptr), m_copy(new (lend()) T(original)), m_operation(operation) {}
  Lent(T& original, const char* operation)
      : m_original(&original), m_copy(new (lend()) T(original)), m_operation(operation) {}

  ~Lent() {
    T last(std::move(*m_copy));  // so that nothing of its own is left behind on the page
    if (m_original) *m_original = std::move(last);
    takeBack(m_copy, m_operation);
  }

  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;

  T& get() { return *m_copy; }

 private:
  T* const m_original;
  T* const m_copy;
  const char* const m_operation;
};

}  // namespace vorn_testing
