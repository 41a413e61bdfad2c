#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vorn_speaker {

/// The speaker in a process of its own, which may end while the page goes on, and be started again.
class Below {
 public:
  /// What happens there; on a thread of this class.
  struct Listener {
    virtual ~Listener() = default;
    virtual void started() = 0;
    virtual void said(std::string line) = 0;      ///< A line of its standard output.
    virtual void reported(std::string line) = 0;  ///< A line of its standard error.
    virtual void ended(int status) = 0;           ///< As a shell tells it.
  };

  /// Starts the program with these arguments, the first its name.
  Below(std::vector<std::string> command, Listener& listener);

  /// Ends it: first it is asked by the end of its input, then with a signal, at last it is not asked.
  ~Below();

  Below(const Below&) = delete;
  Below& operator=(const Below&) = delete;

  /// A line for its standard input; false when it runs no more, or has not read what it was sent before.
  bool send(const std::string& line);

  /// Starts it anew; one that still runs is ended before.
  void restart();

  /// Waits until it has said its first line, true, or has ended before, false.
  bool speaks();

  /// How it ended the last time.
  int status();

 private:
  enum class Wish { kNone, kRestart, kEnd };

  void run();
  void live();
  void gone(int status);
  void wake() const;

  const std::vector<std::string> m_command;
  Listener& m_listener;
  const int m_wake;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  Wish m_wish = Wish::kNone;
  bool m_running = true;  ///< Or is about to.
  bool m_spoke = false;
  int m_status = 0;
  std::string m_unsent;
  std::thread m_thread;
};

}  // namespace vorn_speaker
