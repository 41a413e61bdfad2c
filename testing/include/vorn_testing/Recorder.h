#pragma once

#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Call.h"

namespace vorn_testing {

/// What the recording doubles write to: keeps every call in order and runs hooks around it.
///
/// One recorder may serve several doubles, so that calls down and up stand in one order. All operations
/// may be used from any thread; hooks run on the calling thread, without a lock.
class Recorder {
 public:
  typedef std::function<void(const Call&)> Hook;

  /// Is told of every call beside the hooks, before one began and after it returned, on the calling thread and without
  /// a lock. Must not throw.
  class Watcher {
   public:
    virtual ~Watcher() {}
    virtual void began(const Call& call) = 0;
    virtual void returned(const Call& call) = 0;
  };

  /// Adds a watcher; not while a call runs.
  void watch(Watcher& watcher) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_watchers.push_back(&watcher);
  }

  /// Takes it away; not while a call runs.
  void unwatch(Watcher& watcher) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_watchers.erase(std::remove(m_watchers.begin(), m_watchers.end(), &watcher), m_watchers.end());
  }

  /// Whether calls are kept for calls(), signatures() and count(), as they are at first. A device that runs for days has
  /// no memory for that. Not while a call runs.
  void keepCalls(bool keep) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_keep = keep;
  }

  /// Runs `hook` before each call is handed on, in place of an earlier hook. It may throw: the call then
  /// ends with that exception and the double behind is not reached. It may block.
  void onCall(Hook hook) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_onCall = hook;
  }

  /// Runs `hook` after each call, with its result or with `threw` and `exception` set, in place of an earlier hook. It must
  /// not throw.
  void onReturn(Hook hook) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_onReturn = hook;
  }

  /// Every call so far, in the order in which they came in; results of calls that still run are empty.
  std::vector<Call> calls() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
  }

  /// The signatures of calls(): "getVolume()", "setSystemSetting(mode, on)".
  std::vector<std::string> signatures() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < m_calls.size(); ++i) lines.push_back(m_calls[i].signature());
    return lines;
  }

  /// How often `operation` was called.
  std::size_t count(const std::string& operation) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::size_t n = 0;
    for (std::size_t i = 0; i < m_calls.size(); ++i) n += m_calls[i].operation == operation;
    return n;
  }

  /// Forgets the calls. Not while one runs.
  void clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
  }

  /// Records `call` around `action` and returns what it returns. For doubles of your own.
  template <class Action>
  auto run(Call call, Action action) -> decltype(action()) {
    Running running(*this, call);
    try {
      running.begin();
      return running.finish(action, static_cast<decltype(action())*>(nullptr));
    } catch (const std::exception& error) {
      running.threw(error.what());
      throw;
    } catch (...) {
      running.threw("no std::exception");
      throw;
    }
  }

 private:
  class Running {
   public:
    Running(Recorder& recorder, const Call& call) : m_recorder(recorder), m_call(call), m_index(0) {}

    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    void begin() {
      Hook hook;
      {
        const std::lock_guard<std::mutex> lock(m_recorder.m_mutex);
        m_index = m_recorder.m_calls.size();
        if (m_recorder.m_keep) m_recorder.m_calls.push_back(m_call);
        hook = m_recorder.m_onCall;
        m_watchers = m_recorder.m_watchers;
      }
      for (std::size_t i = 0; i < m_watchers.size(); ++i) m_watchers[i]->began(m_call);
      if (hook) hook(m_call);
    }

    template <class Action, class Result>
    Result finish(Action& action, Result*) {
      Result result = action();
      m_call.result = text(result);
      ended();
      return result;
    }

    template <class Action>
    void finish(Action& action, void*) {
      action();
      ended();
    }

    void threw(const char* words) {
      if (m_ended) return;
      // The exception that is on its way says more than a record for which there was no memory.
      m_call.threw = true;
      try {
        m_call.exception = words;
      } catch (...) {
      }
      try {
        ended();
      } catch (...) {
      }
    }

   private:
    void ended() {
      m_ended = true;
      Hook hook;
      {
        const std::lock_guard<std::mutex> lock(m_recorder.m_mutex);
        if (m_index < m_recorder.m_calls.size()) m_recorder.m_calls[m_index] = m_call;
        hook = m_recorder.m_onReturn;
      }
      for (std::size_t i = m_watchers.size(); i > 0; --i) m_watchers[i - 1]->returned(m_call);
      if (hook) hook(m_call);
    }

    Recorder& m_recorder;
    Call m_call;
    std::size_t m_index;
    std::vector<Watcher*> m_watchers;  ///< Those that were told of its begin.
    bool m_ended = false;
  };

  mutable std::mutex m_mutex;
  std::vector<Call> m_calls;
  bool m_keep = true;
  std::vector<Watcher*> m_watchers;
  Hook m_onCall;
  Hook m_onReturn;
};

}  // namespace vorn_testing
