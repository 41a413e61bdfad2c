// Lines of the trace, taken apart and masked: what goes in, what comes out.

#include <gtest/gtest.h>
#include <vorn_testing/Masking.h>
#include <vorn_testing/TraceLine.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

using vorn_testing::TraceLine;
using vorn_testing::traceRecords;

#define CONTROL "VornDeviceAbstractionLayer::VornEMPAdapterControl::"
constexpr char kLogin[] =
    "bool " CONTROL
    "login(const string&, const string&, bool, std::chrono::milliseconds, std::string): "
    "accessToken: ";
constexpr char kAfterToken[] = ", userName: ada, forceLogin: 1, refreshInterval: 1000ms, playerId: kitchen";
constexpr char kLaunch[] = "bool " CONTROL
                           "launchAndPlay(std::string, std::chrono::milliseconds, std::string): "
                           "playContextToken: ";
constexpr char kLogout[] = "bool " CONTROL "logout(std::string): playerId: kitchen";
constexpr char kSecret[] = "KEEP-THIS";

struct Meaning {
  const char* line;
  const char* adapter;
  const char* operation;
  const char* meaning;
};

class Meanings : public testing::TestWithParam<Meaning> {};

TEST_P(Meanings, AreToldByClassAndOperation) {
  const TraceLine line = TraceLine::parse(GetParam().line);
  EXPECT_EQ(line.adapter, GetParam().adapter);
  EXPECT_EQ(line.operation, GetParam().operation);
  EXPECT_EQ(line.meaning, GetParam().meaning);
}

#define AUDIO "void VornDeviceAbstractionLayer::VornAudioIn::"
const Meaning kMeanings[] = {
    {"hello", "?", "", "not a line of the library"},
    {"", "?", "", "not a line of the library"},
    {"VornDeviceAbstractionLayer::", "?", "", "not a line of the library"},
    {"VornDeviceAbstractionLayer::VornAudioIn", "?", "", "not a line of the library"},
    {"VornDeviceAbstractionLayer::VornAudioIn::", "?", "", "not a line of the library"},
    {"VornDeviceAbstractionLayer::VornAudioIn::sendAudioData", "?", "", "not a line of the library"},
    {"VornDeviceAbstractionLayer::Other::call()", "?", "", "not a line of the library"},
    {"VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)",
     "VornAudioIn", "VornAudioIn", "an object of the class was made"},
    {"static std::shared_ptr<" CONTROL "X> " CONTROL "CreateInstance(int)", "VornEMPAdapterControl",
     "CreateInstance", "the firmware asked for the adapter to be created"},
    {"static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> " CONTROL "getInstance()",
     "VornEMPAdapterControl", "getInstance", "somebody fetched the adapter"},
    {"void VornDeviceAbstractionLayer::VornOOBE::sendCBLInfo(std::string&) m_instance is Null", "VornOOBE",
     "sendCBLInfo", "dropped: the adapter has no instance"},
    {"void VornDeviceAbstractionLayer::VornOOBE::notifyOOBEInitiated() dalinstance is Null", "VornOOBE",
     "notifyOOBEInitiated", "dropped: the assistant client has no object for it"},
    {AUDIO "sendAudioData(std::vector<short int>&) dalInstance is NULL", "VornAudioIn", "sendAudioData",
     "buffer dropped: the assistant client takes no audio yet"},
    {AUDIO "sendAudioData(std::vector<short int>&) calling AudioInHelper getInstance 3", "VornAudioIn",
     "sendAudioData", "looking for who takes the audio, at the buffer of this number"},
    {AUDIO "sendAudioData(std::vector<short int>&) calling xApp API count=3", "VornAudioIn", "sendAudioData",
     "the buffer of this number is handed to the assistant"},
    {AUDIO "setAlexaHandsFreeState(bool) calling xApp API", "VornAudioIn", "setAlexaHandsFreeState",
     "about to be told to the host, whatever the line says of an xApp"},
    {AUDIO "notifyAlexaInvocationDetected(std::string) calling xApp API", "VornAudioIn",
     "notifyAlexaInvocationDetected", "about to be told to the host, whatever the line says of an xApp"},
    {AUDIO "notifyAlexaButtonReleased() calling xApp API", "VornAudioIn", "notifyAlexaButtonReleased",
     "about to be told to the assistant"},
    {"VornMediaPlayerFactory::createDalMediaPlayer WARNING: returning NULLPTR", "VornMediaPlayerFactory",
     "createDalMediaPlayer", "no such media player, and no DefaultMediaPlayer"},
    {"VornMediaPlayerFactory::createDalMediaPlayer name=x", "VornMediaPlayerFactory", "createDalMediaPlayer",
     "a media player was asked for by this name"},
    {"receiveAppMessage(a,b,c)", "VornAppMessaging", "SendMessageToxApp",
     "a message goes up to the app; commas in its texts are not marked"},
    {kLogout, "VornEMPAdapterControl", "logout",
     "a command for the external player arrived; the host is called if there is an instance"},
    {"std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onMute(bool)",
     "VornDeviceCapabilities", "onMute", "a directive arrived; the host is called if there is an instance"},
    {"void VornDeviceAbstractionLayer::VornCommsManager::notifyCallAction(int)", "VornCommsManager",
     "notifyCallAction", "a call action is handed to the assistant"},
    {"void VornDeviceAbstractionLayer::VornCommsManager::onCommsStateChanged(int)", "VornCommsManager",
     "onCommsStateChanged", "a new state of calls is handed to the host"},
    {"void VornDeviceAbstractionLayer::VornStorage::open()", "VornStorage", "open",
     "the operation was called"},
};

INSTANTIATE_TEST_SUITE_P(TraceLine, Meanings, testing::ValuesIn(kMeanings));

TEST(TraceMasking, ReplacesATokenAndLeavesTheRest) {
  EXPECT_EQ(TraceLine::masked(kLogin + std::string(kSecret) + kAfterToken),
            kLogin + std::string("********") + kAfterToken);
  EXPECT_EQ(TraceLine::masked(kLaunch + std::string(kSecret) + ", offset: 5ms, playerId: x"),
            kLaunch + std::string("********, offset: 5ms, playerId: x"));
  EXPECT_EQ(TraceLine::masked(kLogout), kLogout);
}

TEST(TraceMasking, HidesWhatIsNoLineOfTheLibraryWhole) {
  EXPECT_EQ(TraceLine::masked("hello"), "********");
  EXPECT_EQ(TraceLine::masked(kSecret + std::string(kAfterToken)), "********");
}

TEST(TraceMasking, HidesAMessageThatNamesASecret) {
  EXPECT_EQ(TraceLine::masked("receiveAppMessage(wifi password,KEEP-THIS,x)"), "receiveAppMessage(********");
  EXPECT_EQ(TraceLine::masked("receiveAppMessage(a,b,c)"), "receiveAppMessage(a,b,c)");
}

TEST(TraceMasking, HidesWhatCallersNamedLikeASecret) {
  const std::string player = "VornMediaPlayerFactory::createDalMediaPlayer ";
  EXPECT_EQ(TraceLine::masked(player + "name=psk=KEEP-THIS"), player + "********");
  EXPECT_EQ(TraceLine::masked(player + "name=Speech"), player + "name=Speech");
  const std::string masked =
      TraceLine::masked(kLogin + std::string("x, userName: token KEEP-THIS, forceLogin: 1"));
  EXPECT_EQ(masked.find("KEEP-THIS"), std::string::npos) << masked;
  EXPECT_EQ(TraceLine::masked(masked), masked);
}

/// A login as the library writes it, with the token that is told.
std::string loginOf(const std::string& token) { return " Time: " + (kLogin + token) + kAfterToken + "\n"; }

/// All that is shown of a trace.
std::string shown(const std::string& trace) {
  std::istringstream stream(trace);
  std::string text;
  for (const std::string& record : traceRecords(stream)) text += TraceLine::masked(record) + "\n";
  return text;
}

class HostileTokens : public testing::TestWithParam<const char*> {};

TEST_P(HostileTokens, AreNotShown) {
  EXPECT_EQ(shown(loginOf(GetParam())).find(kSecret), std::string::npos) << shown(loginOf(GetParam()));
}

const char* const kTokens[] = {
    "KEEP-THIS",
    "a, userName: KEEP-THIS, userName: b",
    "a\nKEEP-THIS",
    "a\n Time: KEEP-THIS",
    "a\n Time: KEEP-THIS\n Time: b",
    "KEEP-THIS\n",
    "\n\n\nKEEP-THIS\n\n",
    "): accessToken: KEEP-THIS, userName: ): accessToken: KEEP-THIS",
    "): playContextToken: KEEP-THIS, offset: KEEP-THIS",
    "a\n Time: void VornDeviceAbstractionLayer::VornAudioIn::startStreaming(KEEP-THIS",
    "\x1b[2JKEEP-THIS",
};

INSTANTIATE_TEST_SUITE_P(Trace, HostileTokens, testing::ValuesIn(kTokens));

// Bytes may be missing anywhere: the disk was full, or the file was moved while it was read.
TEST(TraceMasking, HidesATokenOfALineThatIsTornAnywhere) {
  const std::string before = " Time: " + std::string(kLogout) + "\n";
  const std::string login = loginOf(kSecret);
  for (std::size_t at = 0; at <= login.size(); ++at) {
    EXPECT_EQ(shown(login.substr(0, at) + before).find(kSecret), std::string::npos) << at;
    EXPECT_EQ(shown(login.substr(0, at) + login).find(kSecret), std::string::npos) << at;
    EXPECT_EQ(shown(before + login.substr(at)).find(kSecret), std::string::npos) << at;
  }
}

// The name is torn away, and what follows the token may be too.
TEST(TraceMasking, HidesATokenWhoseNameIsTornAway) {
  const std::string before = " Time: " + std::string(kLogout) + "\n";
  for (const std::string& line :
       {loginOf(kSecret), " Time: " + std::string(kLaunch) + kSecret + ", offset: 5ms, playerId: x\n"}) {
    const std::size_t token = line.find(kSecret), after = token + std::strlen(kSecret);
    for (std::size_t begin = 0; begin < token; ++begin) {
      for (std::size_t torn = token; torn > begin; torn -= std::min<std::size_t>(torn - begin, 5)) {
        for (const std::size_t end : {after, after + 3, line.size()}) {
          const std::string trace = before + line.substr(0, begin) + line.substr(torn, end - torn);
          ASSERT_EQ(shown(trace).find(kSecret), std::string::npos) << trace;
          ASSERT_EQ(shown(trace + "\n" + before).find(kSecret), std::string::npos) << trace;
        }
      }
    }
  }
}

TEST(TraceMasking, HidesATokenWhateverIsTornOutOfItsLine) {
  for (const std::string name : {kLogin, kLaunch}) {
    for (std::size_t from = 0; from < name.size(); ++from) {
      for (std::size_t to = from + 1; to <= name.size(); ++to) {
        const std::string torn = name.substr(0, from) + name.substr(to) + kSecret;
        EXPECT_EQ(shown(" Time: " + torn).find(kSecret), std::string::npos) << torn;
        if (from <= name.find('(')) continue;
        // In one line with another, whose end is lost.
        EXPECT_EQ(shown(" Time: " + (kLogin + ("a" + (kAfterToken + torn)))).find(kSecret), std::string::npos)
            << torn;
      }
    }
  }
}

class TornLines : public testing::TestWithParam<const char*> {};

TEST_P(TornLines, AreNotShown) {
  const std::string masked = TraceLine::masked(GetParam());
  EXPECT_EQ(masked.find(kSecret), std::string::npos) << masked;
  EXPECT_EQ(TraceLine::masked(masked), masked);
}

const char* const kTorn[] = {
    "KEEP-THISbool " CONTROL "logout(std::string): playerId: x",
    "KEEP-THIS, userName: ada Time: bool " CONTROL "logout(std::string): playerId: x",
    "bool " CONTROL "logout(std::stKEEP-THIS",
    "bool " CONTROL "logout(std::string): plaKEEP-THIS",
    "bool " CONTROL "logout(std::string)KEEP-THIS",
    "bool " CONTROL "logout(std::string): playerId: x\nKEEP-THIS",
    "bool " CONTROL "login(const string&, const string&): KEEP-THIS",
    "bool " CONTROL "skipForward(std::chrono::milliseconds, std::string): offset: KEEP-THIS",
    "bool " CONTROL "skipForward(std::chrono::milliseconds, std::string): offset: 5KEEP-THIS, playerId: x",
    AUDIO "sendAudioData(std::vector<short int>&) calling xApp API count=KEEP-THIS",
    AUDIO "sendAudioData(std::vector<short int>&) calling xApp API count=3KEEP-THIS",
    AUDIO "notifyAlexaButtonReleased() calling xAppKEEP-THIS",
    AUDIO "notifyAlexaButtonReleased() calling xApp API\nKEEP-THIS",
    "VornMediaPlayerFactory::createDalMediaPlayer nKEEP-THIS",
    "VornMediaPlayerFactory::createDalMediaPlayer name=Speech\nKEEP-THIS",
    "receiveAppMessage(a,b,KEEP-THIS",
    "receiveAppMessage(a,b,c)\nKEEP-THIS",
};

INSTANTIATE_TEST_SUITE_P(Trace, TornLines, testing::ValuesIn(kTorn));

TEST(TraceMasking, ShowsEveryWholeLineThatHoldsNoToken) {
  std::ifstream page(VORN_TRACE_PAGE);
  int lines = 0;
  for (std::string row; std::getline(page, row);) {
    const std::size_t begin = row.rfind(" | `");
    if (row.compare(0, 6, "| Vorn") != 0 || row.compare(row.size() - 3, 3, "` |") != 0) continue;
    std::string line = row.substr(begin + 4, row.rfind('`') - begin - 4);
    for (std::size_t open = line.find('{'); open != std::string::npos; open = line.find('{'))
      line.replace(open, line.find('}') - open + 1,
                   line[open + 1] == 'c' || line[open + 1] == '1'                             ? "-7"
                   : line.compare(open, 2, "{a") == 0 || line.compare(open, 6, "{playC") == 0 ? "********"
                                                                                              : "x");
    EXPECT_EQ(TraceLine::masked(line), line);
    ++lines;
  }
  EXPECT_GT(lines, 35);
}

TEST(TraceMasking, GoesToTheEndWhenASecondTokenFollowsTheFirst) {
  const std::string first = kLogin + std::string("a, userName: b");
  EXPECT_EQ(TraceLine::masked(first + " Time: " + kLogin + kSecret), kLogin + std::string("********"));
}

TEST(TraceRecords, BeginWithTheirPrefixAndGoOnWithoutIt) {
  std::istringstream trace("rest\n Time: one\n Time: two\nmore\n\n Time:x\n Time: last");
  EXPECT_EQ(traceRecords(trace), (std::vector<std::string>{"rest", "one", "two\nmore\n\n Time:x", "last"}));
}

TEST(TraceShapes, DifferInMoreThanNumbers) {
  EXPECT_EQ(TraceLine::shape("count=12 of 3456"), "count=# of #");
  EXPECT_EQ(TraceLine::shape("019"), "#");
  EXPECT_EQ(TraceLine::shape("a/b:c"), "a/b:c");
}

struct Name {
  const char* text;
  bool secret;
};

class Names : public testing::TestWithParam<Name> {};

TEST_P(Names, AreSecretByTheirLetters) {
  EXPECT_EQ(vorn_testing::isSecretName(GetParam().text), GetParam().secret);
}

const Name kNames[] = {
    {"accessToken", true},
    {"ACCESS_TOKEN", true},
    {"access-token", true},
    {"access token", true},
    {"passwd", true},
    {"wifiPassword", true},
    {"PWD", true},
    {"passphrase", true},
    {"wifi_psk", true},
    {"apiKey", true},
    {"api.key", true},
    {"credentials", true},
    {"clientSecret", true},
    {"t\no\nk\ne\nn", true},
    {"networkKey", true},
    {"", false},
    {"key", false},
    {"channel", false},
    {"tok", false},
    {"friendlyName", false},
    {"pre_shared_key", true},
    {"Authorization", true},
    {"\\u0070sk", true},
    {"\\U0070sk", false},
    {"%70sk", true},
    {"\\x70%73k", true},
    {"&#112;sk", true},
    {"&#x70;s&#107", true},
    {"\\160sk", true},
    {"%2570sk", true},
    {"%u0070sk", true},
    {"\\\\u0070sk", true},
    {"%7", false},
    {"\\u00", false},
    {"%E2%82%AC", false},
    {"100% sk", false},
};

INSTANTIATE_TEST_SUITE_P(Masking, Names, testing::ValuesIn(kNames));

TEST(Masking, KnowsATextThatWasMaskedOnce) {
  EXPECT_TRUE(vorn_testing::isSecretText("hello ********"));
  EXPECT_TRUE(vorn_testing::isSecretText("the token: 1"));
  EXPECT_FALSE(vorn_testing::isSecretText("hello *******"));
}

}  // namespace
