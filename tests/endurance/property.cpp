// Random sequences of lives and calls against a small model of the contract.

#include <FileLogger.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>

#include "support/rows.h"
#include "support/watchdog.h"

namespace {

using namespace fault;
using VornDeviceAbstractionLayer::FileLogger;

/// What the contract says of one adapter: whether there is an instance, and whose host each object has.
struct Model {
  bool live = false;
  int host = 0;  ///< Of the live instance.
};

/// An object that somebody kept.
struct Kept {
  std::shared_ptr<void> object;
  int host;
};

std::size_t traceLines() {
  std::size_t lines = 0;
  std::ifstream file("/tmp/xAppLog.txt");
  for (std::string line; std::getline(file, line);) ++lines;
  return lines;
}

class Property : public testing::Test {
 protected:
  static void SetUpTestSuite() { watchdog::feed(); }

  /// One sequence; false and a printed history when the library and the model disagree.
  bool play(unsigned seed, int steps) {
    std::mt19937 random(seed);
    World worlds[2];
    vorn_testing::FakeAssistant assistant(worlds[0].recorder);
    std::map<std::string, Model> models;
    std::map<std::string, std::vector<Kept>> kept;
    std::string history;
    const auto pick = [&](std::size_t below) {
      return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
    };
    for (const Adapter& each : adapters()) each.shutdown();
    FileLogger::CreateInstance(true);

    const auto fail = [&](const std::string& what) {
      ADD_FAILURE() << "seed " << seed << ": " << what << " after\n" << history;
      for (const Adapter& each : adapters()) each.shutdown();
      return false;
    };
    for (int step = 0; step < steps; ++step) {
      const Row& row = rows()[pick(rows().size())];
      const std::string name = row.adapter;
      if (row.operation == std::string("sendAudioData"))
        continue;  // Stays with the first assistant of the process.
      if (name == "FileLogger" || name == "VornAttachmentReaderContainerFactory") continue;
      const Adapter& life = adapter(name);
      const bool rebinds = name == "VornMediaPlayerFactory";
      Model& model = models[name];
      std::vector<Kept>& objects = kept[name];
      switch (pick(6)) {
        case 0: {
          const int host = static_cast<int>(pick(2));
          history += name + " create " + std::to_string(host) + "\n";
          const std::shared_ptr<void> made = life.create(worlds[host]);
          if (!model.live || rebinds) model.host = host;
          model.live = true;
          if (life.get() != made) return fail("getInstance() is not what was created");
          objects.push_back({made, model.host});
          break;
        }
        case 1:
          history += name + " shutdown\n";
          life.shutdown();
          model.live = false;
          if (life.get()) return fail("an instance after Shutdown()");
          break;
        case 2:
          history += name + " get\n";
          if ((life.get() != nullptr) != model.live) return fail("getInstance() disagrees");
          if (pick(2)) objects.clear();
          break;
        default: {
          if (objects.empty()) break;
          const Kept& chosen = objects[pick(objects.size())];
          history += row.name() + " on host " + std::to_string(chosen.host) + "\n";
          const std::unique_ptr<Invocation> call = row.prepare(chosen.object.get(), worlds[chosen.host]);
          worlds[0].recorder->clear();
          worlds[1].recorder->clear();
          unlink("/tmp/xAppLog.txt");
          call->invoke();
          if (call->result() != (model.live || row.seesLive.empty() ? row.answer : row.fallback))
            return fail("a wrong result");
          // Up goes to the assistant, which writes to the first recorder; down to the object's own host.
          const bool ownRecorder = rebinds;
          const std::vector<std::string> live = model.live ? row.seesLive : std::vector<std::string>{};
          std::vector<std::string> first =
              ownRecorder && chosen.host == 1 ? std::vector<std::string>{} : row.seesAlways;
          std::vector<std::string> second =
              ownRecorder && chosen.host == 1 ? row.seesAlways : std::vector<std::string>{};
          std::vector<std::string>& own = chosen.host == 0 ? first : second;
          own.insert(own.end(), live.begin(), live.end());
          if (seen(*worlds[0].recorder) != first || seen(*worlds[1].recorder) != second)
            return fail("wrong calls");
          if (traceLines() != row.lines(model.live).size()) return fail("wrong lines");
          break;
        }
      }
    }
    for (const Adapter& each : adapters()) each.shutdown();
    unlink("/tmp/xAppLog.txt");
    return true;
  }
};

TEST_F(Property, AnySequenceOfLivesAndCallsFollowsTheModel) {
  const char* const wanted = std::getenv("VORN_SEQUENCES");
  const unsigned sequences = wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 300;
  for (unsigned seed = 1; seed <= sequences; ++seed)
    if (!play(seed, 200)) return;
  std::cout << "property: " << sequences << " sequences of 200 steps\n";
}

}  // namespace
