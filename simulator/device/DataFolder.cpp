#include "DataFolder.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace vorn_speaker {

namespace fs = std::filesystem;

namespace {

/// The program's file; without /proc as it was started.
fs::path program() {
  std::error_code error;
  const fs::path linked = fs::read_symlink("/proc/self/exe", error);
  const auto* const started = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  return error && started ? fs::absolute(started) : linked;
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw std::runtime_error(path + ": " + reason + "; choose a folder of your own with --state");
}

/// The folder and those above it that are missing, for this user's eyes only.
void make(const fs::path& path) {
  if (path.has_parent_path() && !fs::exists(path.parent_path())) make(path.parent_path());
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
    refuse(path.string(), std::string("cannot be made: ") + std::strerror(errno));
}

constexpr char kSound[] = "answer.wav";
/// What may lie in the state folder.
const char* const kNames[] = {kSound,
                              "console-history",
                              "lock",
                              "store.sqlite",
                              "store.sqlite-journal",
                              "store.sqlite-shm",
                              "store.sqlite-wal"};

}  // namespace

std::string shipped(const std::string& name) {
  const fs::path programs = program().parent_path();
  const fs::path besides = programs / "data" / name;
  if (fs::exists(besides)) return besides.string();
  return (programs / VORN_DATA_WAY / name).lexically_normal().string();
}

std::string soundNamed(const std::string& name) {
  // A name alone means what ships, whatever lies in the current folder.
  if (name.empty() || name.find('/') != std::string::npos) return name;
  const std::string ours = shipped(name);
  return fs::exists(ours) ? ours : name;
}

std::string userStateFolder() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state && *state == '/') return std::string(state) + "/vorn-speaker";
  const char* home = std::getenv("HOME");
  if (!home || *home != '/') {
    const passwd* const user = getpwuid(getuid());
    home = user ? user->pw_dir : nullptr;
  }
  return home && *home == '/' ? std::string(home) + "/.local/state/vorn-speaker" : std::string();
}

StateFolder::StateFolder(const std::string& path) {
  if (path.empty()) throw std::runtime_error("this user has no home folder; name a folder with --state");
  make(path);
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) refuse(path, std::string("cannot be used: ") + std::strerror(errno));
  if (!S_ISDIR(status.st_mode)) refuse(path, "is no folder");
  if (status.st_uid != geteuid()) refuse(path, "belongs to another user");
  if ((status.st_mode & S_IWOTH) != 0) refuse(path, "may be written by everybody");
  // Laid out by somebody else, perhaps while everybody could: what a link leads to is not ours to write.
  for (const char* const name : kNames) {
    const std::string ours = path + "/" + name;
    if (lstat(ours.c_str(), &status) != 0) continue;
    if (S_ISLNK(status.st_mode)) refuse(ours, "is a link, which is not followed");
    if (!S_ISREG(status.st_mode)) refuse(ours, "is no file");
    if (status.st_uid != geteuid()) refuse(ours, "belongs to another user");
  }
  const std::string lock = path + "/lock";
  m_lock = open(lock.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
  if (m_lock < 0) refuse(lock, std::string("cannot be written: ") + std::strerror(errno));
  // Of the process, not of the file: what a host starts does not keep it.
  struct flock whole {};
  whole.l_type = F_WRLCK;
  if (fcntl(m_lock, F_SETLK, &whole) == 0) return;
  const int error = errno;
  close(m_lock);
  if (error != EACCES && error != EAGAIN)
    refuse(lock, std::string("cannot be locked: ") + std::strerror(error));
  refuse(path, "another vorn-speaker uses it; wait until that has ended");
}

bool StateFolder::keeps(const std::string& folder, const fs::path& path) {
  if (path.filename() == kSound) return false;
  std::error_code none;
  const fs::path own = fs::weakly_canonical(folder, none);
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [&](const char* name) { return own / name == fs::weakly_canonical(path, none); });
}

StateFolder::~StateFolder() { close(m_lock); }

}  // namespace vorn_speaker
