#include "TraceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

namespace vorn_speaker {

namespace fs = std::filesystem;

namespace {

constexpr char kTraceFile[] = "/tmp/xAppLog.txt";
constexpr char kTraceAside[] = "/tmp/xAppLog.txt.aside";

int g_folder = -1;  // In the trace's place while we hold it there; its lock ends with the process.

int lockFolder() {
  const int folder = open(kTraceFile, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0 || flock(folder, LOCK_EX | LOCK_NB) == 0) return folder;
  close(folder);
  return -1;
}

/// Whether this user's trace lies aside, and this user's folder in its place.
bool isAway() {
  struct stat file {};
  struct stat folder {};
  return lstat(kTraceAside, &file) == 0 && S_ISREG(file.st_mode) && file.st_uid == geteuid() &&
         lstat(kTraceFile, &folder) == 0 && S_ISDIR(folder.st_mode) && folder.st_uid == geteuid();
}

}  // namespace

void takeTraceAway() {
  if (fs::exists(fs::symlink_status(kTraceAside)))
    throw std::runtime_error(std::string(kTraceAside) +
                             " is there already, perhaps the trace of a run that ended early; move it away");
  // A folder cannot be written, not by root either; the file itself keeps what it holds.
  if (fs::exists(kTraceFile)) fs::rename(kTraceFile, kTraceAside);
  fs::create_directory(kTraceFile);
  g_folder = lockFolder();
}

void returnTrace() {
  fs::remove(kTraceFile);
  if (fs::exists(kTraceAside)) fs::rename(kTraceAside, kTraceFile);
  if (g_folder >= 0) close(g_folder);
  g_folder = -1;
}

void returnTraceLeftAway() {
  if (!isAway()) return;
  const int folder = lockFolder();
  if (folder < 0) return;
  // A folder that holds something is not ours, and is not removed.
  const bool returned = rmdir(kTraceFile) == 0 && rename(kTraceAside, kTraceFile) == 0;
  close(folder);
  if (returned)
    std::cerr << "vorn-speaker: " << kTraceFile
              << ": put back; an earlier run had taken it away and ended early\n";
}

}  // namespace vorn_speaker
