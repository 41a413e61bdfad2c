#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <thread>
#include <utility>
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
  callWith(trial, operation, Given::kWord);
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
  for (int word = 0; word < std::min(kFewWords, operation.samples(Given::kWord)); ++word)
    all.push_back(operation.prepare(Given::kWord, word));
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
  if (!operation.takesNumbers) return;
  // What a number left behind is often used by another operation.
  const auto atLast = Clock::now() + milliseconds(1500);
  for (int which = 0; which < operation.samples(given); ++which) {
    const Prepared made = operation.prepare(given, which);
    for (const Operation* const other : neighbours(operation)) {
      if (Clock::now() > atLast) return;
      trial.explain("");
      call(trial, operation, made);
      trial.explain("after " + made.shown);
      callAll(trial, {other});
    }
  }
}

/// What an operation answers to each of its calls, when they come one after another: nothing, unless every call has one
/// answer, whichever came before it.
class OwnAnswers {
 public:
  OwnAnswers(Trial& trial, const Operation& operation, const std::vector<Prepared>& calls) {
    if (!operation.answersTexts) return;
    constexpr std::size_t kMost = 12;
    std::map<std::string, const Prepared*> different;
    for (const Prepared& made : calls) {
      if (different.size() < kMost) different.emplace(made.shown, &made);
    }
    for (const auto& first : different) {
      for (const auto& second : different) {
        for (const auto* const made : {&first, &second}) {
          const Texts answer = call(trial, operation, *made->second);
          if (m_all.emplace(made->first, answer).first->second == answer) continue;
          m_all.clear();
          return;
        }
      }
    }
  }

  /// Breaks the check when this is not the answer to that call, but to another.
  void mustBeOwn(const Trial& trial, const Prepared& made, const Texts& answer) const {
    const auto own = m_all.find(made.shown);
    if (own == m_all.end() || own->second == answer) return;
    for (const auto& other : m_all) {
      if (other.second == answer)
        trial.broken(made.shown + " answered " + spelled(answer) + " while other threads were in it, as " +
                     other.first + " does; alone it answers " + spelled(own->second));
    }
  }

 private:
  std::map<std::string, Texts> m_all;
};

/// How a load is made: at full speed, or held up in the midst of calls, or also compared with what was answered before.
enum class Load { kFull, kDisturbed, kCompared };

/// After each of the calls, one with a text that was never given before: what is kept by name grows.
void addNew(std::vector<Prepared>& calls, const Operation& operation) {
  constexpr std::size_t kMost = 24;
  std::vector<Prepared> all;
  for (std::size_t i = 0; i < kMost; ++i) {
    all.push_back(calls[i % calls.size()]);
    all.push_back(operation.prepare(Given::kNew, 0));
  }
  calls = std::move(all);
}

/// One load of a fresh host, whose first calls overlap already, unless they are compared.
void load(Trial& trial, const Operation& operation, milliseconds time, Load kind) {
  const bool disturbed = kind != Load::kFull;
  const std::size_t most = disturbed ? 60 : 3000;
  guardMemory(disturbed);
  std::vector<std::vector<Prepared>> calls;
  for (int thread = 0; thread < kThreads; ++thread) calls.push_back(ammunition(operation));
  if (kind != Load::kCompared && operation.takesTexts) {
    for (auto& of : calls) addNew(of, operation);
  }
  trial.host();
  const OwnAnswers own(trial, operation, kind == Load::kCompared ? calls.front() : std::vector<Prepared>());
  const auto end = Clock::now() + time;
  trial.onThreads(
      kThreads,
      [&](int thread) {
        const auto& mine = calls[static_cast<std::size_t>(thread)];
        for (std::size_t i = static_cast<std::size_t>(thread); i < most && Clock::now() < end; ++i) {
          const Prepared& made = mine[i % mine.size()];
          own.mustBeOwn(trial, made, call(trial, operation, made));
        }
      },
      disturbed);
  trial.addLoad();
}

/// One call is held up at any of its places, and meanwhile another thread makes others: of the same operation, of
/// its neighbours, some of the rest. Those that had to wait for it come last the next time.
void heldUp(Trial& trial, const Operation& operation, milliseconds time) {
  struct Other {
    Prepared made;
    const Operation* operation;
    long waited;
  };
  const auto own = ammunition(operation);
  std::vector<Other> others;
  const auto add = [&](const Operation& other) {
    for (const Given given : {Given::kPlain, Given::kLoad}) {
      for (int which = 0; which < other.samples(given); ++which)
        others.push_back({other.prepare(given, which), &other, 0});
    }
  };
  add(operation);
  const std::size_t same = others.size();
  for (const Operation* const other : neighbours(operation)) add(*other);
  const std::size_t near = others.size();
  for (const Operation& other : operations()) {
    if (other.adapter != operation.adapter) add(other);
  }
  trial.host();
  const auto end = Clock::now() + time, atLast = end + 3 * time;
  std::atomic<bool> over{false}, busy{false};
  const OwnAnswers answers(trial, operation, own);
  bool reached = false;
  const auto batch = [&](std::size_t turn) {
    std::vector<Other*> order;
    for (std::size_t i = 0; i < 2; ++i) order.push_back(&others[(turn * 2 + i) % same]);
    for (std::size_t i = 0; i < 4; ++i) order.push_back(&others[(turn * 4 + i) % near]);
    order.push_back(&others[turn % others.size()]);
    std::stable_sort(order.begin(), order.end(),
                     [](const Other* left, const Other* right) { return left->waited < right->waited; });
    for (Other* const other : order) {
      const bool paused = Trial::othersPaused();
      if (!paused) break;
      if (other->operation->locked)
        callThrough(trial, *other->operation, other->made);
      else
        call(trial, *other->operation, other->made);
      if (!Trial::othersPaused()) ++other->waited;
    }
  };
  trial.onThreads(2, [&](int thread) {
    const AtEnd atEnd([&] { over = true; });
    if (thread == 1) {
      for (std::size_t turn = 0; !over;) {
        turn += Trial::meanwhile([&] {
          busy = true;
          const AtEnd done([&] { busy = false; });
          batch(turn);
        });
      }
      return;
    }
    bool once = false;  // every place was come to
    for (long at = 0; Clock::now() < (once ? end : atLast); ++at) {
      for (const Prepared& made : own) {
        while (busy && !over) std::this_thread::yield();
        if (Clock::now() > (once ? end : atLast)) return;
        const long places =
            Trial::held(at, [&] { answers.mustBeOwn(trial, made, call(trial, operation, made)); });
        if (places == 0) return;
        reached = reached || places > at;
      }
      if (std::exchange(reached, false)) continue;
      once = true;
      at = -1;  // once more, with others meanwhile
    }
  });
  trial.addLoad();
}

void concurrent(Trial& trial, const Operation& operation) {
  trial.presume(operation.place() + "/answers", [] {});
  constexpr long kOverlaps = 3000;
  constexpr int kRounds = 4;
  constexpr Load kKinds[] = {Load::kFull, Load::kDisturbed, Load::kDisturbed, Load::kCompared};
  trial.explain("while other threads were in it");
  const auto start = Clock::now();
  for (int round = 0;; ++round) {
    const auto took = Clock::now() - start;
    if (round >= kRounds && trial.overlapped() >= kOverlaps) break;
    if (took > milliseconds(trial.overlapped() > 40 ? 300 : 2500)) break;
    trial.inKilledProcess([&] { load(trial, operation, milliseconds(60), kKinds[round % 4]); });
  }
  trial.explain("while another thread was held up in it");
  trial.inKilledProcess([&] { heldUp(trial, operation, milliseconds(500)); });
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
    const int plain = std::min(3, other->samples(Given::kPlain)), words = other->samples(Given::kWord);
    for (int which = 0; which < plain + std::min(words, 8); ++which) {
      if (Clock::now() > atLast) return;
      const Prepared first =
          which < plain ? other->prepare(Given::kPlain, which) : other->prepare(Given::kWord, which - plain);
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
  // What is odd often has a way of its own.
  for (const Given given : {Given::kWord, Given::kEmpty, Given::kHostile, Given::kLarge}) {
    for (int which = 0; which < operation.samples(given); ++which)
      callThrough(trial, operation, operation.prepare(given, which));
  }
}

void letsGo(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  for (int which = 0; which < operation.samples(Given::kLent); ++which) {
    const auto atLast = Clock::now() + milliseconds(250);
    // Some come to what they kept after a number of calls only.
    for (int turn = 0; turn < 2 || (turn < 40 && Clock::now() < atLast); ++turn) {
      const Prepared prepared = operation.prepare(Given::kLent, which);
      call(trial, operation, prepared);
      prepared.revoke();
      trial.explain("after " + operation.name + "() had returned and its arguments were gone");
    }
    // Another operation first: what it comes to was lent to this one, and not since.
    auto others = neighbours(operation);
    std::stable_partition(others.begin(), others.end(),
                          [&](const Operation* other) { return other != &operation; });
    callAll(trial, others);
    // With equal ones too, since it may have been kept by a name; the last first, before a logout.
    for (auto other = others.rbegin(); other != others.rend(); ++other) {
      if (*other != &operation && which < (*other)->samples(Given::kLent))
        tryCall(trial, **other, (*other)->prepare(Given::kLent, which));
    }
  }
  std::this_thread::sleep_for(milliseconds(60));  // a worker may come to it later
  trial.destroy();
}

void utf8(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  for (const Given given : {Given::kPlain, Given::kCut, Given::kHostile}) {
    if (given == Given::kHostile && operation.takesTexts) continue;  // may come back as they were
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
