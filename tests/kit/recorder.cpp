// The kit's record of calls: values as texts, calls in order, hooks, locks.

#include <DeviceAbstractionLayer/OOBE.h>
#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/Recorder.h>

#include <stdexcept>

#include "support/interposed.h"

namespace {

using vorn_testing::Call;
using vorn_testing::makeCall;
using vorn_testing::Recorder;
using vorn_testing::text;
using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;

TEST(Values, AreRenderedAsTexts) {
  EXPECT_EQ((Texts{text(std::string("a b")), text("c"), text(true), text(false), text(-7),
                   text(std::int64_t{1} << 40), text(std::chrono::milliseconds(1500))}),
            (Texts{"a b", "c", "true", "false", "-7", "1099511627776", "1500ms"}));
  EXPECT_EQ((Texts{text(2.5), text(-0.0), text(1e300), text(0.1)}),
            (Texts{"2.5", "-0", "1.0000000000000001e+300", "0.10000000000000001"}));
  const int object = 0;
  EXPECT_EQ((Texts{text(static_cast<const void*>(&object)), text(static_cast<const void*>(nullptr))}),
            (Texts{"object", "null"}));
}

TEST(Values, OfManyPartsAreRenderedWithTheirBrackets) {
  EXPECT_EQ((Texts{text(Texts{}), text(Texts{"a"}), text(Texts{"a", "b"})}), (Texts{"[]", "[a]", "[a, b]"}));
  EXPECT_EQ((Texts{text(Entries{}), text(Entries{{"a", "1"}}), text(Entries{{"b", "2"}, {"a", "1"}})}),
            (Texts{"{}", "{a=1}", "{a=1, b=2}"}));
  EXPECT_EQ(
      (Texts{text(std::vector<short>{}), text(std::vector<short>{1, 2, 3}),
             text(std::make_pair(true, std::string())), text(std::make_pair(false, std::string("why")))}),
      (Texts{"[0 samples]", "[3 samples]", "true", "false why"}));
}

class Recorded : public testing::Test {
 protected:
  Call made(const char* operation) const {
    return makeCall("Interface", operation, 3, this, 1, std::string("x"));
  }

  void record(const char* operation) {
    m_recorder.run(made(operation), [] {});
  }

  Recorder m_recorder;
};

TEST_F(Recorded, CallsAreDescribedWhereTheyAreMade) {
  const int first = 1;
  const std::string second = "x";
  const Call call = makeCall("Interface", "go", 3, this, first, second);
  EXPECT_EQ((Texts{call.target, call.operation, call.signature()}), (Texts{"Interface", "go", "go(1, x)"}));
  EXPECT_EQ(call.addresses, (std::vector<const void*>{&first, &second}));
  EXPECT_TRUE(call.slot == 3 && call.object == this && call.thread == std::this_thread::get_id() &&
              !call.threw);
}

TEST_F(Recorded, CallsAreKeptInOrderAndForgotten) {
  record("one");
  record("two");
  record("one");
  EXPECT_EQ(m_recorder.signatures(), (Texts{"one(1, x)", "two(1, x)", "one(1, x)"}));
  EXPECT_EQ(m_recorder.count("one") * 10 + m_recorder.count("none"), 20U);
  m_recorder.clear();
  EXPECT_TRUE(m_recorder.calls().empty());
}

TEST_F(Recorded, CallsHaveTheirResultOnceTheyEnded) {
  const int result = m_recorder.run(made("go"), [&] {
    EXPECT_EQ(m_recorder.calls().at(0).result, "");
    return 7;
  });
  EXPECT_EQ(result, 7);
  EXPECT_EQ(m_recorder.calls().at(0).result, "7");
}

TEST_F(Recorded, CallsThatThrowSayWhat) {
  EXPECT_THROW(m_recorder.run(made("a"), [] { throw std::runtime_error("why"); }), std::runtime_error);
  EXPECT_THROW(m_recorder.run(made("b"), [] { throw 7; }), int);
  const std::vector<Call> calls = m_recorder.calls();
  EXPECT_TRUE(calls.at(0).threw && calls.at(1).threw);
  EXPECT_EQ((Texts{calls.at(0).exception, calls.at(1).exception}), (Texts{"why", "no std::exception"}));
}

TEST_F(Recorded, HooksRunBeforeAndAfter) {
  Texts seen;
  m_recorder.onCall([&](const Call& call) { seen.push_back("call " + call.operation + call.result); });
  m_recorder.onReturn([&](const Call& call) { seen.push_back("return " + call.operation + call.result); });
  m_recorder.run(made("go"), [&] {
    seen.push_back("action");
    return true;
  });
  EXPECT_EQ(seen, (Texts{"call go", "action", "return gotrue"}));
}

TEST_F(Recorded, HooksTakeThePlaceOfEarlierOnes) {
  int first = 0, second = 0;
  m_recorder.onCall([&](const Call&) { ++first; });
  m_recorder.onCall([&](const Call&) { ++second; });
  m_recorder.onReturn([&](const Call&) { ++first; });
  m_recorder.onReturn({});
  record("go");
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(Recorded, HooksThatThrowEndTheCallBeforeItIsHandedOn) {
  bool reached = false, threw = false;
  m_recorder.onCall([](const Call&) { throw std::runtime_error("refused"); });
  m_recorder.onReturn([&](const Call& call) { threw = call.threw && call.exception == "refused"; });
  EXPECT_THROW(m_recorder.run(made("go"), [&] { reached = true; }), std::runtime_error);
  EXPECT_FALSE(reached);
  EXPECT_TRUE(threw);
}

TEST_F(Recorded, HooksRunWithoutALock) {
  std::size_t inside = 0;
  m_recorder.onCall([&](const Call&) { inside += m_recorder.calls().size(); });
  m_recorder.onReturn([&](const Call&) { inside += m_recorder.calls().size(); });
  record("go");
  EXPECT_EQ(inside, 2U);
}

TEST_F(Recorded, EveryUseLocks) {
  const auto locks = [](const auto& use) {
    const interposed::Counts before = interposed::counts();
    use();
    return (interposed::counts() - before).locks;
  };
  EXPECT_EQ(locks([&] { m_recorder.onCall({}), m_recorder.onReturn({}); }), 2U);
  EXPECT_EQ(
      locks([&] { m_recorder.calls(), m_recorder.signatures(), m_recorder.count("go"), m_recorder.clear(); }),
      4U);
  EXPECT_EQ(locks([&] { record("go"); }), 2U);
}

TEST(TheAssistantSide, IsLockedOnceByEveryUse) {
  vorn_testing::FakeAssistant assistant;
  const interposed::Counts before = interposed::counts();
  assistant.create(vorn_testing::FakeAssistant::kOOBE);
  DeviceAbstractionLayer::OOBE::getInstance();
  vorn_testing::FakeAssistant::references(vorn_testing::FakeAssistant::kOOBE);
  assistant.remove(vorn_testing::FakeAssistant::kOOBE);
  EXPECT_EQ((interposed::counts() - before).locks, 4U);
}

}  // namespace
