#include "Attachments.h"

#include <algorithm>
#include <utility>

#include "DataFolder.h"
#include "text/Files.h"

namespace vorn_speaker {

using vorn_testing::makeCall;
using VornDeviceAbstractionLayer::VornAttachmentReaderContainerFactory;
using VornDeviceAbstractionLayer::VornMediaPlayerFactory;

namespace {

constexpr char kNoContainer[] = "no container";
constexpr std::size_t kBlock = 4096;
constexpr std::size_t kLargestSound = std::size_t{256} << 20;

}  // namespace

Attachments::Attachments(std::shared_ptr<vorn_testing::Recorder> recorder, PlayerTable& players)
    : m_recorder(std::move(recorder)), m_players(players) {}

RecordedPlayer::RecordedPlayer(std::string name, std::shared_ptr<Sink> sink,
                               std::shared_ptr<vorn_testing::Recorder> recorder,
                               std::shared_ptr<MediaPlayer> other)
    : Player(std::move(name), std::move(sink)), m_recorder(std::move(recorder)), m_other(std::move(other)) {}

void RecordedPlayer::Configure(Settings settings, std::function<void(std::string)> callback) {
  m_recorder->run(makeCall(kMediaPlayer, "Configure", kConfigure, this, settings.name, settings.firstFlag,
                           settings.secondFlag),
                  [&] {
                    if (m_other) return m_other->Configure(settings, std::move(callback));
                    Player::Configure(settings, std::move(callback));
                  });
}

std::shared_ptr<Container> Attachments::container() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_container;
}

std::string Attachments::createPlayer(const std::string& name, bool firstFlag, bool secondFlag) {
  const auto factory = VornMediaPlayerFactory::getInstance();
  if (!factory) return kNoInstance;
  const auto news = [recorder = m_recorder](std::string event) {
    recorder->run(makeCall("MediaPlayerCallback", "news", 1, nullptr, event), [] {});
  };
  return factory->createDalMediaPlayer(news, firstFlag, name, secondFlag) ? "" : "no player";
}

std::string Attachments::createContainer() {
  const auto closed = [recorder = m_recorder](std::string reason) {
    recorder->run(makeCall("AttachmentCallback", "onClose", 1, nullptr, reason), [] {});
  };
  std::shared_ptr<Container> made;
  m_recorder->run(
      makeCall(kContainerFactory, "createAttachmentReaderContainer", kCreateContainer, this), [&] {
        made = VornAttachmentReaderContainerFactory::getInstance()->createAttachmentReaderContainer(closed);
      });
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_container = std::move(made);
  return "";
}

std::string Attachments::subscribe(const std::string& name) {
  const auto into = container();
  if (!into) return kNoContainer;
  const auto found = m_players.find(name);
  const auto player = std::dynamic_pointer_cast<Player>(found == m_players.end() ? nullptr : found->second);
  if (!player) return "no player " + name;
  const auto recorder = m_recorder;
  const void* object = into.get();
  m_recorder->run(makeCall(kContainer, "Subscribe", kSubscribe, object, name), [&] {
    into->Subscribe(
        [=](void* data, std::size_t size) {
          recorder->run(makeCall(kContainer, "sendData", kSendData, object, std::to_string(size) + " bytes"),
                        [&] { player->receive(static_cast<const char*>(data), size); });
        },
        [=] {
          recorder->run(makeCall(kContainer, "notifyEndOfStream", kEndOfStream, object),
                        [&] { player->endOfStream(); });
        });
  });
  return "";
}

std::string Attachments::unsubscribe() {
  const auto from = container();
  if (!from) return kNoContainer;
  m_recorder->run(makeCall(kContainer, "Unsubscribe", kUnsubscribe, from.get()),
                  [&] { from->Unsubscribe(); });
  return "";
}

std::string Attachments::sendData(const std::string& name) {
  const auto into = container();
  if (!into) return kNoContainer;
  std::string bytes = readWhole(soundNamed(name), kLargestSound);
  for (std::size_t at = 0; at < bytes.size(); at += kBlock) {
    into->sendData(&bytes[at], std::min(kBlock, bytes.size() - at));
  }
  return "";
}

std::string Attachments::endOfStream() {
  const auto into = container();
  if (!into) return kNoContainer;
  into->notifyEndOfStream();
  return "";
}

std::string Attachments::close(const std::string& reason) {
  const auto from = container();
  if (!from) return kNoContainer;
  std::function<void(std::string)> onClose;
  m_recorder->run(makeCall(kContainer, "GetOnCloseCallbackFunction", kGetOnClose, from.get()),
                  [&] { onClose = from->GetOnCloseCallbackFunction(); });
  onClose(reason);
  return "";
}

}  // namespace vorn_speaker
