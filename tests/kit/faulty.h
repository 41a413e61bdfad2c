#pragma once

#include <gtest/gtest.h>
#include <vorn_testing/HostChecks.h>
#include <vorn_testing/MemoryHost.h>

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

/// Hosts with one fault each, and the checks of that operation that must tell.
namespace faulty_hosts {

using Names = std::set<std::string>;
using Result = std::pair<bool, std::string>;
using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;
using Milliseconds = std::chrono::milliseconds;
using vorn_testing::MemoryHost;
using vorn_testing::MemoryPlayer;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;

struct Fault {
  std::string name;
  std::string operation;  ///< "VornDALImplIF/13/getVolume".
  Names broken;           ///< The checks of that operation that must be broken; all others must not.
  vorn_testing::HostMaker maker;
  vorn_testing::HostDemands demands{};
};

inline void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

template <class Host>
Fault fault(const std::string& name, const std::string& operation, Names broken) {
  return {name, operation, std::move(broken), [] { return std::make_shared<Host>(); }};
}

/// A host whose player is faulty.
template <class Player>
struct WithPlayer : MemoryHost {
  VornEMPAdapterIF* getEMPAdapter() override { return &faulty; }
  Player faulty;
};

/// Makes what needs two threads at once happen whenever more than three call, however they are scheduled: the third
/// stays inside until another has come. One thread, or two in turn, never wait.
class Meeting {
 public:
  /// Whether another thread was inside when this one came.
  bool enter() {
    std::unique_lock<std::mutex> lock(m_mutex);
    const bool first = m_inside++ == 0;
    const long arrivals = ++m_arrivals;
    m_arrived.notify_all();
    const auto id = std::this_thread::get_id();
    if (id != m_made && m_seen.insert(id).second && m_seen.size() == 3)
      m_arrived.wait(lock, [&] { return m_arrivals > arrivals; });
    return !first;
  }
  void leave() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_inside;
  }

 private:
  const std::thread::id m_made = std::this_thread::get_id();
  std::mutex m_mutex;
  std::condition_variable m_arrived;
  std::set<std::thread::id> m_seen;
  long m_arrivals = 0;
  int m_inside = 0;
};

class AFaultyHost : public testing::TestWithParam<Fault> {
 protected:
  /// The checks that came out broken: those of the operation by name, any other by id. All of the operation are
  /// run, and of the others every eighth, another eighth for another fault.
  static Names broken(const Fault& fault) {
    Names names;
    std::size_t turn = fault.name.size();
    for (const auto& check : vorn_testing::hostChecks()) {
      const bool own = check.id.compare(0, fault.operation.size() + 1, fault.operation + "/") == 0;
      if (!own && ++turn % 8 != 0) continue;
      const auto verdict = vorn_testing::runHostCheck(check, fault.maker, fault.demands);
      if (verdict.kind == vorn_testing::HostVerdict::kBroken)
        names.insert(own ? check.id.substr(fault.operation.size() + 1) : check.id);
      EXPECT_EQ(verdict.kind == vorn_testing::HostVerdict::kKept, verdict.detail.empty()) << check.id;
    }
    return names;
  }
};

}  // namespace faulty_hosts
