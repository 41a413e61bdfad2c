// Doubles that do the same around every operation: none is left out, none is taken for another.

#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>
#include <vorn_testing/RecordingHost.h>

#include <map>
#include <tuple>

namespace {

using vorn_testing::Onward;
using vorn_testing::Operation;
using vorn_testing::RecordingHost;
using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;
using Lines = std::vector<std::string>;

/// Calls every operation of a host and of its player once.
struct Caller : vorn_testing::OperationVisitor {
  VornDALImplIF& host;
  VornEMPAdapterIF& player;
  Lines called;

  Caller(VornDALImplIF& theHost, VornEMPAdapterIF& thePlayer) : host(theHost), player(thePlayer) {
    vorn_testing::visitOperations(*this);
  }

  template <class Result, class... P, class OfAdapter>
  void down(const Operation& operation, Result (VornDALImplIF::*member)(P...), OfAdapter) {
    call(operation, host, member);
  }
  template <class Result, class... P, class OfAdapter>
  void down(const Operation& operation, Result (VornEMPAdapterIF::*member)(P...), OfAdapter) {
    call(operation, player, member);
  }
  template <class OfHost>
  void hostOnly(const Operation& operation, OfHost member) {
    call(operation, host, member);
  }

 private:
  template <class Object, class Result, class... P>
  void call(const Operation& operation, Object& object, Result (Object::*member)(P...)) {
    std::tuple<std::decay_t<P>...> values{};
    std::apply([&](auto&... value) { (object.*member)(static_cast<P&&>(value)...); }, values);
    called.push_back(operation.target + (" " + std::to_string(operation.slot)) + " " + operation.name);
  }
};

/// What a recording host saw, in the same words.
Lines seen(const RecordingHost& host) {
  Lines lines;
  for (const vorn_testing::Call& call : host.recorder->calls())
    lines.push_back(call.target + " " + std::to_string(call.slot) + " " + call.operation);
  return lines;
}

class AroundEveryOperation : public testing::Test {
 protected:
  /// Calls all of `host`, behind which `inner` stands.
  Lines callAll(VornDALImplIF& host) {
    VornEMPAdapterIF& player = *host.getEMPAdapter();
    inner.recorder->clear();
    return Caller(host, player).called;
  }

  RecordingHost inner;
};

TEST_F(AroundEveryOperation, ARecordingHostRecordsWhatWasCalledAndHandsItOn) {
  RecordingHost outer(static_cast<VornDALImplIF&>(inner));
  const Lines called = callAll(outer);
  Lines recorded = seen(outer);
  recorded.erase(recorded.begin());  // the player was asked for first
  EXPECT_EQ(called.size(), 64U + 16U);
  EXPECT_EQ(recorded, called);
  EXPECT_EQ(seen(inner), called);
}

TEST_F(AroundEveryOperation, AForwardingHostHandsOn) {
  vorn_testing::ForwardingHost forwarding(inner);
  const Lines called = callAll(forwarding);
  EXPECT_EQ(seen(inner), called);
}

TEST_F(AroundEveryOperation, ADoctorHandsOn) {
  vorn_testing::DoctorHost doctor(inner);
  const Lines called = callAll(doctor);
  EXPECT_EQ(seen(inner), called);
}

/// As the header shows it.
class Counting : public vorn_testing::AroundHost<Counting> {
 public:
  explicit Counting(VornDALImplIF& inner) : AroundHost(inner) {}

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation, const Onward<Interface, Result, Parameters...>& onward,
                typename std::remove_reference<Parameters>::type&... arguments) {
    ++counts[operation.name];
    return onward(arguments...);
  }

  std::map<std::string, int> counts;
};

TEST_F(AroundEveryOperation, ADoubleOfOnesOwnNeedsOneMember) {
  Counting counting(inner);
  callAll(counting);
  EXPECT_EQ(counting.counts.size(), 64U - 1U);  // two operations share a name
  EXPECT_EQ(counting.counts["onSetPowerState"], 2);
}

}  // namespace
