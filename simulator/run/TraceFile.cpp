#include "TraceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

namespace vorn_speaker {

namespace fs = std::filesystem;

namespace {

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

std::streamoff traceSize() {
  struct stat status {};
  return stat(kTraceFile, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

void refuseTraceThatCannotBeWritten() {
  struct stat status {};
  std::string owner;
  if (lstat(kTraceFile, &status) == 0 && status.st_uid != geteuid())
    owner = ", it belongs to user " + std::to_string(status.st_uid);
  const int file = open(kTraceFile, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0666);
  if (file < 0) {
    throw std::runtime_error(std::string(kTraceFile) +
                             ": the library cannot write its trace: " + std::strerror(errno) + owner +
                             "; have it removed, or leave the trace off with --no-trace");
  }
  close(file);
}

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
