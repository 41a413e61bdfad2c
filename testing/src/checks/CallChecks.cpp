#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "Checks.h"
#include "vorn_testing/Text.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kThreads = 6;

/// Calls plainly, once, on the thread that made the host: what every other check stands on.
void presumeAnswer(Trial& trial, const Operation& operation) {
  trial.presume(operation.place() + "/answers", [&] { call(trial, operation, Given::kPlain, 0); });
}

void callWith(Trial& trial, const Operation& operation, Given given) {
  for (int which = 0; which < operation.samples(given); ++which) call(trial, operation, given, which);
}

void answers(Trial& trial, const Operation& operation) {
  trial.host();
  callWith(trial, operation, Given::kPlain);
  for (int thread = 0; thread < 2; ++thread)
    trial.onThreads(1, [&](int) { callWith(trial, operation, Given::kPlain); });
}

/// Every argument that `operation` may be given in a load, ready to be used again and again.
std::vector<Prepared> ammunition(const Operation& operation) {
  std::vector<Prepared> all;
  for (const Given given : {Given::kPlain, Given::kLoad}) {
    for (int which = 0; which < operation.samples(given); ++which) {
      all.push_back(operation.prepare(given, which));
      // What is accepted leads further into the host than what is refused: it comes as often as all others.
      for (int more = 0; which >= samples(given) && more < 2; ++more)
        all.push_back(operation.prepare(given, which));
    }
  }
  return all;
}

void again(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  const auto calls = ammunition(operation);
  const auto enough = Clock::now() + milliseconds(300), atLast = Clock::now() + milliseconds(3000);
  int count = 0;
  for (; count < 260 ? Clock::now() < atLast : count < 3000 && Clock::now() < enough; ++count) {
    if (count == 260) trial.explain("after more than 260 calls of it");
    call(trial, operation, calls[static_cast<std::size_t>(count) % calls.size()]);
  }
  trial.saw(std::to_string(count) + " calls");
}

void survives(Trial& trial, const Operation& operation, Given given) {
  presumeAnswer(trial, operation);
  callWith(trial, operation, given);
}

/// One load of a fresh host, whose first calls overlap already: at full speed, or held up in the midst of calls.
void load(Trial& trial, const Operation& operation, milliseconds time, bool disturbed) {
  const std::size_t most = disturbed ? 60 : 3000;
  guardMemory(disturbed);
  std::vector<std::vector<Prepared>> calls;
  for (int thread = 0; thread < kThreads; ++thread) calls.push_back(ammunition(operation));
  trial.host();
  const auto end = Clock::now() + time;
  trial.onThreads(
      kThreads,
      [&](int thread) {
        const auto& own = calls[static_cast<std::size_t>(thread)];
        for (std::size_t i = static_cast<std::size_t>(thread); i < most && Clock::now() < end; ++i)
          call(trial, operation, own[i % own.size()]);
      },
      disturbed);
  trial.addLoad();
}

void concurrent(Trial& trial, const Operation& operation) {
  trial.presume(operation.place() + "/answers", [] {});
  constexpr long kOverlaps = 3000;
  constexpr int kRounds = 8;
  trial.explain("while other threads were in it");
  const auto start = Clock::now();
  for (int round = 0;; ++round) {
    const auto took = Clock::now() - start;
    if (round >= kRounds && trial.overlapped() >= kOverlaps) break;
    if (took > milliseconds(trial.overlapped() > 40 ? 500 : 2500)) break;
    trial.inKilledProcess([&] { load(trial, operation, milliseconds(60), round % 2 == 1); });
  }
  if (trial.overlapped() == 0) trial.notAsked("no two calls overlapped within two seconds");
}

/// Every call that may come before leaves the operation answering: those of its own adapter first.
void inSequence(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  std::vector<const Operation*> before = neighbours(operation);
  for (const Operation& other : operations()) {
    if (other.adapter != operation.adapter) before.push_back(&other);
  }
  const Prepared own = operation.prepare(Given::kPlain, operation.samples(Given::kPlain) - 1);
  const auto atLast = Clock::now() + milliseconds(1500);
  for (const Operation* const other : before) {
    for (int which = 0; which < std::min(3, other->samples(Given::kPlain)); ++which) {
      if (Clock::now() > atLast) return;
      const Prepared first = other->prepare(Given::kPlain, which);
      try {
        trial.explain("after " + own.shown);
        call(trial, *other, first);
        trial.explain("after " + first.shown);
        call(trial, operation, own);
        trial.explain("after " + first.shown + ", " + own.shown);
        call(trial, operation, own);
      } catch (const Outcome& outcome) {
        if (outcome.kind == HostVerdict::kBroken) throw;
      }
    }
  }
}

void staysOut(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  trial.explain("called through " + operation.adapter);
  const auto calls = ammunition(operation);
  const auto atLast = Clock::now() + milliseconds(1000);
  for (std::size_t i = 0; i < 100 && (i < calls.size() || Clock::now() < atLast); ++i)
    callThrough(trial, operation, calls[i % calls.size()]);
}

void letsGo(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  for (int which = 0; which < operation.samples(Given::kLent); ++which) {
    for (int turn = 0; turn < 2; ++turn) {
      const Prepared prepared = operation.prepare(Given::kLent, which);
      call(trial, operation, prepared);
      prepared.revoke();
      trial.explain("after " + operation.name + "() had returned and its arguments were gone");
    }
    callAll(trial, neighbours(operation));
  }
  std::this_thread::sleep_for(milliseconds(60));  // a worker may come to it later
  trial.destroy();
}

void utf8(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  for (const Given given : {Given::kPlain, Given::kCut}) {
    for (int which = 0; which < operation.samples(given); ++which) {
      const Prepared prepared = operation.prepare(given, which);
      for (const std::string& text : call(trial, operation, prepared)) {
        if (!isUtf8(text)) trial.broken(prepared.shown + " answered " + spelled(text));
      }
    }
  }
  // In other states too.
  const Prepared own = operation.prepare(Given::kPlain, 0);
  for (const Operation* const other : neighbours(operation)) {
    for (const Given given : {Given::kPlain, Given::kCut}) {
      for (int which = 0; which < other->samples(given); ++which) {
        const Prepared before = other->prepare(given, which);
        try {
          call(trial, *other, before);
          for (const std::string& text : call(trial, operation, own)) {
            if (!isUtf8(text))
              trial.broken(own.shown + " answered " + spelled(text) + " after " + before.shown);
          }
        } catch (const Outcome& outcome) {
          if (outcome.kind == HostVerdict::kBroken) throw;
        }
      }
    }
  }
}

}  // namespace

void addCallChecks(Checks& checks) {
  for (const Operation& operation : operations()) {
    const auto add = [&](const char* name, const std::string& rule, const char* remedy,
                         const std::function<void(Trial&, const Operation&)>& run) {
      checks.push_back(
          checkOf(operation, name, rule, remedy, [&operation, run](Trial& trial) { run(trial, operation); }));
    };
    const auto survive = [](Given given) {
      return [given](Trial& trial, const Operation& asked) { survives(trial, asked, given); };
    };
    add("answers", "It answers on any thread, again and again, without an exception.",
        "Tie no state to a thread; catch what you call throws, and answer with a result instead.", answers);
    add("again", "It answers the three-hundredth time as it did the first.",
        "Let nothing grow with the calls; give back what a call took.", again);
    add("in-sequence", "It answers whatever was called before, and twice in a row.",
        "Decide for each state of the device what the call means there; what makes no sense is refused by an answer.",
        inSequence);
    if (operation.takesTexts)
      add("empty-arguments", "Empty texts, lists and maps can arrive and are answered.",
          "Look whether there is a first element before you use it.", survive(Given::kEmpty));
    if (operation.takesTexts || operation.takesNumbers) {
      add("large-arguments",
          "Texts of a mebibyte, ten thousand entries and the largest numbers can arrive and are answered.",
          "Keep texts in std::string, not in buffers of a fixed size; look for overflow before you calculate.",
          survive(Given::kLarge));
      add("hostile-arguments",
          "Any bytes and any number can arrive and are answered: NUL, what is not UTF-8, format directives, the "
          "smallest number, not-a-number.",
          "Never use a text as a format, path or statement; look at a number before you negate or convert it.",
          survive(Given::kHostile));
    }
    if (operation.locked)
      add("stays-out",
          "It runs under the mutex of " + operation.adapter +
              ", so it calls no locked operation, CreateInstance(), getInstance() or Shutdown() of it.",
          "Use your own state instead of asking the adapter, or ask on another thread and do not wait for it.",
          staysOut);
    else
      add("concurrent", "It comes without a lock: several threads may be inside at once.",
          "Guard what it uses with a mutex of yours. A build with -fsanitize=thread finds the place.",
          concurrent);
    if (operation.takesTexts)
      add("lets-go", "Its arguments are the caller's and end with the call.",
          "Copy what you need for later; keep no reference, pointer or c_str().", letsGo);
    if (operation.answersTexts)
      add("utf8", "Texts in an answer are valid UTF-8.",
          "Convert where the text comes from, and shorten texts between characters.", utf8);
  }
}

}  // namespace vorn_testing::checks
