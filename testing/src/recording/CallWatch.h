#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vorn_testing/KnownSecrets.h"
#include "vorn_testing/RecordingFile.h"

namespace vorn_testing::recording {

/// Turns what a recorder is told into calls as a recording holds them, with secrets masked. While it lives it watches.
class CallWatch : private Recorder::Watcher {
 public:
  explicit CallWatch(std::shared_ptr<Recorder> recorder);
  ~CallWatch() override;

  CallWatch(const CallWatch&) = delete;
  CallWatch& operator=(const CallWatch&) = delete;

 protected:
  /// A call has returned; one at a time.
  virtual void take(RecordedCall call) = 0;

  /// To be called by the constructor and the destructor of what takes.
  void begin();
  void end();

 private:
  /// A call that runs.
  struct Open {
    RecordedCall call;
    std::vector<std::string> clear;  ///< Its arguments.
    bool keyed;                      ///< Whether what it answers is a secret.
    bool masked;                     ///< Whether an argument was.
  };

  void began(const Call& call) override;
  void returned(const Call& call) override;
  void maskArguments(Open& open, const Call& call);
  void maskAnswer(Open& open, const std::vector<std::string>& writtenText);
  long long now() const;

  const std::shared_ptr<Recorder> m_recorder;
  const std::chrono::steady_clock::time_point m_start;
  bool m_watching = false;
  KnownSecrets m_known;
  std::mutex m_mutex;
  unsigned long m_calls = 0;
  std::map<unsigned long, int> m_numbers;
  std::map<unsigned long, std::vector<Open>> m_open;  ///< By thread.
};

}  // namespace vorn_testing::recording
