// Random sequences of lives and calls against a small model of the contract.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <random>

#include "support/everything.h"

namespace {

using namespace operations;
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

class Property : public testing::Test {
 protected:
  static void SetUpTestSuite() { watchdog::feed(); }

  /// One sequence; false and a printed history when the library and the model disagree.
  bool play(unsigned seed, int steps) {
    std::mt19937 random(seed);
    Firmware firmwares[2];
    const std::vector<Row> rows[] = {everyRow(firmwares[0]), everyRow(firmwares[1])};
    vorn_testing::FakeAssistant assistant(firmwares[0].recorder);
    std::map<const Adapter*, Model> models;
    std::map<const Adapter*, std::vector<Kept>> kept;
    std::string history;
    const auto pick = [&](std::size_t below) {
      return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
    };
    for (const Adapter* const each : classes()) each->shutdown();
    FileLogger::CreateInstance(true);

    const auto fail = [&](const std::string& what) {
      ADD_FAILURE() << "seed " << seed << ": " << what << " after\n" << history;
      for (const Adapter* const each : classes()) each->shutdown();
      return false;
    };
    for (int step = 0; step < steps; ++step) {
      const std::size_t chosenRow = pick(rows[0].size());
      const Adapter& life = *rows[0][chosenRow].adapter;
      const std::string& name = life.name;
      if (rows[0][chosenRow].keepsAssistant()) continue;  // Stays with the first assistant of the process.
      if (name == "FileLogger" || name == "VornAttachmentReaderContainerFactory") continue;
      const bool rebinds = name == "VornMediaPlayerFactory";
      Model& model = models[&life];
      std::vector<Kept>& objects = kept[&life];
      switch (pick(6)) {
        case 0: {
          const int host = static_cast<int>(pick(2));
          history += name + " create " + std::to_string(host) + "\n";
          const std::shared_ptr<void> made = life.create(firmwares[host]);
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
          const Row& row = rows[chosen.host][chosenRow];
          history += row.name() + " on host " + std::to_string(chosen.host) + "\n";
          firmwares[0].recorder->clear();
          firmwares[1].recorder->clear();
          unlink(trace_file::kPath);
          const Outcome outcome = row.run(chosen.object.get());
          if (Row::told(outcome) != row.tells(outcome, model.live)) return fail("a wrong result");
          // Up goes to the assistant, which writes to the first recorder; down to the object's own host.
          // What a table's player hears is recorded on the table's side.
          std::vector<std::string> calls[2];
          for (const std::string& call : row.reaches(outcome.given, model.live)) {
            const bool up = row.direction == Direction::kUp && call.find("VornDALImplIF ") != 0;
            calls[up ? 0 : chosen.host].push_back(call);
          }
          if (seen(firmwares[0].recorder->calls()) != calls[0] ||
              seen(firmwares[1].recorder->calls()) != calls[1])
            return fail("wrong calls");
          if (trace_file::lines() != (row.delivered(model.live) ? row.lines : row.lostLines))
            return fail("wrong lines");
          break;
        }
      }
    }
    for (const Adapter* const each : classes()) each->shutdown();
    unlink(trace_file::kPath);
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
