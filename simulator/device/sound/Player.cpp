#include "Player.h"

#include <stdexcept>
#include <utility>

namespace vorn_speaker {

Player::Player(std::string name, std::shared_ptr<Sink> sink)
    : m_name(std::move(name)), m_sink(std::move(sink)) {}

void Player::Configure(Settings settings, std::function<void(std::string)> callback) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_requestedName = settings.name;
  m_callback = std::move(callback);
  m_bytes.clear();
}

void Player::receive(const char* data, std::size_t size) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_bytes.append(data, size);
}

void Player::endOfStream() {
  std::string bytes;
  std::function<void(std::string)> tell;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    bytes.swap(m_bytes);
    tell = m_callback;
  }
  if (!tell) tell = [](const std::string&) {};
  try {
    const Sound sound = Sound::fromBytes("the stream for player '" + m_name + "'", bytes);
    tell("PLAYING");
    m_sink->play(sound);
    tell("FINISHED");
  } catch (const std::runtime_error& error) {
    tell(std::string("FAILED: ") + error.what());
  }
}

std::string Player::requestedName() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_requestedName;
}

}  // namespace vorn_speaker
