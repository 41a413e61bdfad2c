#pragma once

#include <filesystem>
#include <string>

namespace vorn_speaker {

/// The path of a file that ships with the speaker.
std::string shipped(const std::string& name);

/// The file that a scenario means by a name: the shipped one when that is its name, otherwise the name as a path.
std::string soundNamed(const std::string& name);

/// A folder of this user's for what the speaker keeps; empty for a user without a home.
std::string userStateFolder();

/// The folder for what the speaker keeps, for this process alone until it ends. Made when it is not there, then for
/// this user's eyes only.
class StateFolder {
 public:
  /// @throws std::runtime_error  Names the folder, the reason and the remedy: it belongs to another user or others may
  ///                             write to it, a name in it is a link, another vorn-speaker uses it.
  explicit StateFolder(const std::string& path);
  ~StateFolder();

  /// Whether the path names something that lies in the folder and is no sound.
  static bool keeps(const std::string& folder, const std::filesystem::path& path);

  StateFolder(const StateFolder&) = delete;
  StateFolder& operator=(const StateFolder&) = delete;

 private:
  int m_lock = -1;
};

}  // namespace vorn_speaker
