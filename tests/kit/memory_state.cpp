// MemoryHost and its player, operation by operation: what each leaves behind, answers, and locks.

#include <gtest/gtest.h>
#include <vorn_testing/Call.h>
#include <vorn_testing/MemoryHost.h>

#include <climits>

#include "support/interposed.h"

namespace {

using std::chrono::milliseconds;
using vorn_testing::MemoryHost;
using vorn_testing::MemoryPlayer;
using vorn_testing::text;
using State = MemoryHost::State;
using Entries = std::map<std::string, std::string>;

/// What differs from a fresh state.
std::string told(const State& state) {
  const State fresh;
  std::string line;
  const auto add = [&](const char* name, const auto& value, const auto& before) {
    if (value != before) line += (line.empty() ? "" : " ") + (name + ("=" + text(value)));
  };
  add("volume", state.volume, fresh.volume);
  add("muted", state.muted, fresh.muted);
  add("focused", state.focused, fresh.focused);
  add("streaming", state.streaming, fresh.streaming);
  add("microphone", state.microphone, fresh.microphone);
  add("handsFree", state.handsFree, fresh.handsFree);
  add("network", state.network, fresh.network);
  add("internet", state.internet, fresh.internet);
  add("timezone", state.timezone, fresh.timezone);
  add("locale", state.locale, fresh.locale);
  add("card", state.card, fresh.card);
  add("animations", state.animations, fresh.animations);
  add("information", state.information, fresh.information);
  add("configuration", state.configuration, fresh.configuration);
  add("settings", state.settings, fresh.settings);
  add("store", state.store, fresh.store);
  return line;
}

std::string told(const MemoryPlayer::State& state) {
  return text(state.loggedIn) + " " + text(state.shuffle) + " '" + state.userName + "' " + state.playback +
         " " + state.repeat + " '" + state.content + "' " + text(state.position);
}

/// The state before, what is done, what it answers, and what is left.
struct HostRow {
  const char* name;
  void (*before)(State&);
  std::string (*act)(MemoryHost&);
  const char* answer;
  const char* left;
};

void PrintTo(const HostRow& row, std::ostream* out) { *out << row.name; }

void nothing(State&) {}
void everything(State& state) {
  state = {7,
           true,
           true,
           true,
           true,
           false,
           false,
           true,
           "UTC",
           "de-DE",
           "a card",
           {"blink"},
           {{"brand", "Vorn"}},
           {{"id", "x"}},
           {{"mode", "on"}},
           {{"a", "1"}, {"b", "2"}}};
}
constexpr char kEverything[] =
    "volume=7 muted=true focused=true streaming=true handsFree=false network=false internet=true timezone=UTC "
    "locale=de-DE card=a card animations=[blink] information={brand=Vorn} configuration={id=x} "
    "settings={mode=on} store={a=1, b=2}";

class HostRows : public testing::TestWithParam<HostRow> {};

TEST_P(HostRows, AnswersLocksOnceAndLeavesTheRestAlone) {
  MemoryHost host;
  host.change(GetParam().before);
  const interposed::Counts before = interposed::counts();
  const std::string answer = GetParam().act(host);
  const std::size_t locks = (interposed::counts() - before).locks;
  EXPECT_EQ(answer, GetParam().answer);
  EXPECT_EQ(told(host.state()), GetParam().left);
  EXPECT_EQ(locks, 1U);
}

template <class Result>
std::string said(const Result& result) {
  return text(result);
}

const HostRow kHostRows[] = {
    {"requestAudioFocus", nothing, [](MemoryHost& h) { return said(h.requestAudioFocus()); }, "true",
     "focused=true"},
    {"releaseAudioFocus", [](State& s) { s.focused = true; },
     [](MemoryHost& h) { return said(h.releaseAudioFocus()); }, "true", ""},
    {"startStreamingAudioData", nothing, [](MemoryHost& h) { return said(h.startStreamingAudioData()); },
     "true", "streaming=true"},
    {"startStreamingWithoutMicrophone", [](State& s) { s.microphone = false, s.streaming = true; },
     [](MemoryHost& h) { return said(h.startStreamingAudioData()); }, "false", "microphone=false"},
    {"stopStreamingAudioData", [](State& s) { s.streaming = true; },
     [](MemoryHost& h) { return h.stopStreamingAudioData(), std::string(); }, "", ""},
    {"isMicrophoneAvailable", nothing, [](MemoryHost& h) { return said(h.isMicrophoneAvailable()); }, "true",
     ""},
    {"setAlexaHandsFreeState", nothing,
     [](MemoryHost& h) { return h.setAlexaHandsFreeState(false), std::string(); }, "", "handsFree=false"},
    {"setAlexaHandsFreeStateBack", [](State& s) { s.handsFree = false; },
     [](MemoryHost& h) { return h.setAlexaHandsFreeState(true), std::string(); }, "", ""},
    {"getVolume", everything, [](MemoryHost& h) { return said(h.getVolume()); }, "7", kEverything},
    {"getMuteStatus", everything, [](MemoryHost& h) { return said(h.getMuteStatus()); }, "true", kEverything},
    {"getMuteStatusFresh", nothing, [](MemoryHost& h) { return said(h.getMuteStatus()); }, "false", ""},
    {"getTimezone", everything, [](MemoryHost& h) { return said(h.getTimezone()); }, "UTC", kEverything},
    {"getDeviceLocale", everything, [](MemoryHost& h) { return said(h.getDeviceLocale()); }, "de-DE",
     kEverything},
    {"changeAlexaLocale", nothing, [](MemoryHost& h) { return h.changeAlexaLocale("fr-FR"), std::string(); },
     "", "locale=fr-FR"},
    {"getDeviceInformation", everything, [](MemoryHost& h) { return said(h.getDeviceInformation()); },
     "{brand=Vorn}", kEverything},
    {"getNetworkConnectionStatus", nothing,
     [](MemoryHost& h) { return said(h.getNetworkConnectionStatus()); }, "true", ""},
    {"getNetworkConnectionStatusOff", everything,
     [](MemoryHost& h) { return said(h.getNetworkConnectionStatus()); }, "false", kEverything},
    {"updateInternetConnectionStatus", nothing,
     [](MemoryHost& h) { return h.updateInternetConnectionStatus(true), std::string(); }, "",
     "internet=true"},
    {"getConfigData", everything, [](MemoryHost& h) { return said(h.getConfigData("id")); }, "x",
     kEverything},
    {"getConfigDataUnknown", everything, [](MemoryHost& h) { return said(h.getConfigData("brand")); }, "",
     kEverything},
    {"getSystemSetting", everything,
     [](MemoryHost& h) {
       std::string value = "before";
       const bool found = h.getSystemSetting("mode", value);
       return said(found) + " " + value;
     },
     "true on", kEverything},
    {"getSystemSettingUnknown", everything,
     [](MemoryHost& h) {
       std::string value = "before";
       const bool found = h.getSystemSetting("brand", value);
       return said(found) + " " + value;
     },
     "false before", kEverything},
    {"setSystemSetting", nothing, [](MemoryHost& h) { return said(h.setSystemSetting("mode", "off")); },
     "true", "settings={mode=off}"},
    {"readKeyValue", everything, [](MemoryHost& h) { return said(h.readKeyValue("b")); }, "{b=2}",
     kEverything},
    {"readKeyValueUnknown", everything, [](MemoryHost& h) { return said(h.readKeyValue("c")); }, "{}",
     kEverything},
    {"writeKeyValue",
     [](State& s) {
       s.store = {{"a", "1"}, {"b", "2"}};
     },
     [](MemoryHost& h) {
       return said(h.writeKeyValue({{"b", "3"}, {"c", "4"}}));
     },
     "true", "store={a=1, b=3, c=4}"},
    {"removeKeyValue",
     [](State& s) {
       s.store = {{"a", "1"}, {"b", "2"}, {"c", "3"}};
     },
     [](MemoryHost& h) {
       return said(h.removeKeyValue({"a", "none", "c"}));
     },
     "true", "store={b=2}"},
    {"clear",
     [](State& s) {
       s.store = {{"a", "1"}}, s.settings = {{"mode", "on"}};
     },
     [](MemoryHost& h) { return said(h.clear()); }, "true", "settings={mode=on}"},
    {"setAnimation", nothing,
     [](MemoryHost& h) {
       return said(h.setAnimation({"a", "b"}));
     },
     "0", "animations=[a, b]"},
    {"onSetVolume", nothing, [](MemoryHost& h) { return said(h.onSetVolume(99)); }, "true", "volume=99"},
    {"onSetVolumeBeyond", nothing, [](MemoryHost& h) { return said(h.onSetVolume(101)); }, "true",
     "volume=100"},
    {"onSetVolumeBelow", nothing, [](MemoryHost& h) { return said(h.onSetVolume(-1)); }, "true", "volume=0"},
    {"onAdjustVolume", nothing, [](MemoryHost& h) { return said(h.onAdjustVolume(-7)); }, "true",
     "volume=43"},
    {"onAdjustVolumeToTheTop", nothing, [](MemoryHost& h) { return said(h.onAdjustVolume(INT_MAX)); }, "true",
     "volume=100"},
    {"onMute", nothing, [](MemoryHost& h) { return said(h.onMute(true)); }, "true", "muted=true"},
    {"onMuteOff", [](State& s) { s.muted = true; }, [](MemoryHost& h) { return said(h.onMute(false)); },
     "true", ""},
    {"clearGUICard", [](State& s) { s.card = "old"; }, [](MemoryHost& h) { return said(h.clearGUICard()); },
     "true", ""},
    {"renderGUICard", [](State& s) { s.card = "old"; },
     [](MemoryHost& h) { return said(h.renderGUICard("new")); }, "true", "card=new"},
    {"state", everything, [](MemoryHost& h) { return told(h.state()); }, kEverything, kEverything},
    {"change", nothing, [](MemoryHost& h) { return h.change([](State& s) { s.volume = 1; }), std::string(); },
     "", "volume=1"},
};

INSTANTIATE_TEST_SUITE_P(Memory, HostRows, testing::ValuesIn(kHostRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MemoryHostTest, OpensAndHasItsOwnPlayer) {
  MemoryHost host;
  EXPECT_TRUE(host.open());
  EXPECT_EQ(host.getEMPAdapter(), &host.player);
}

/// What a player of the name "kitchen" is told, once it was told everything, and what is left of it.
struct PlayerRow {
  const char* name;
  bool (*act)(MemoryPlayer&);
  const char* left;
};

void PrintTo(const PlayerRow& row, std::ostream* out) { *out << row.name; }

class PlayerRows : public testing::TestWithParam<PlayerRow> {
 protected:
  PlayerRows() {
    m_player.login("token", "ada", false, milliseconds(1), "kitchen");
    m_player.launchAndPlay("song", milliseconds(5000), "kitchen");
    m_player.setShuffleOn("kitchen");
    m_player.setRepeatOne("kitchen");
  }

  MemoryPlayer m_player;
};

TEST_P(PlayerRows, SucceedLockOnceAndAreRemembered) {
  const interposed::Counts before = interposed::counts();
  const bool done = GetParam().act(m_player);
  const std::size_t locks = (interposed::counts() - before).locks;
  EXPECT_TRUE(done);
  EXPECT_EQ(told(m_player.state("kitchen")), GetParam().left);
  EXPECT_EQ(locks, 1U);
}

const PlayerRow kPlayerRows[] = {
    {"login", [](MemoryPlayer& p) { return p.login("t", "bob", true, milliseconds(0), "kitchen"); },
     "true true 'bob' PLAYING ONE 'song' 5000ms"},
    {"logout", [](MemoryPlayer& p) { return p.logout("kitchen"); }, "false false '' IDLE NONE '' 0ms"},
    {"launchAndPlay", [](MemoryPlayer& p) { return p.launchAndPlay("other", milliseconds(7), "kitchen"); },
     "true true 'ada' PLAYING ONE 'other' 7ms"},
    {"nextTrack", [](MemoryPlayer& p) { return p.nextTrack("kitchen"); },
     "true true 'ada' PLAYING ONE 'song' 0ms"},
    {"previousTrack", [](MemoryPlayer& p) { return p.previousTrack("kitchen"); },
     "true true 'ada' PLAYING ONE 'song' 0ms"},
    {"restartCurrentTrack", [](MemoryPlayer& p) { return p.restartCurrentTrack("kitchen"); },
     "true true 'ada' PLAYING ONE 'song' 0ms"},
    {"setShuffleOff", [](MemoryPlayer& p) { return p.setShuffleOff("kitchen"); },
     "true false 'ada' PLAYING ONE 'song' 5000ms"},
    {"pause", [](MemoryPlayer& p) { return p.pause("kitchen"); }, "true true 'ada' PAUSED ONE 'song' 5000ms"},
    {"stop", [](MemoryPlayer& p) { return p.stop("kitchen"); }, "true true 'ada' STOPPED ONE 'song' 5000ms"},
    {"skipForward", [](MemoryPlayer& p) { return p.skipForward(milliseconds(30), "kitchen"); },
     "true true 'ada' PLAYING ONE 'song' 5030ms"},
    {"skipBack", [](MemoryPlayer& p) { return p.skipForward(milliseconds(-30), "kitchen"); },
     "true true 'ada' PLAYING ONE 'song' 4970ms"},
    {"skipBeyondAllNumbers", [](MemoryPlayer& p) { return p.skipForward(milliseconds::max(), "kitchen"); },
     "true true 'ada' PLAYING ONE 'song' 5000ms"},
    {"setRepeatAll", [](MemoryPlayer& p) { return p.setRepeatAll("kitchen"); },
     "true true 'ada' PLAYING ALL 'song' 5000ms"},
    {"setRepeatNone", [](MemoryPlayer& p) { return p.setRepeatNone("kitchen"); },
     "true true 'ada' PLAYING NONE 'song' 5000ms"},
    {"getPlaybackState", [](MemoryPlayer& p) { return p.getPlaybackState("kitchen") == "PLAYING"; },
     "true true 'ada' PLAYING ONE 'song' 5000ms"},
    {"otherPlayer", [](MemoryPlayer& p) { return p.stop("bath"); },
     "true true 'ada' PLAYING ONE 'song' 5000ms"},
};

INSTANTIATE_TEST_SUITE_P(Memory, PlayerRows, testing::ValuesIn(kPlayerRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PlayerRows, ResumeAfterAPause) {
  m_player.pause("kitchen");
  EXPECT_TRUE(m_player.resume("kitchen"));
  EXPECT_EQ(m_player.getPlaybackState("kitchen"), "PLAYING");
}

TEST_F(PlayerRows, TurnOnWhatWasOff) {
  EXPECT_TRUE(m_player.setShuffleOn("bath") && m_player.setRepeatOne("bath"));
  EXPECT_EQ(told(m_player.state("bath")), "false true '' IDLE ONE '' 0ms");
  EXPECT_EQ(m_player.getPlaybackState("none"), "IDLE");
}

}  // namespace
