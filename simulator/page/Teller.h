#pragma once

#include <condition_variable>
#include <deque>
#include <fstream>
#include <istream>
#include <map>
#include <mutex>
#include <ostream>
#include <set>
#include <string>
#include <thread>

#include "calls/Crossings.h"
#include "language/Console.h"
#include "recordings/Json.h"
#include "run/Speaker.h"

namespace vorn_speaker {

/// The lines that the library added to its trace, to find the ones that a call left.
class TraceTail {
 public:
  /// From the end of the file on.
  TraceTail();

  /// What the operation left since it was asked last, as it is; bounded, what nobody takes is forgotten.
  std::vector<std::string> take(const std::string& adapter, const std::string& operation);

 private:
  void read();

  struct Record {
    std::string adapter;
    std::string operation;
    std::string text;
  };

  std::ifstream m_file;
  std::streamoff m_at = 0;
  std::deque<Record> m_records;
};

/// The speaker's end of the page: plays the statements that come in, and tells all that happens, one JSON object a line.
/// What it tells of a call is the line of a recording; docs/page.md has the others.
class Teller : public Crossings::Listener {
 public:
  Teller(std::ostream& out, bool secrets);

  /// Plays lines "NUMBER STATEMENT" until their end, or a request to end.
  void run(Speaker& speaker, const Settings& settings, std::istream& in);

  void began(const Crossing& crossing) override;
  void ended(const Crossing& crossing) override;

  /// A rule of the library that was broken.
  void found(const std::string& text);

 private:
  struct Order {
    unsigned long number;
    std::string line;
  };

  void say(const std::string& line);
  void tellFigures();
  void playInOrder(Speaker& speaker);
  void tellWaits(const Speaker& speaker);
  void watch(const Speaker& speaker);
  void play(Speaker& speaker, const Order& order);

  std::ostream& m_out;
  const bool m_secrets;
  std::mutex m_outMutex;

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_ending = false;
  std::deque<Order> m_orders;
  std::set<std::string> m_disturbed;         ///< Operations that wait or throw.
  std::map<unsigned long, Crossing> m_open;  ///< Calls that run, those that were told excepted.
  Json m_waits = Json::array();              ///< Who waits for locks, as it was told last.
  TraceTail m_trace;
  const Speaker* m_speaker = nullptr;  ///< Who knows the secrets.
  Discretion m_discretion;
};

}  // namespace vorn_speaker
