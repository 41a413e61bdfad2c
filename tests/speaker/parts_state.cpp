// What the simulated device keeps: every change with its answer, every bound, and what the host reports of it.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <fstream>
#include <functional>

#include "device/Adapters.h"
#include "device/Attachments.h"
#include "device/SpeakerHost.h"
#include "device/parts/DeviceState.h"

namespace {

using namespace vorn_speaker;
using Answer = DeviceState::Answer;

/// A device that differs from the defaults in everything.
DeviceFile device() {
  DeviceFile device;
  device.locale = "nb-NO";
  device.timezone = "Europe/Oslo";
  device.capabilities = "[1]";
  device.volume = 42;
  device.muted = true;
  device.networkConnected = false;
  device.information = {{"brand", "Vorn"}, {"friendlyName", "Kitchen"}};
  device.config = {{"clientID", "c1"}};
  device.settings = {{"friendlyName", "Kitchen"}, {"other", "o"}};
  return device;
}

// ---- The state by itself

struct Change {
  const char* name;
  std::function<Answer(DeviceState&)> change;
  Answer answer;
  const char* state;  ///< The state that tells of it, and its text afterwards.
  const char* text;
};

void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }

class Changes : public testing::TestWithParam<Change> {};

TEST_P(Changes, AnswerAndAreReported) {
  DeviceState state(device());
  std::string text = "nothing";
  EXPECT_EQ(GetParam().change(state), GetParam().answer);
  EXPECT_TRUE(state.state(GetParam().state, text));
  EXPECT_EQ(text, GetParam().text);
}

const Change kChanges[] = {
    {"volume 0", [](auto& s) { return s.setVolume(0); }, {true, "volume 0"}, "volume", "0, muted"},
    {"volume 100", [](auto& s) { return s.setVolume(100); }, {true, "volume 100"}, "volume", "100, muted"},
    {"volume -1",
     [](auto& s) { return s.setVolume(-1); },
     {false, "volume goes from 0 to 100"},
     "volume",
     "42, muted"},
    {"volume 101",
     [](auto& s) { return s.setVolume(101); },
     {false, "volume goes from 0 to 100"},
     "volume",
     "42, muted"},
    {"louder", [](auto& s) { return s.adjustVolume(8); }, {true, "volume 50"}, "volume", "50, muted"},
    {"quieter", [](auto& s) { return s.adjustVolume(-2); }, {true, "volume 40"}, "volume", "40, muted"},
    {"loudest", [](auto& s) { return s.adjustVolume(59); }, {true, "volume 100"}, "volume", "100, muted"},
    {"quietest", [](auto& s) { return s.adjustVolume(-43); }, {true, "volume 0"}, "volume", "0, muted"},
    {"unmute", [](auto& s) { return s.mute(false); }, {true, "unmuted"}, "volume", "42"},
    {"mute", [](auto& s) { return s.mute(true); }, {true, "muted"}, "volume", "42, muted"},
    {"off", [](auto& s) { return s.power("", false); }, {true, "power OFF"}, "power", "OFF"},
    {"on", [](auto& s) { return s.power("", false), s.power("", true); }, {true, "power ON"}, "power", "ON"},
    {"off elsewhere",
     [](auto& s) { return s.power("lamp", false); },
     {true, "power of lamp OFF"},
     "power",
     "ON"},
    {"on elsewhere",
     [](auto& s) { return s.power("lamp", true); },
     {true, "power of lamp ON"},
     "power of lamp",
     "ON"},
    {"mode",
     [](auto& s) { return s.setMode("picture", "x"); },
     {true, "mode picture x"},
     "mode picture",
     "x"},
    {"no mode", [](auto& s) { return s.setMode("", "x"); }, {false, "no mode named"}, "power", "ON"},
    {"mode up",
     [](auto& s) { return s.setMode("m", "5"), s.adjustMode("m", 2); },
     {true, "mode m 7"},
     "mode m",
     "7"},
    {"mode down",
     [](auto& s) { return s.setMode("m", "5"), s.adjustMode("m", -6); },
     {true, "mode m -1"},
     "mode m",
     "-1"},
    {"mode without number",
     [](auto& s) { return s.setMode("m", "x"), s.adjustMode("m", 2); },
     {false, "mode m has no number"},
     "mode m",
     "x"},
    {"mode with half a number",
     [](auto& s) { return s.setMode("m", "5x"), s.adjustMode("m", 2); },
     {false, "mode m has no number"},
     "mode m",
     "5x"},
    {"unknown mode",
     [](auto& s) { return s.adjustMode("m", 2); },
     {false, "mode m has no number"},
     "power",
     "ON"},
    {"range 0", [](auto& s) { return s.setRange(3), s.setRange(0); }, {true, "range 0"}, "range", "0"},
    {"range 10", [](auto& s) { return s.setRange(10); }, {true, "range 10"}, "range", "10"},
    {"range below",
     [](auto& s) { return s.setRange(3), s.setRange(-0.1); },
     {false, "range goes from 0 to 10"},
     "range",
     "3"},
    {"range above",
     [](auto& s) { return s.setRange(10.1); },
     {false, "range goes from 0 to 10"},
     "range",
     "5"},
    {"range of none",
     [](auto& s) { return s.setRange(std::nan("")); },
     {false, "range goes from 0 to 10"},
     "range",
     "5"},
    {"range up",
     [](auto& s) { return s.setRange(3), s.adjustRange(0.5); },
     {true, "range 3.5"},
     "range",
     "3.5"},
    {"range to its end", [](auto& s) { return s.adjustRange(11); }, {true, "range 10"}, "range", "10"},
    {"range to its beginning",
     [](auto& s) { return s.setRange(3), s.adjustRange(-4); },
     {true, "range 0"},
     "range",
     "0"},
    {"range by none",
     [](auto& s) { return s.setRange(3), s.adjustRange(std::nan("")); },
     {false, "not a number"},
     "range",
     "3"},
    {"toggle on", [](auto& s) { return s.toggle("t", "ON"); }, {true, "toggle t ON"}, "toggle t", "ON"},
    {"toggle off", [](auto& s) { return s.toggle("t", "OFF"); }, {true, "toggle t OFF"}, "toggle t", "OFF"},
    {"toggle on lower",
     [](auto& s) { return s.toggle("t", "on"); },
     {false, "a toggle is ON or OFF"},
     "power",
     "ON"},
    {"channel", [](auto& s) { return s.setChannel("7"); }, {true, "channel 7"}, "channel", "7"},
    {"no channel", [](auto& s) { return s.setChannel(""); }, {false, "no channel named"}, "channel", "1"},
    {"next channel", [](auto& s) { return s.skipChannel(1); }, {true, "channel 2"}, "channel", "2"},
    {"channel before the first",
     [](auto& s) { return s.skipChannel(-1); },
     {true, "channel 1"},
     "channel",
     "1"},
    {"channel without number",
     [](auto& s) { return s.setChannel("x"), s.skipChannel(1); },
     {false, "the channel has no number"},
     "channel",
     "x"},
    {"input", [](auto& s) { return Answer(s.setInput("HDMI"), ""); }, {true, ""}, "input", "HDMI"},
    {"no input", [](auto& s) { return Answer(s.setInput(""), ""); }, {false, ""}, "input", "WIFI"},
    {"record", [](auto& s) { return s.record(true); }, {true, "recording"}, "recording", "on"},
    {"record twice",
     [](auto& s) { return s.record(true), s.record(true); },
     {false, "recording already"},
     "recording",
     "on"},
    {"end recording",
     [](auto& s) { return s.record(true), s.record(false); },
     {true, "recording ended"},
     "recording",
     "off"},
    {"end no recording",
     [](auto& s) { return s.record(false); },
     {false, "not recording"},
     "recording",
     "off"},
    {"seek on", [](auto& s) { return s.seek(30), s.seek(3); }, {true, "position 33 s"}, "position", "33 s"},
    {"seek back",
     [](auto& s) { return s.seek(30), s.seek(-10); },
     {true, "position 20 s"},
     "position",
     "20 s"},
    {"seek before the beginning",
     [](auto& s) { return s.seek(30), s.seek(-31); },
     {true, "position 0 s"},
     "position",
     "0 s"},
    {"note", [](auto& s) { return s.note("what", "so"); }, {true, "what so"}, "what", "so"},
};

INSTANTIATE_TEST_SUITE_P(State, Changes, testing::ValuesIn(kChanges));

TEST(DeviceStateTest, BeginsAsTheFileSays) {
  const DeviceState state(device());
  EXPECT_EQ(state.volume(), 42);
  EXPECT_TRUE(state.muted());
  EXPECT_EQ(state.locale(), "nb-NO");
}

TEST(DeviceStateTest, KnowsNoStateThatNobodyNamed) {
  const DeviceState state(device());
  std::string text = "as before";
  EXPECT_FALSE(state.state("mode picture", text));
  EXPECT_EQ(text, "as before");
}

TEST(DeviceStateTest, ReflectsSomeSettingsInTheInformation) {
  DeviceState state(device());
  EXPECT_TRUE(state.setSetting("friendlyName", "Bath") && state.setSetting("other", "p"));
  std::string value;
  EXPECT_TRUE(state.setting("other", value) && value == "p");
  EXPECT_EQ(state.information(),
            (std::map<std::string, std::string>{{"brand", "Vorn"}, {"friendlyName", "Bath"}}));
}

TEST(DeviceStateTest, KnowsNoSettingThatTheFileDoesNotName) {
  DeviceState state(device());
  std::string value = "as before";
  EXPECT_FALSE(state.setting("unknown", value) || state.setSetting("unknown", "x") ||
               state.setting("unknown", value));
  EXPECT_EQ(value, "as before");
}

TEST(DeviceStateTest, KeepsALocaleInTheInformationToo) {
  DeviceState state(device());
  state.setLocale("en-GB");
  EXPECT_EQ(state.locale(), "en-GB");
  EXPECT_EQ(state.information().at("deviceLocale"), "en-GB");
}

// ---- The host on it

class Host : public testing::Test {
 protected:
  Host() {
    m_host.connect(m_adapters);
    // No adapter is created: the host has nobody to tell its news.
  }

  std::string state(const std::string& name) {
    std::string value = "none";
    m_host.getSystemSetting(name, value);
    return value;
  }

  std::vector<std::string> m_said;
  std::ostringstream m_canvas;
  Display m_display{m_canvas, false};
  Microphone m_microphone{Microphone::Pace::kFast, [](std::vector<short>&) {}};
  SpeakerHost m_host{device(),
                     "",
                     m_microphone,
                     {[this](const std::function<void(Display&)>& draw) { draw(m_display); },
                      [this](const std::string& line) { m_said.push_back(line); }}};
  PlayerTable m_players;
  Attachments m_attachments{std::make_shared<vorn_testing::Recorder>(), m_players};
  Adapters m_adapters{m_host, m_players, m_attachments};
};

struct Directive {
  const char* name;
  std::function<std::pair<bool, std::string>(SpeakerHost&)> call;
  const char* answer;
  const char* state;
  const char* text;
};

void PrintTo(const Directive& directive, std::ostream* out) { *out << directive.name; }

class Directives : public Host, public testing::WithParamInterface<Directive> {};

TEST_P(Directives, AreCarriedOutAndReported) {
  EXPECT_EQ(GetParam().call(m_host), std::make_pair(true, std::string(GetParam().answer)));
  EXPECT_EQ(state(GetParam().state), GetParam().text);
}

const Directive kDirectives[] = {
    {"onChangeChannel", [](auto& h) { return h.onChangeChannel("7"); }, "channel 7", "channel", "7"},
    {"onInputChange", [](auto& h) { return std::make_pair(h.onInputChange("HDMI"), std::string()); }, "",
     "input", "HDMI"},
    {"onSkipChannel", [](auto& h) { return h.onSkipChannel(2); }, "channel 3", "channel", "3"},
    {"onSendKeystroke", [](auto& h) { return h.onSendKeystroke("UP"); }, "keystroke UP", "keystroke", "UP"},
    {"Play", [](auto& h) { return h.onChangePlaybackPlay("p"); }, "playback PLAYING", "playback", "PLAYING"},
    {"Pause", [](auto& h) { return h.onChangePlaybackPause("p"); }, "playback PAUSED", "playback", "PAUSED"},
    {"Stop", [](auto& h) { return h.onChangePlaybackStop("p"); }, "playback STOPPED", "playback", "STOPPED"},
    {"StartOver", [](auto& h) { return h.onChangePlaybackStartOver("p"); }, "playback STARTED OVER",
     "playback", "STARTED OVER"},
    {"Previous", [](auto& h) { return h.onChangePlaybackPrevious("p"); }, "playback PREVIOUS", "playback",
     "PREVIOUS"},
    {"Next", [](auto& h) { return h.onChangePlaybackNext("p"); }, "playback NEXT", "playback", "NEXT"},
    {"Rewind", [](auto& h) { return h.onChangePlaybackRewind("p"); }, "playback REWINDING", "playback",
     "REWINDING"},
    {"FastForward", [](auto& h) { return h.onChangePlaybackFastForward("p"); }, "playback WINDING FORWARD",
     "playback", "WINDING FORWARD"},
    {"onSearchAndPlay", [](auto& h) { return h.onSearchAndPlay("news"); }, "playing news", "playing", "news"},
    {"onSearchAndDisplayResults", [](auto& h) { return h.onSearchAndDisplayResults("rain"); }, "results rain",
     "results", "rain"},
    {"onSetMode", [](auto& h) { return h.onSetMode("m", "5"); }, "mode m 5", "mode m", "5"},
    {"onAdjustMode", [](auto& h) { return h.onSetMode("m", "5"), h.onAdjustMode("m", 2); }, "mode m 7",
     "mode m", "7"},
    {"onSetPowerState", [](auto& h) { return h.onSetPowerState(false); }, "power OFF", "power", "OFF"},
    {"onSetPowerState of a target", [](auto& h) { return h.onSetPowerState(false, "lamp"); },
     "power of lamp OFF", "power of lamp", "OFF"},
    {"onSetRangeValue", [](auto& h) { return h.onSetRangeValue(3); }, "range 3", "range", "3"},
    {"onAdjustRangeValue", [](auto& h) { return h.onAdjustRangeValue(3); }, "range 8", "range", "8"},
    {"onSetToggleState", [](auto& h) { return h.onSetToggleState("t", "ON"); }, "toggle t ON", "toggle t",
     "ON"},
    {"onLaunchTarget", [](auto& h) { return h.onLaunchTarget("tv"); }, "launched tv", "launched", "tv"},
    {"onStartRecording", [](auto& h) { return h.onStartRecording(); }, "recording", "recording", "on"},
    {"onStopRecording", [](auto& h) { return h.onStartRecording(), h.onStopRecording(); }, "recording ended",
     "recording", "off"},
    {"onAdjustSeekPosition", [](auto& h) { return h.onAdjustSeekPosition(5); }, "position 5 s", "position",
     "5 s"},
    {"onSetVolume", [](auto& h) { return h.onSetVolume(10); }, "volume 10", "volume", "10, muted"},
    {"onAdjustVolume", [](auto& h) { return h.onAdjustVolume(-2); }, "volume 40", "volume", "40, muted"},
    {"onMute", [](auto& h) { return h.onMute(false); }, "unmuted", "volume", "42"},
};

INSTANTIATE_TEST_SUITE_P(State, Directives, testing::ValuesIn(kDirectives));

struct News {
  const char* name;
  std::function<void(SpeakerHost&)> tell;
  const char* state;
  const char* text;
};

void PrintTo(const News& news, std::ostream* out) { *out << news.name; }

class HostNews : public Host, public testing::WithParamInterface<News> {};

TEST_P(HostNews, IsKept) {
  GetParam().tell(m_host);
  EXPECT_EQ(state(GetParam().state), GetParam().text);
}

const News kNews[] = {
    {"alexaStateChanged", [](auto& h) { h.alexaStateChanged("READY"); }, "assistant", "READY"},
    {"notifyMainAppInitialized", [](auto& h) { h.notifyMainAppInitialized(); }, "assistant", "INITIALIZED"},
    {"dialogUXStateChanged", [](auto& h) { h.dialogUXStateChanged("IDLE"); }, "dialog", "IDLE"},
    {"setAlexaHandsFreeState on", [](auto& h) { h.setAlexaHandsFreeState(true); }, "hands-free", "ON"},
    {"setAlexaHandsFreeState off", [](auto& h) { h.setAlexaHandsFreeState(false); }, "hands-free", "OFF"},
    {"notifyAlexaInvocationDetected", [](auto& h) { h.notifyAlexaInvocationDetected("Tap"); }, "invocation",
     "Tap"},
    {"alexaAuthStatusChanged", [](auto& h) { h.alexaAuthStatusChanged("AUTHORIZED"); }, "authorization",
     "AUTHORIZED"},
};

INSTANTIATE_TEST_SUITE_P(State, HostNews, testing::ValuesIn(kNews));

TEST_F(Host, ReportsTheDevice) {
  EXPECT_EQ(m_host.getTimezone() + m_host.getDeviceLocale() + m_host.getVSKCapabilities(),
            "Europe/Oslonb-NO[1]");
  EXPECT_TRUE(m_host.getVolume() == 42 && m_host.getMuteStatus() && m_host.isMicrophoneAvailable());
  EXPECT_EQ(m_host.getDeviceInformation(), device().information);
}

TEST_F(Host, KnowsItsConfigurationAndNothingElse) {
  EXPECT_EQ(m_host.getConfigData("clientID"), "c1");
  EXPECT_EQ(m_host.getConfigData("productID"), "");
}

TEST_F(Host, KeepsTheNetworksState) {
  EXPECT_FALSE(m_host.getNetworkConnectionStatus());
  m_host.updateInternetConnectionStatus(true);
  EXPECT_TRUE(m_host.getNetworkConnectionStatus());
}

TEST_F(Host, GivesTheAudioFocusToOne) {
  EXPECT_TRUE(m_host.requestAudioFocus() && !m_host.requestAudioFocus());
  EXPECT_TRUE(m_host.releaseAudioFocus() && !m_host.releaseAudioFocus());
}

TEST_F(Host, AnswersASettingBeforeAStateOfThatName) {
  m_host.onSetMode("x", "1");
  EXPECT_TRUE(m_host.setSystemSetting("friendlyName", "Bath"));
  EXPECT_EQ(state("friendlyName") + state("mode x"), "Bath1");
  EXPECT_FALSE(m_host.setSystemSetting("mode x", "2"));
}

TEST_F(Host, StoresOnceItIsOpen) {
  EXPECT_FALSE(m_host.writeKeyValue({{"a", "1"}}) || m_host.removeKeyValue({"a"}) || m_host.clear());
  EXPECT_EQ(m_said.size(), 3U);
  EXPECT_TRUE(m_host.open() && m_host.writeKeyValue({{"a", "1"}}) &&
              m_host.readKeyValue("a").at("a") == "1" && m_host.removeKeyValue({"a"}) &&
              m_host.readKeyValue("a").empty() && m_host.clear());
}

TEST_F(Host, SaysWhyNothingIsStored) {
  m_host.readKeyValue("a");
  ASSERT_EQ(m_said.size(), 1U);
  EXPECT_NE(m_said[0].find("call open() first"), std::string::npos);
}

TEST_F(Host, ShowsWhatItLogsWithoutControlCharacters) {
  m_host.onLogEmitted(
      "in\x1b"
      "fo",
      "up\x1b");
  EXPECT_EQ(m_said, std::vector<std::string>{"log in\\x1bfo: up\\x1b"});
}

TEST_F(Host, CountsItsAnimations) {
  EXPECT_EQ(m_host.setAnimation({"a", "b"}), 2);
  EXPECT_EQ(m_host.setAnimation({}), 0);
}

TEST_F(Host, ClearsTheCardThatItRendered) {
  EXPECT_FALSE(m_host.clearGUICard());
  EXPECT_TRUE(m_host.renderGUICard("{\"title\": \"Oslo\"}") && m_host.clearGUICard());
  EXPECT_NE(m_canvas.str().find("Oslo"), std::string::npos);
}

TEST_F(Host, ShowsSetUpAndCalls) {
  std::string address = "https://link.example";
  std::string code = "AB12";
  std::int64_t seconds = 60;
  m_host.sendCBLInfo(address, code, seconds);
  m_host.alexaAuthStatusChanged("UNAUTHORIZED");
  DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo info;
  info.state = "RINGING";
  m_host.onCommsStateChanged(info);
  for (const char* text : {"https://link.example", "AB12", "60 s", "Not linked.", "Ringing ..."})
    EXPECT_NE(m_canvas.str().find(text), std::string::npos) << text;
}

TEST_F(Host, HearsOnlyWithAMicrophoneAndASound) {
  EXPECT_FALSE(m_host.startStreamingAudioData());
  m_microphone.hear(VORN_DATA "/request.wav");
  EXPECT_TRUE(m_host.startStreamingAudioData());
  m_host.stopStreamingAudioData();
}

TEST_F(Host, WithoutAMicrophoneHearsNothing) {
  DeviceFile deaf = device();
  deaf.microphoneAvailable = false;
  SpeakerHost host(deaf, "", m_microphone, {nullptr, nullptr});
  m_microphone.hear(VORN_DATA "/request.wav");
  EXPECT_FALSE(host.isMicrophoneAvailable() || host.startStreamingAudioData());
}

TEST_F(Host, HasOneExternalPlayer) {
  EXPECT_TRUE(m_host.getEMPAdapter());
  EXPECT_EQ(m_host.getEMPAdapter(), m_host.getEMPAdapter());
}

}  // namespace
