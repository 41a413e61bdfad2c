#include <malloc.h>

#include "Checks.h"
#include "vorn_testing/Text.h"

namespace vorn_testing::checks {

namespace {

constexpr int kThreads = 4;
constexpr int kCallsEach = 20;

/// Calls plainly, once, on the thread that made the host: what every other check stands on.
void presumeAnswer(Trial& trial, const Operation& operation) {
  if (operation.ofPlayer) {
    trial.presume("VornDALImplIF/33/getEMPAdapter/answers", [&] { trial.player(); });
  }
  trial.presume(operation.place() + "/answers", [&] { call(trial, operation, Given::kPlain, 0); });
}

void callWith(Trial& trial, const Operation& operation, Given given) {
  for (int which = 0; which < samples(given); ++which) call(trial, operation, given, which);
}

void answers(Trial& trial, const Operation& operation) {
  if (operation.ofPlayer) {
    trial.presume("VornDALImplIF/33/getEMPAdapter/answers", [&] { trial.player(); });
  }
  trial.host();
  callWith(trial, operation, Given::kPlain);
  for (int thread = 0; thread < 2; ++thread)
    trial.onThreads(1, [&](int) { callWith(trial, operation, Given::kPlain); });
}

void survives(Trial& trial, const Operation& operation, Given given) {
  presumeAnswer(trial, operation);
  callWith(trial, operation, given);
}

void concurrent(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  trial.onThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kCallsEach; ++i) call(trial, operation, Given::kPlain, thread + i);
  });
}

void staysOut(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  const Prepared prepared = operation.prepare(Given::kPlain, 0);
  trial.explain("called through " + operation.adapter);
  trial.ask(prepared.shown, [&] { prepared.makeThrough(trial.host()); });
}

void letsGo(Trial& trial, const Operation& operation) {
  trial.presume("the checks of that operation", [&] {
    // All of it in another process first, with arguments that stay.
    trial.inKilledProcess([&] {
      presumeAnswer(trial, operation);
      callOthers(trial, operation);
      trial.destroy();
    });
    // Buffers go back to the system as soon as they are freed, and a look at them ends the process.
    mallopt(M_MMAP_THRESHOLD, 1024);
    const Prepared prepared = operation.prepare(Given::kLent, 0);
    call(trial, operation, prepared);
    prepared.revoke();
  });
  trial.explain("after " + operation.name + "() had returned and its arguments were gone");
  callOthers(trial, operation);
  trial.destroy();
}

void utf8(Trial& trial, const Operation& operation) {
  presumeAnswer(trial, operation);
  for (int which = 0; which < samples(Given::kPlain); ++which) {
    const Prepared prepared = operation.prepare(Given::kPlain, which);
    for (const std::string& text : call(trial, operation, prepared)) {
      if (!isUtf8(text)) trial.broken(prepared.shown + " answered " + spelled(text));
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
