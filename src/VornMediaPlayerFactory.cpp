#include "VornMediaPlayerFactory.h"

#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::Lock;
using internal::trace;

namespace {

constexpr char kConstructor[] =
    "VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)";
constexpr char kRequested[] = "VornMediaPlayerFactory::createDalMediaPlayer name=";
constexpr char kMissing[] = "VornMediaPlayerFactory::createDalMediaPlayer WARNING: returning NULLPTR";
constexpr char kDefaultPlayer[] = "DefaultMediaPlayer";

}  // namespace

std::shared_ptr<VornMediaPlayerFactory> VornMediaPlayerFactory::m_instance;
std::mutex VornMediaPlayerFactory::m_mutex;

// Life: CreateInstance() always makes a new factory, so that a second call rebinds to its table.

void VornMediaPlayerFactory::CreateInstance(
    std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>& players) {
  const Lock lock(m_mutex);
  m_instance = std::shared_ptr<VornMediaPlayerFactory>(new VornMediaPlayerFactory(players));
}

std::shared_ptr<VornMediaPlayerFactory> VornMediaPlayerFactory::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornMediaPlayerFactory::Shutdown() { internal::drop(m_mutex, m_instance); }

VornMediaPlayerFactory::VornMediaPlayerFactory(
    std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>& players)
    : m_players(players) {
  trace(kConstructor);
}

// Down, locked: the player's Configure() runs under m_mutex. The instance is not asked: a factory that was
// kept works on.

std::shared_ptr<VornDalMediaPlayerInterfaceImpl> VornMediaPlayerFactory::createDalMediaPlayer(
    std::function<void(std::string)> callback, bool firstFlag, std::string name, bool secondFlag) {
  const Lock lock(m_mutex);
  trace(kRequested + name);
  const VornDalMediaPlayerInterfaceImpl::Settings settings{firstFlag, name, secondFlag};
  auto player = m_players.find(name);
  if (player == m_players.end()) player = m_players.find(kDefaultPlayer);
  if (player == m_players.end()) {
    trace(kMissing);
    return nullptr;
  }
  player->second->Configure(settings, callback);
  return player->second;
}

}  // namespace VornDeviceAbstractionLayer
