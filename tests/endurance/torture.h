#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <new>
#include <system_error>

#include "support/everything.h"
#include "support/interposed.h"

/// Runs something once for each thing that can fail in it.
namespace torture {

using namespace operations;
using trace_file::kPath;
using Lines = std::vector<std::string>;
using VornDeviceAbstractionLayer::FileLogger;

/// What the other side throws. Known again by its number.
struct Refused {
  int number;
};
constexpr int kNumber = 4711;

enum class Logger { kAbsent, kOff, kOn };

/// What came out of one run.
enum class End { kReturned, kBadAlloc, kSystemError, kRefused, kOther };

template <class Action>
End run(Action& action, std::size_t failing, bool lasting) {
  End end = End::kReturned;
  interposed::arm(failing, lasting);
  try {
    action();
  } catch (const std::bad_alloc&) {
    end = End::kBadAlloc;
  } catch (const std::system_error&) {
    end = End::kSystemError;
  } catch (const Refused& refused) {
    end = refused.number == kNumber ? End::kRefused : End::kOther;
  } catch (...) {
    end = End::kOther;
  }
  interposed::disarm();
  return end;
}

/// The first failure that the contract lets through decides. Files that fail cost the line and nothing else.
inline End expected(bool swallowsAllocations = false) {
  bool lockFailed = false;
  for (const interposed::Kind kind : interposed::failed()) {
    // The text of a std::system_error needs memory: without, it becomes a std::bad_alloc.
    if (kind == interposed::kAllocation && (lockFailed || !swallowsAllocations)) return End::kBadAlloc;
    if (lockFailed) break;
    lockFailed = kind == interposed::kLock;
    if (kind == interposed::kCall) return End::kRefused;
  }
  if (lockFailed) return End::kSystemError;
  return End::kReturned;
}

inline void expectLocksFree() {
  EXPECT_EQ(interposed::held(), 0) << "a lock is still held";
  EXPECT_TRUE(interposed::othersGetThem()) << "another thread does not get every lock";
}

inline void setLogger(Logger logger) {
  FileLogger::Shutdown();
  if (logger != Logger::kAbsent) FileLogger::CreateInstance(logger == Logger::kOn);
}

inline std::size_t g_tried[interposed::kKinds];
inline void count(int runs) {
  for (int kind = 0; kind < interposed::kKinds; ++kind)
    g_tried[kind] += static_cast<std::size_t>(runs) * interposed::points(static_cast<interposed::Kind>(kind));
}

class Torture : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    watchdog::feed();
    settleAudio();
    interposed::othersGetThem();  // Makes the other thread now, or it would count as a leak.
  }

  /// Tries `action` with every point failing; `after` looks at the state after each.
  template <class Prepare, class After>
  void tryEveryPoint(Prepare prepare, After after) {
    auto counted = prepare();
    ASSERT_EQ(run(*counted, 0, false), End::kReturned);
    counted.reset();
    const std::size_t points = interposed::points();
    count(2);
    for (const bool lasting : {false, true}) {
      for (std::size_t failing = 1; failing <= points; ++failing) {
        SCOPED_TRACE("point " + std::to_string(failing) + " of " + std::to_string(points) +
                     (lasting ? ", from there on" : ", once"));
        auto action = prepare();
        const End end = run(*action, failing, lasting);
        expectLocksFree();
        after(std::move(action), end);
      }
    }
  }
};

}  // namespace torture
