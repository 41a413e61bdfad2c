// How the cost of a call grows with what it carries and meets. Names: CURVE/LINE/SIZE.

#include <VornDalMediaPlayerInterfaceImpl.h>
#include <VornEMPAdapterControl.h>
#include <VornEMPAdapterIF.h>
#include <VornMediaPlayerFactory.h>

#include <unordered_map>

#include "Calls.h"
#include "Company.h"
#include "Team.h"
#include "TraceLine.h"
#include "timing.h"

namespace {

using namespace VornDeviceAbstractionLayer;

std::string label(const char* curve, const char* line, long size) {
  return std::string(curve) + '/' + line + '/' + std::to_string(size);
}

/// The audio path over the number of samples in a buffer.
void buffers(VornDALImplIF& host) {
  const auto audio = VornAudioIn::CreateInstance(host);
  const auto ear = DeviceAbstractionLayer::AudioIn::getInstance();
  for (long size = 1; size <= 1000000; size *= 10) {
    const auto samples = std::make_shared<std::vector<short>>(size);
    timed(label("buffer", "bare", size), [ear, samples] { opaque(ear.get())->sendAudioData(*samples); });
    timed(label("buffer", "library", size), [audio, samples] { audio->sendAudioData(*samples); });
  }
}

/// The two operations that name a player, over the number of players, which are called in turn.
void players(VornDALImplIF& host) {
  using Player = VornDalMediaPlayerInterfaceImpl;
  using Table = std::unordered_map<std::string, std::shared_ptr<Player>>;
  for (const long size : {1, 2, 4, 8, 16, 32, 64}) {
    const auto table = std::make_shared<Table>();
    const auto names = std::make_shared<std::vector<std::string>>();
    for (long i = 0; i < size; ++i) {
      names->push_back("player " + std::to_string(i));
      (*table)[names->back()] = std::make_shared<Player>();
    }
    const auto turn = std::make_shared<std::size_t>(0);
    const auto next = [names, turn]() -> const std::string& { return (*names)[++*turn % names->size()]; };

    benchmark::RegisterBenchmark(label("players", "player by name", size).c_str(),
                                 [table, next](benchmark::State& state) {
                                   VornMediaPlayerFactory::CreateInstance(*table);
                                   const auto factory = VornMediaPlayerFactory::getInstance();
                                   for (auto _ : state)
                                     factory->createDalMediaPlayer(nullptr, false, next(), false);
                                 });
    const auto control = VornEMPAdapterControl::CreateInstance(host);
    timed(label("players", "external player command", size), [control, next] { control->pause(next()); });
    timed(label("players", "bare command", size),
          [&host, next] { opaque(&host)->getEMPAdapter()->pause(next()); });
  }
}

/// Threads that make `calls` calls each, all on one object. items_per_second counts the calls of all of them.
template <class Operation>
void together(const char* line, int calls, Operation operation) {
  for (const int threads : {1, 2, 4, 8, 16}) {
    benchmark::RegisterBenchmark(label("threads", line, threads).c_str(), [=](benchmark::State& state) {
      for (auto _ : state) {
        Team team(threads, [=] {
          for (int i = 0; i < calls; ++i) operation();
        });
        state.SetIterationTime(team.run());
      }
      state.SetItemsProcessed(state.iterations() * threads * calls);
    })->UseManualTime();
  }
}

void threads(VornDALImplIF& host) {
  const auto audio = VornAudioIn::CreateInstance(host);
  const auto gui = VornGUIOutput::CreateInstance(host);
  const auto mutex = std::make_shared<std::mutex>();
  // So many that waking the threads does not count.
  constexpr int kUnlocked = 400000;
  constexpr int kLocked = 50000;
  together("unlocked bare", kUnlocked, [&host] { opaque(&host)->isMicrophoneAvailable(); });
  together("unlocked library", kUnlocked, [audio] { audio->isMicrophoneAvailable(); });
  together("locked bare", kLocked, [&host, mutex] {
    const std::lock_guard<std::mutex> lock(*mutex);
    opaque(&host)->clearGUICard();
  });
  together("locked library", kLocked, [gui] { gui->clearGUICard(); });
}

/// A trace line over its length, and over what the trace holds before.
void trace() {
  const auto lines = [](const char* curve, long size, std::size_t length, off_t history) {
    for (const bool bare : {true, false}) {
      benchmark::RegisterBenchmark(label(curve, bare ? "bare" : "library", size).c_str(),
                                   [=](benchmark::State& state) {
                                     const TraceLine line(length);
                                     TraceLine::history(history);
                                     for (auto _ : state) bare ? line.bare() : line.library();
                                     TraceLine::history(0);
                                   });
    }
  };
  for (long length = 1; length <= 100000; length *= 10)
    lines("message", length, static_cast<std::size_t>(length), 0);
  for (long megabytes = 1; megabytes <= 10000; megabytes *= 10)
    lines("history", megabytes, 100, megabytes * 1000 * 1000);
}

}  // namespace

int main(int argc, char** argv) {
  const Company company;
  vorn_testing::NullHost host;
  buffers(host);
  players(host);
  threads(host);
  trace();
  return runTimed(argc, argv);
}
