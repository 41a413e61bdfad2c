#pragma once

#include <new>
#include <type_traits>
#include <utility>

#include <vorn_testing/Stack.h>

namespace vorn_testing {

/// What a host did to an argument that is not its own.
struct Misuse {
  enum Kind { kChanged, kKept };
  Kind kind;
  const char* operation;  ///< What the argument belonged to.
  Stack call;             ///< The call that it came with.
};

/// `onMisuse` runs on the thread that misuses an argument; what it did is let through afterwards.
using OnMisuse = void (*)(const Misuse& misuse);
void watchArguments(OnMisuse onMisuse);

/// Memory for one argument of a running call: a page of its own, which nobody reaches after the call.
class ArgumentPage {
 public:
  explicit ArgumentPage(const char* operation);
  ~ArgumentPage();
  ArgumentPage(const ArgumentPage&) = delete;
  ArgumentPage& operator=(const ArgumentPage&) = delete;

  void* memory() const { return m_memory; }
  void close();         ///< From now on it can only be read.
  bool open();          ///< It can be written again; whether nobody wrote to it meanwhile.
  void reportChange();  ///< For what the page itself cannot notice.

 private:
  const char* const m_operation;
  void* const m_memory;
};

/// A copy of an argument that comes by reference, for the host to use while the call runs. What the host wrote into
/// one that it may change goes back; one that it may not change is the same afterwards, or that is reported.
template <class T>
class Argument {
  using Value = std::remove_const_t<T>;

 public:
  Argument(T& original, const char* operation)
      : m_page(operation), m_original(original), m_copy(new (m_page.memory()) Value(original)) {
    if (std::is_const_v<T>) m_page.close();
  }

  ~Argument() {
    const bool untouched = m_page.open();
    Value last(std::move(*m_copy));  // so that nothing of its own is left behind on the page
    if constexpr (!std::is_const_v<T>)
      m_original = std::move(last);
    else if (untouched && !(last == m_original))
      m_page.reportChange();  // of what lies elsewhere, such as the characters of a long text
  }

  Argument(const Argument&) = delete;
  Argument& operator=(const Argument&) = delete;

  T& get() { return *m_copy; }

 private:
  ArgumentPage m_page;
  T& m_original;
  Value* const m_copy;
};

}  // namespace vorn_testing
