#pragma once

#include <vorn_testing/Recorder.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Adapters.h"
#include "device/sound/Player.h"

namespace vorn_speaker {

// What is recorded of players and containers: the classes, and the places of their operations. Those from 101 on stand in
// no virtual table: the firmware calls them on a container.
constexpr char kContainerFactory[] = "VornAttachmentReaderContainerFactory";
constexpr char kContainer[] = "VornAttachmentReaderContainerInterfaceImpl";
constexpr char kMediaPlayer[] = "VornDalMediaPlayerInterfaceImpl";
enum AttachmentSlot {
  kCreateContainer = 1,
  kSendData = 3,
  kEndOfStream = 4,
  kConfigure = 21,
  kSubscribe = 101,
  kUnsubscribe,
  kGetOnClose
};

/// The attachment of the hour: the assistant client fills the container that it made last, the firmware has
/// one of its players read it.
class Attachments {
 public:
  Attachments(std::shared_ptr<vorn_testing::Recorder> recorder, PlayerTable& players);

  std::string createPlayer(const std::string& name, bool firstFlag, bool secondFlag);
  std::string createContainer();
  std::string subscribe(const std::string& player);
  std::string unsubscribe();
  std::string sendData(const std::string& file);
  std::string endOfStream();
  std::string close(const std::string& reason);

 private:
  std::shared_ptr<Container> container() const;

  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  PlayerTable& m_players;
  mutable std::mutex m_mutex;
  std::shared_ptr<Container> m_container;
};

/// A media player of the firmware whose Configure() is recorded, and handed on where another is to be configured.
class RecordedPlayer : public Player {
 public:
  RecordedPlayer(std::string name, std::shared_ptr<Sink> sink,
                 std::shared_ptr<vorn_testing::Recorder> recorder,
                 std::shared_ptr<MediaPlayer> other = nullptr);

  void Configure(Settings settings, std::function<void(std::string)> callback) override;

 private:
  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  const std::shared_ptr<MediaPlayer> m_other;
};

}  // namespace vorn_speaker
