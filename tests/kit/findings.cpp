// What the doctor's findings say.

#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>

namespace {

using vorn_testing::Finding;

TEST(Findings, NameTheirRule) {
  const std::pair<Finding::Rule, const char*> kRules[] = {
      {Finding::kReentry,
       "A locked operation holds its adapter's mutex until the other side returns. From inside, call no locked "
       "operation, CreateInstance(), getInstance() or Shutdown() of the same adapter: hand that work to another "
       "thread, or do it after the return. A lock of your own is asked for again when you hold it while you notify "
       "or call an adapter."},
      {Finding::kLockOrder,
       "Where mutexes of the library nest, every thread takes them in one order: a message may go up from inside "
       "one that goes down, not the other way round. Hold no lock of your own while you notify or call an adapter, "
       "and wait inside a locked operation for no thread that calls into it."},
      {Finding::kLongWait,
       "A locked operation answers soon: others wait for its adapter's mutex meanwhile. If it waits for a thread "
       "that calls the adapter, or for a lock that such a thread holds, it never ends."},
      {Finding::kHostDestroyed,
       "A host outlives every call: shut all adapters down, join the threads that call them, then destroy it."},
      {Finding::kNullPlayer,
       "getEMPAdapter() never answers null: the library uses the pointer untested. Without a player, hand out one "
       "that answers false."},
      {Finding::kNotLive,
       "Adapters serve between CreateInstance() and Shutdown(). Outside, calls are dropped and answered by "
       "defaults: create earlier, or stop calling before the shutdown."},
      {Finding::kReferenceKept,
       "An argument that comes by reference is the caller's own, and ends with the call: copy what you need."},
      {Finding::kArgumentChanged,
       "An argument that comes by reference to const is the caller's own: copy it before you change it."},
      {Finding::kNotWatching,
       "Locks are watched on Linux with the GNU C library, on x86-64 and 64-bit ARM, where the library is linked "
       "dynamically. Without that, deadlocks are waited for."}};
  for (const auto& [rule, text] : kRules) EXPECT_STREQ(vorn_testing::ruleText(rule), text);
}

TEST(Findings, ReadAsSentenceRuleAndStacks) {
  const std::string text =
      vorn_testing::describe({Finding::kReentry, "It happened.", {"inner", "outer"}, {"holder"}});
  EXPECT_EQ(text.find("vorn doctor: It happened.\n  rule: A locked operation"), 0U);
  EXPECT_NE(text.find("  here:\n    inner\n    outer\n  before:\n    holder\n"), std::string::npos);
  const std::string alone = vorn_testing::describe({Finding::kReentry, "It happened.", {"inner"}, {}});
  EXPECT_EQ(alone.substr(alone.size() - 19), "\n  here:\n    inner\n");
}

}  // namespace
