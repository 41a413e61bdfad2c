#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The assistant's persistent key-value store, kept by the host.
///
/// Down  Each operation is one call of the VornDALImplIF operation of the same name, in any order and with
///       nothing checked. Whether the store must be opened first is the host's choice.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornStorage {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornStorage> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornStorage> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornStorage(VornDALImplIF& host);

  VornStorage(const VornStorage&) = delete;
  VornStorage& operator=(const VornStorage&) = delete;

  /// Opens the store.
  ///
  /// @returns    The host's answer: true when the store can be used.
  /// @ifnotlive  false
  /// @unlocked
  bool open();

  /// Reads what the host stores under `key`.
  ///
  /// @returns    The host's entries; which ones a key selects is the host's choice.
  /// @ifnotlive  An empty map.
  /// @unlocked
  std::map<std::string, std::string> readKeyValue(const std::string& key);

  /// Stores every entry; an empty map is passed on too.
  ///
  /// @returns    The host's answer: true when stored.
  /// @ifnotlive  false
  /// @unlocked
  bool writeKeyValue(std::map<std::string, std::string> entries);

  /// Removes every key of the list; an empty list is passed on too.
  ///
  /// @returns    The host's answer: true when removed.
  /// @ifnotlive  false
  /// @unlocked
  bool removeKeyValue(const std::vector<std::string>& keys);

  /// Removes every entry.
  ///
  /// @returns    The host's answer: true when empty.
  /// @ifnotlive  false
  /// @unlocked
  bool clear();

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornStorage> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
