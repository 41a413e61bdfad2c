// Creation, fetching and shutdown against calls on every adapter from several threads. The thread sanitizer
// judges these runs; without it they show that nothing crashes, blocks for good or answers nonsense.

#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioFocus.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornMediaPlayerFactory.h>
#include <VornOOBE.h>
#include <VornStorage.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/NullHost.h>

#include <future>

#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;

constexpr int kRounds = 100;

/// Tells its answers from what an adapter without an instance answers.
class AnsweringHost : public vorn_testing::NullHost {
 public:
  int getVolume() override { return 7; }
  std::string getVSKCapabilities() override { return "[7]"; }
  bool requestAudioFocus() override { return true; }
  std::pair<bool, std::string> onMute(bool) override { return {false, "seven"}; }
};

class Races : public trace_file::Traced {
 protected:
  /// Two threads create, fetch and shut down while two more call an object that was made beforehand.
  template <class Adapter, class Create, class Call>
  static void race(Adapter& kept, Create create, Call call) {
    std::vector<std::future<void>> threads;
    for (int thread = 0; thread < 2; ++thread) {
      threads.push_back(std::async(std::launch::async, [create] {
        for (int round = 0; round < kRounds; ++round) {
          create();
          Adapter::getInstance();
          Adapter::Shutdown();
        }
      }));
      threads.push_back(std::async(std::launch::async, [&kept, call] {
        for (int round = 0; round < kRounds; ++round) call(kept);
      }));
    }
    for (auto& thread : threads) thread.get();
    EXPECT_EQ(Adapter::getInstance(), nullptr);
  }

  template <class Adapter, class Call>
  void raceOnHost(Call call) {
    Adapter kept(host);
    race(
        kept, [this] { Adapter::CreateInstance(host); }, call);
  }

  AnsweringHost host;
  vorn_testing::FakeAssistant assistant;
};

TEST_F(Races, OfAlexaState) {
  raceOnHost<VornAlexaState>([](VornAlexaState& state) {
    state.alexaStateChanged("IDLE");
    state.dialogUXStateChanged("IDLE");
    state.notifyMainAppInitialized();
  });
}

TEST_F(Races, OfAppMessaging) {
  raceOnHost<VornAppMessaging>([](VornAppMessaging& messaging) {
    EXPECT_TRUE(messaging.sendAppMessage("a", "b", "c"));
    EXPECT_TRUE(messaging.SendMessageToxApp("a", "b", "c"));
  });
}

TEST_F(Races, OfAudioFocus) {
  raceOnHost<VornAudioFocus>([](VornAudioFocus& focus) {
    focus.requestAudioFocus();
    EXPECT_FALSE(focus.releaseAudioFocus());
  });
}

TEST_F(Races, OfAudioIn) {
  raceOnHost<VornAudioIn>([](VornAudioIn& audio) {
    EXPECT_FALSE(audio.startStreamingAudioData());
    audio.stopStreamingAudioData();
    EXPECT_FALSE(audio.isMicrophoneAvailable());
    audio.notifyAlexaInvocationDetected("WakeWordDetected");
    audio.setAlexaHandsFreeState(true);
    audio.notifyAlexaButtonPress("any", std::chrono::milliseconds(1));
    audio.notifyAlexaButtonReleased();
  });
}

TEST_F(Races, OfCommsManager) {
  raceOnHost<VornCommsManager>([](VornCommsManager& comms) {
    comms.onCommsStateChanged({});
    comms.notifyCallAction({});
  });
}

TEST_F(Races, OfDeviceCapabilities) {
  raceOnHost<VornDeviceCapabilities>([](VornDeviceCapabilities& capabilities) {
    const auto answer = capabilities.onMute(true);
    EXPECT_EQ(answer.second, answer.first ? "" : "seven");
    capabilities.onSetMode("a", "b");
    EXPECT_TRUE(capabilities.onStartRecording().first);
    capabilities.notifyFriendlyNameChange("kitchen");
  });
}

TEST_F(Races, OfDeviceInfo) {
  raceOnHost<VornDeviceInfo>([](VornDeviceInfo& info) {
    const int volume = info.getVolume();
    EXPECT_TRUE(volume == 0 || volume == 7) << volume;
    const std::string capabilities = info.getVSKCapabilities();
    EXPECT_TRUE(capabilities == "[]" || capabilities == "[7]") << capabilities;
    std::string value;
    EXPECT_FALSE(info.getSystemSetting("key", value));
    info.notifyVolumeChanged(1);
  });
}

TEST_F(Races, OfTheExternalPlayersControl) {
  raceOnHost<VornEMPAdapterControl>([](VornEMPAdapterControl& control) {
    EXPECT_FALSE(control.login("token", "user", true, std::chrono::milliseconds(1), "kitchen"));
    EXPECT_FALSE(control.pause("kitchen"));
    EXPECT_EQ(control.getPlaybackState("kitchen"), "");
  });
}

TEST_F(Races, OfGUIOutput) {
  raceOnHost<VornGUIOutput>([](VornGUIOutput& output) {
    EXPECT_FALSE(output.renderGUICard("{}"));
    EXPECT_FALSE(output.clearGUICard());
    EXPECT_TRUE(output.notifyPlaybackControllerAction("PLAY"));
  });
}

TEST_F(Races, OfLEDController) {
  raceOnHost<VornLEDController>([](VornLEDController& leds) { EXPECT_EQ(leds.setAnimation({"blink"}), 0); });
}

TEST_F(Races, OfLoggerObserver) {
  raceOnHost<VornLoggerObserver>([](VornLoggerObserver& observer) { observer.onLogEmitted("tag", "text"); });
}

TEST_F(Races, OfOOBE) {
  raceOnHost<VornOOBE>([](VornOOBE& oobe) {
    std::string url, code;
    std::int64_t expiry = 0;
    oobe.sendCBLInfo(url, code, expiry);
    oobe.alexaAuthStatusChanged("AUTHORIZED");
    EXPECT_EQ(oobe.getAlexaAuthStatus(), "AUTHORIZED");
  });
}

TEST_F(Races, OfStorage) {
  raceOnHost<VornStorage>([](VornStorage& storage) {
    EXPECT_FALSE(storage.open());
    EXPECT_FALSE(storage.writeKeyValue({{"key", "value"}}));
    EXPECT_TRUE(storage.readKeyValue("key").empty());
  });
}

TEST_F(Races, OfMediaPlayerFactory) {
  std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>> players = {
      {"DefaultMediaPlayer", std::make_shared<VornDalMediaPlayerInterfaceImpl>()}};
  VornMediaPlayerFactory kept(players);
  race(
      kept, [&players] { VornMediaPlayerFactory::CreateInstance(players); },
      [&players](VornMediaPlayerFactory& factory) {
        EXPECT_EQ(factory.createDalMediaPlayer(nullptr, true, "any", true), players["DefaultMediaPlayer"]);
      });
}

TEST_F(Races, OfAttachmentContainers) {
  std::vector<std::future<void>> threads;
  for (int thread = 0; thread < 4; ++thread)
    threads.push_back(std::async(std::launch::async, [] {
      for (int round = 0; round < kRounds; ++round) {
        const auto factory = VornAttachmentReaderContainerFactory::getInstance();
        factory->createAttachmentReaderContainer(nullptr)->sendData(nullptr, 0);
      }
    }));
  for (auto& thread : threads) thread.get();
}

TEST_F(Races, OfTheLogger) {
  std::vector<std::future<void>> threads;
  for (int thread = 0; thread < 4; ++thread)
    threads.push_back(std::async(std::launch::async, [] {
      for (int round = 0; round < kRounds; ++round) {
        FileLogger::CreateInstance(true)->logMessage("line");
        FileLogger::getInstance()->logMessage("line");
        FileLogger::Shutdown();
      }
    }));
  for (auto& thread : threads) thread.get();
  for (const std::string& line : trace_file::lines()) ASSERT_EQ(line, "line");
}

}  // namespace
