#pragma once

#include <VornDalMediaPlayerInterfaceImpl.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "Sink.h"

namespace vorn_speaker {

/// A media player that really plays: what is streamed into it is decoded at the end and played to its sink.
///
/// The callback of Configure() is told "PLAYING" before and "FINISHED" after a sound, or "FAILED: " and the
/// reason. Operations may be called from any thread, the callback comes on the thread of endOfStream().
class Player : public VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl {
 public:
  Player(std::string name, std::shared_ptr<Sink> sink);

  /// Takes a request over from an earlier one; what was streamed for that is forgotten.
  void Configure(Settings settings, std::function<void(std::string)> callback) override;

  /// Takes bytes of a WAV, FLAC or OGG file.
  void receive(const char* data, std::size_t size);

  /// Plays what was received and is ready for the next.
  void endOfStream();

  /// The name asked for last, which differs from the player's own when it stands in.
  std::string requestedName() const;

 private:
  const std::string m_name;
  const std::shared_ptr<Sink> m_sink;
  mutable std::mutex m_mutex;
  std::string m_requestedName;
  std::function<void(std::string)> m_callback;
  std::string m_bytes;
};

}  // namespace vorn_speaker
