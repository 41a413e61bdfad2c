#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <string>

/// The thread that writes, for the process that starts, forks and ends it.
namespace vorn_capture {

/// What the environment asks for.
struct Request {
  std::string path;
  std::string audio;
  std::string program;
  std::string run;
  std::uint64_t keep = 0;
  bool paused = false;  ///< At its beginning.
};

/// What both know.
struct Course {
  Request* request = nullptr;
  std::int64_t startTime = 0;
  pid_t forkedFrom = 0;
  std::atomic<bool> started{false};
  std::atomic<std::uint32_t> asked{0}, answered{0};  ///< Requests to write all that is there.
  std::atomic<int> crash{0};
  std::atomic<bool> ending{false};
  std::atomic<bool> hasFailed{false};  ///< There is nothing to write to.
  std::atomic<int> writerId{0};
};
extern Course course;

/// What the thread does.
void* writeAll(void*);

/// In a forked child: leaves the files to the parent.
void releaseFiles();

void complain(const std::string& text);

}  // namespace vorn_capture
