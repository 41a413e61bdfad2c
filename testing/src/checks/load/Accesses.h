#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vorn_testing::checks {

/// One look of a host's call at memory that other calls can reach: a block that was asked for, or the static data of
/// the host's library.
struct Access {
  std::uintptr_t address, size;
  bool writes;
  bool wide;     ///< By an instruction of more than eight bytes, which no std::atomic is made of.
  bool changes;  ///< What stands there, which another such instruction may undo.
  bool locked;   ///< In one step, as a std::atomic is changed.
  bool fresh;    ///< The block was asked for in this call.
  std::uintptr_t instruction;
  std::uintptr_t entry;   ///< Where the C library was entered, if the instruction is its own; else 0.
  std::uintptr_t caller;  ///< Where the host itself is.
  std::size_t held;       ///< How many mutexes the thread held, as far as there is place for them.
  const void* mutexes[4];
  bool own;  ///< Whether one of them is the host's own.
};

/// Notes what calls of this process touch, instruction by instruction; and makes two calls meet at one place of memory.
/// On x86-64, in a program that stands before the C library's functions.
class Accesses {
 public:
  Accesses();   ///< Learns which libraries are loaded: after the host was made.
  ~Accesses();  ///< Stops no thread any more.
  Accesses(const Accesses&) = delete;
  Accesses& operator=(const Accesses&) = delete;

  /// Whether this program can do it.
  static bool sees();

  /// What the host's calls that are made by `act` on this thread touch.
  std::vector<Access> of(const std::function<void()>& act) const;

  /// Whether two accesses collide: at the same bytes, one of them writes, and at least one is surely none of an atomic.
  bool collide(const Access& left, const Access& right) const;

  /// The same of places that every call keeps a mutex of the host's for, but not both the same: no std::atomic is kept so.
  static bool guardedApart(const Access& left, const Access& right);

  /// As stopAt(), but where that instruction comes for the first time, at whatever place.
  void stopAtInstruction(const Access& like, const std::function<void()>& act) const;

  /// Acts on this thread; the first time that it is about to touch that place it waits, while another thread runs what
  /// it does in meet(). Call on two threads.
  void stopAt(const Access& place, const std::function<void()>& act) const;
  /// Acts as soon as the other thread waits; answers with what collided with what that one is about to do, if anything.
  /// Also with what is guardedApart(), if that is asked for.
  std::vector<Access> meet(const std::function<void()>& act, bool apart) const;

  /// What the other thread is about to do.
  static Access stoppedAt();

  /// The function of the host that is at work there.
  static std::string whereIs(const Access& access);

 private:
  bool isSurelyPlain(const Access& access) const;
  bool isExact(const Access& access) const;
  bool isPlainThere(std::uintptr_t instruction) const;
  std::vector<std::uintptr_t> m_copying, m_writing;  ///< Functions of the C library whose accesses are exact.
  mutable std::map<std::uintptr_t, bool> m_known;    ///< What isPlainThere() answered.
};

}  // namespace vorn_testing::checks
