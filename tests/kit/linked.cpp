// The doctor in programs that are linked in different ways, and in a library that a program loads.

#include <VornDeviceInfo.h>
#include <link.h>
#include <vorn_testing/DoctorHost.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

using vorn_testing::Finding;
using VornDeviceAbstractionLayer::VornDeviceInfo;

namespace {

int g_failures;
void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "linked: not so: %s\n", what);
  ++g_failures;
}

/// Comes back to its adapter, or to a mutex of its own.
struct Careless : vorn_testing::NullHost {
  std::mutex own;
  int getVolume() override { return VornDeviceInfo::getInstance()->getMuteStatus() ? 0 : 50; }
  bool getMuteStatus() override {
    const std::lock_guard<std::mutex> lock(own);
    return VornDeviceInfo::getInstance() != nullptr;
  }
  std::string getVSKCapabilities() override {
    const std::lock_guard<std::mutex> lock(own);
    own.lock();
    return "";
  }
};

/// The rights of all memory that comes from a file: from, up to, rights and file of each part.
std::vector<std::string> rights() {
  std::vector<std::string> all;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find('/') != std::string::npos) all.push_back(line);
  return all;
}

/// What the loader wrote into memory that it then closed, of every module.
std::string closedMemory() {
  std::string all;
  const auto add = [](dl_phdr_info* info, std::size_t, void* out) {
    for (int i = 0; i < info->dlpi_phnum; ++i) {
      const auto& header = info->dlpi_phdr[i];
      if (header.p_type != PT_GNU_RELRO) continue;
      const auto begin = reinterpret_cast<const char*>(info->dlpi_addr + header.p_vaddr);  // NOLINT
      static_cast<std::string*>(out)->append(begin, header.p_memsz);
    }
    return 0;
  };
  dl_iterate_phdr(add, &all);
  return all;
}

bool refused(const std::function<void()>& call) {
  try {
    call();
    return false;
  } catch (const std::system_error&) {
    return true;
  }
}

}  // namespace

/// Programs that are not position independent get an address of their own for it.
void (*volatile g_adaptersFunction)() = &VornDeviceInfo::Shutdown;

extern "C" int watchesHere() {
  Careless host;
  std::vector<Finding> findings;
  const auto onFinding = [&](const Finding& finding) { findings.push_back(finding); };
  const auto rightsBefore = rights();
  // So that whatever is bound at its first call is bound.
  { vorn_testing::DoctorHost first(host, onFinding); }
  const auto memoryBefore = closedMemory();
  {
    vorn_testing::DoctorHost doctor(host, onFinding);
    expect(vorn_testing::Doctor::notWatching().empty(), "locks are watched");
    expect(rights() == rightsBefore, "memory has its rights while the doctor lives");
    expect(closedMemory() != memoryBefore, "the library's calls are redirected");
    const auto info = VornDeviceInfo::CreateInstance(doctor);
    expect(refused([&] { info->getVolume(); }), "a deadlock of the library is refused");
    expect(refused([&] { info->getVSKCapabilities(); }), "a deadlock of the host is refused");
    g_adaptersFunction();
  }
  expect(rights() == rightsBefore, "memory has its rights afterwards");
  expect(closedMemory() == memoryBefore, "calls go where they went");
  expect(
      findings.size() == 2 && findings[0].rule == Finding::kReentry && findings[1].rule == Finding::kReentry,
      "both are told");
  for (const auto& finding : findings) std::fputs(vorn_testing::describe(finding).c_str(), stderr);
  return g_failures;
}

#ifndef VORN_LOADED
int main() { return watchesHere() != 0; }
#endif
