#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "VornDALExport.h"
#include "VornDalMediaPlayerInterfaceImpl.h"

namespace VornDeviceAbstractionLayer {

/// Finds the firmware's media players by name for the assistant client.
///
/// The firmware makes its players in advance and hands over a table from name to player. The table is
/// borrowed, never changed and not copied: keep it alive as long as anybody keeps the factory, also past
/// Shutdown(), and change it only while no createDalMediaPlayer() runs.
class VORN_DAL_API VornMediaPlayerFactory {
 public:
  /// Makes a new factory on `players`, in place of any earlier one: a second call rebinds.
  ///
  /// A factory handed out before keeps its own table. If making it fails, the earlier one stays.
  ///
  /// @logs   The constructor's signature, under the lock.
  /// @throws std::bad_alloc    The earlier factory, if any, stays.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static void CreateInstance(
      std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>& players);

  /// Finds the live factory; never creates one.
  ///
  /// @returns The factory, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornMediaPlayerFactory> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid
  /// and go on finding players.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance().
  explicit VornMediaPlayerFactory(
      std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>& players);

  VornMediaPlayerFactory(const VornMediaPlayerFactory&) = delete;
  VornMediaPlayerFactory& operator=(const VornMediaPlayerFactory&) = delete;

  /// Finds the player called `name`, or else the one called "DefaultMediaPlayer", configures it with
  /// copies of the arguments and returns it. Names match exactly.
  ///
  /// @param callback   Handed to the player, which calls it as it chooses; may be empty.
  /// @param firstFlag  Handed to the player.
  /// @param name       The name asked for; the player learns it even when it stands in for another.
  /// @param secondFlag Handed to the player.
  /// @returns    The table's player, or an empty pointer when there is neither.
  /// @ifnotlive  The same: a factory kept past Shutdown() works on.
  /// @logs       "VornMediaPlayerFactory::createDalMediaPlayer name=" and the name; then, without a
  ///             player, "VornMediaPlayerFactory::createDalMediaPlayer WARNING: returning NULLPTR".
  /// @locked  The player's Configure() included.
  std::shared_ptr<VornDalMediaPlayerInterfaceImpl> createDalMediaPlayer(
      std::function<void(std::string)> callback, bool firstFlag, std::string name, bool secondFlag);

 private:
  std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>& m_players;

  static std::shared_ptr<VornMediaPlayerFactory> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
