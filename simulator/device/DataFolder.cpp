#include "DataFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace vorn_speaker {

namespace fs = std::filesystem;

std::string shipped(const std::string& name) {
  const fs::path programs = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path besides = programs / "data" / name;
  if (fs::exists(besides)) return besides.string();
  return (programs.parent_path() / "share" / "vorn-dal" / "speaker" / name).string();
}

std::string userStateFolder() {
  if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state)
    return std::string(state) + "/vorn-speaker";
  if (const char* home = std::getenv("HOME"); home && *home)
    return std::string(home) + "/.local/state/vorn-speaker";
  return "/tmp/vorn-speaker-" + std::to_string(getuid());
}

}  // namespace vorn_speaker
