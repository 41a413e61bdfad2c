#include <fcntl.h>
#include <sdbus-c++/sdbus-c++.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "../Company.h"
#include "../timing.h"
#include "alternatives.h"

using VornDeviceAbstractionLayer::VornDALImplIF;

namespace {

constexpr char kName[] = "org.vorn.Host";
constexpr char kPath[] = "/org/vorn/Host";

/// A new folder with the configuration of a bus that answers nobody but who knows where it is.
std::string makeFolder() {
  char folder[] = "/tmp/vorn-bus.XXXXXX";
  if (!mkdtemp(folder)) throw std::runtime_error("/tmp: no folder can be made");
  std::ofstream(folder + std::string("/conf"))
      << "<busconfig><type>session</type><listen>unix:path=" << folder
      << "/socket</listen><policy context='default'>"
      << "<allow send_destination='*'/><allow receive_sender='*'/><allow own='*'/></policy></busconfig>";
  return folder;
}

/// What arrives before the line's end, or nothing when the other side ended first.
std::string readLine(int from) {
  std::string line;
  for (char c = 0; read(from, &c, 1) == 1; line += c)
    if (c == '\n') return line;
  return std::string();
}

/// Starts another process and waits for the line that it says when it is ready.
template <class Serve>
std::unique_ptr<Peer> start(std::string& said, Serve serve) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  auto peer = std::make_unique<Peer>([&] {
    close(ends[0]);
    serve(ends[1]);
  });
  close(ends[1]);
  said = readLine(ends[0]);
  close(ends[0]);
  return peer;
}

void startDaemon(const std::string& folder, int ready) {
  const std::string configuration = "--config-file=" + folder + "/conf";
  const std::string print = "--print-address=" + std::to_string(dup(ready));  // The copy survives the exec.
  if (!std::freopen((folder + "/log").c_str(), "w", stderr)) throw std::runtime_error(folder + ": no log");
  execlp("dbus-daemon", "dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", configuration.c_str(),
         print.c_str(), static_cast<char*>(nullptr));
  throw std::runtime_error("dbus-daemon could not be started");
}

void serve(VornDALImplIF& host, const std::string& address, int ready) {
  const auto connection = sdbus::createSessionBusConnectionWithAddress(address);
  connection->requestName(kName);
  const auto object = sdbus::createObject(*connection, kPath);
  object->registerMethod(kOperation).onInterface(kName).implementedAs([&host] {
    return host.isMicrophoneAvailable();
  });
  object->finishRegistration();
  const Company company;
  if (write(ready, "ready\n", 6) == 6) connection->enterEventLoop();
}

}  // namespace

Bus::Bus(VornDALImplIF& host) : m_folder(makeFolder()) {
  m_daemon = start(m_address, [this](int ready) { startDaemon(m_folder, ready); });
  if (m_address.empty()) return;
  m_host = start(m_ready, [&](int ready) { serve(host, m_address, ready); });
}

Bus::~Bus() { std::filesystem::remove_all(m_folder); }

void Bus::time() const {
  const std::string name = "alternative/D-Bus with sdbus-c++";
  if (m_ready.empty()) return impossible(name, "no bus: is dbus-daemon installed?");
  // Made with the first call, once there is a second thread. No loop is needed: nothing comes but answers.
  const auto proxy = std::make_shared<std::unique_ptr<sdbus::IProxy>>();
  timed(name, [proxy, address = m_address] {
    if (!*proxy)
      *proxy = sdbus::createProxy(sdbus::createSessionBusConnectionWithAddress(address), kName, kPath);
    bool answer = false;
    (*proxy)->callMethod(kOperation).onInterface(kName).storeResultsTo(answer);
    benchmark::DoNotOptimize(answer);
  })->UseRealTime();
}
