#pragma once

#include <iosfwd>
#include <map>
#include <mutex>
#include <string>

#include "Crossings.h"

namespace vorn_speaker {

/// Prints crossings as they pass. A call that other calls run inside is printed when the first of them begins,
/// and its result when it ends; every other call is one line. Blocks of sound are printed in one line a stream.
class Printer : public Crossings::Listener {
 public:
  Printer(std::ostream& out, bool everyBlock) : m_out(out), m_everyBlock(everyBlock) {}

  void began(const Crossing& crossing) override;
  void ended(const Crossing& crossing) override;

  /// A line of the simulator's own, between the calls.
  void say(const std::string& line);

 private:
  bool isBlock(const Crossing& crossing) const;
  void line(const Crossing& crossing, const std::string& text);
  void flushWaiting(const std::string& thread);
  void flushBlocks();

  std::ostream& m_out;
  const bool m_everyBlock;
  std::mutex m_mutex;
  std::map<std::string, Crossing> m_waiting;  ///< By thread: the call that began and is not printed yet.
  Crossing m_block{};                         ///< The block that was printed for its stream.
  unsigned long m_blocks = 0;                 ///< How many came after it.
};

}  // namespace vorn_speaker
