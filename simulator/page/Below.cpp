#include "Below.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vorn_speaker {

namespace {

constexpr std::size_t kMostUnsent = std::size_t{4} << 20;
constexpr std::size_t kLongestLine = std::size_t{4} << 20;
constexpr std::chrono::seconds kPatience(3);  ///< With each way of asking it to end.

/// One end of a pipe of ours.
class End {
 public:
  explicit End(int file = -1) : m_file(file) {}
  End(End&& other) noexcept : m_file(std::exchange(other.m_file, -1)) {}
  ~End() { shut(); }
  End(const End&) = delete;
  End& operator=(const End&) = delete;
  End& operator=(End&&) = delete;

  void shut() {
    if (m_file >= 0) close(m_file);
    m_file = -1;
  }
  int file() const { return m_file; }

 private:
  int m_file;
};

std::pair<End, End> makePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0)
    throw std::runtime_error(std::string("no pipe for the speaker: ") + std::strerror(errno));
  return {End(ends[0]), End(ends[1])};
}

/// Cuts what was read into lines.
class Lines {
 public:
  /// Hands every whole line on; false at the end of the file.
  bool read(int file, const std::function<void(std::string)>& line) {
    char part[65536];
    const ssize_t size = ::read(file, part, sizeof part);
    if (size < 0) return errno == EINTR || errno == EAGAIN;
    for (ssize_t i = 0; i < size; ++i) {
      if (part[i] != '\n') {
        if (m_begun.size() < kLongestLine) m_begun += part[i];
      } else {
        line(std::exchange(m_begun, ""));
      }
    }
    if (size == 0 && !m_begun.empty()) line(std::exchange(m_begun, ""));
    return size > 0;
  }

 private:
  std::string m_begun;
};

}  // namespace

Below::Below(std::vector<std::string> command, Listener& listener)
    : m_command(std::move(command)),
      m_listener(listener),
      m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_thread([this] { run(); }) {}

Below::~Below() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wish = Wish::kEnd;
    m_changed.notify_all();
  }
  wake();
  m_thread.join();
  close(m_wake);
}

void Below::wake() const {
  const eventfd_t one = 1;
  eventfd_write(m_wake, one);
}

bool Below::send(const std::string& line) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_running || m_unsent.size() + line.size() > kMostUnsent) return false;
    m_unsent += line + "\n";
  }
  wake();
  return true;
}

void Below::restart() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_wish == Wish::kNone) m_wish = Wish::kRestart;
    m_changed.notify_all();
  }
  wake();
}

bool Below::speaks() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_changed.wait(lock, [this] { return m_spoke || !m_running; });
  return m_spoke;
}

int Below::status() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_status;
}

void Below::run() {
  std::unique_lock<std::mutex> lock(m_mutex);
  while (m_wish != Wish::kEnd) {
    m_wish = Wish::kNone;
    m_unsent.clear();
    lock.unlock();
    m_listener.started();  // before the first statement is taken
    lock.lock();
    m_running = true;
    lock.unlock();
    live();
    lock.lock();
    m_changed.wait(lock, [this] { return m_wish != Wish::kNone; });
  }
}

/// One life of it.
void Below::live() {
  auto input = makePipe();
  auto output = makePipe();
  auto errors = makePipe();
  std::vector<char*> arguments;
  for (const std::string& argument : m_command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const pid_t above = getpid();
  const pid_t child = fork();
  if (child == 0) {
    // Only what may be called between fork and exec, this process has threads.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != above) _exit(2);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    dup2(input.first.file(), STDIN_FILENO);
    dup2(output.second.file(), STDOUT_FILENO);
    dup2(errors.second.file(), STDERR_FILENO);
    execv("/proc/self/exe", arguments.data());
    _exit(2);
  }
  input.first.shut();
  output.second.shut();
  errors.second.shut();
  if (child < 0) {
    m_listener.reported(std::string("no process for the speaker: ") + std::strerror(errno));
    gone(2);
    return;
  }
  fcntl(input.second.file(), F_SETFL, O_NONBLOCK);
  Lines said;
  Lines reported;
  int asked = 0;
  std::chrono::steady_clock::time_point askedAt;
  while (output.first.file() >= 0 || errors.first.file() >= 0) {
    bool more = false;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (!m_unsent.empty() && input.second.file() >= 0) {
        const ssize_t sent = write(input.second.file(), m_unsent.data(), m_unsent.size());
        if (sent > 0) m_unsent.erase(0, static_cast<std::size_t>(sent));
        more = !m_unsent.empty();
      }
      const auto now = std::chrono::steady_clock::now();
      if (m_wish != Wish::kNone && (asked == 0 || now - askedAt > kPatience)) {
        if (asked == 0) input.second.shut();
        if (asked == 1) kill(child, SIGTERM);
        if (asked == 2) kill(child, SIGKILL);
        ++asked;
        askedAt = now;
      }
    }
    pollfd files[] = {{output.first.file(), POLLIN, 0},
                      {errors.first.file(), POLLIN, 0},
                      {m_wake, POLLIN, 0},
                      {more ? input.second.file() : -1, POLLOUT, 0}};
    poll(files, 4, asked > 0 ? 100 : -1);
    eventfd_t woken = 0;
    if (files[2].revents != 0) eventfd_read(m_wake, &woken);
    const auto say = [this](std::string line) {
      m_listener.said(std::move(line));
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_spoke = true;
      m_changed.notify_all();
    };
    const auto report = [this](std::string line) { m_listener.reported(std::move(line)); };
    if (files[0].revents != 0 && !said.read(output.first.file(), say)) output.first.shut();
    if (files[1].revents != 0 && !reported.read(errors.first.file(), report)) errors.first.shut();
    // A process that it left behind may keep the pipes open.
    if (asked > 2 && waitpid(child, nullptr, WNOHANG | WNOWAIT) != 0) break;
  }
  int ended = 0;
  while (waitpid(child, &ended, 0) < 0 && errno == EINTR) {
  }
  gone(WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended));
}

void Below::gone(int status) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_status = status;
    m_running = false;
    m_changed.notify_all();
  }
  m_listener.ended(status);
}

}  // namespace vorn_speaker
