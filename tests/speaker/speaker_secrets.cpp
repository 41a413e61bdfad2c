// A marked secret is sent through every operation and every mistake, and looked for in every byte that the speaker wrote.

#include <vorn_testing/Operations.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "language/Operations.h"
#include "speaker/speaker_program.h"
#include "text/Secrets.h"
#include "text/Spelling.h"

namespace {

using namespace vorn_speaker;

constexpr char kMark[] = "KEEP-THIS";

/// A value of the type that a parameter wants, with the secret wherever its name or another's calls for one.
std::string argument(const Operation& operation, std::size_t index, const std::string& secret) {
  const Parameter& parameter = operation.parameters[index];
  if (parameter.type.find("a set") == 0)
    return "{client-secret=" + spell(secret) + ", \"a, PSK\"=" + spell(secret) + ", city=Oslo}";
  if (parameter.type.find("a list") == 0) return "[a, " + spell("Token: " + secret) + "]";
  if (parameter.type.find("samples") == 0) return "[1, 2]";
  if (parameter.type == "true or false") return "true";
  if (parameter.type.find("a duration") == 0) return "1s";
  if (parameter.type != "a text" && parameter.type != "a communications state") return "1";
  if (isSecretName(parameter.name)) return spell(secret);
  if (parameter.name == "key") return "WIFI_password";
  const bool first = index == 0 || operation.parameters[0].type != "a text";
  if (operation.parameters.size() == 1) return spell("access-token=" + secret);
  return first && !isSecretName(operation.parameters[0].name) ? "\"Api key\"" : spell(secret);
}

std::string statement(const Operation& operation, const std::string& secret) {
  std::string line =
      (operation.caller == Caller::kAssistant ? "assistant " : "firmware ") + operation.fullName();
  const bool plain = std::any_of(operation.parameters.begin(), operation.parameters.end(),
                                 [](const Parameter& parameter) { return isSecretName(parameter.name); });
  for (std::size_t i = 0; i < operation.parameters.size(); ++i) {
    const bool hidden = isSecretName(operation.parameters[i].name);
    line +=
        " " + (plain && !hidden && operation.parameters[i].type == "a text" ? "ada"
                                                                            : argument(operation, i, secret));
  }
  return line;
}

class Secrets : public SpeakerProgram {
 protected:
  /// Where the secret stands that should stand nowhere, but for what was put there: the device's own store, the
  /// library's own trace and the files of the test.
  std::string leak(const std::string& output) {
    if (output.find(kMark) != std::string::npos) return "the output:\n" + lineWith(output);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kFolder)) {
      const std::string name = entry.path().filename();
      if (!entry.is_regular_file() || name.find("store.sqlite") == 0 || m_inputs.count(name)) continue;
      const std::string text = content(entry.path());
      if (text.find(kMark) != std::string::npos) return name + ":\n" + lineWith(text);
    }
    return "";
  }

  static std::string lineWith(const std::string& text) {
    const std::size_t at = text.find(kMark);
    const std::size_t begin = text.rfind('\n', at) + 1;
    return text.substr(begin, text.find('\n', at) - begin);
  }

  std::string input(const std::string& name, const std::string& content) {
    m_inputs.insert(name);
    return file(name, content);
  }

  const std::string m_login = "assistant VornEMPAdapterControl.login KEEP-THIS ada true 1s x\n";
  std::set<std::string> m_inputs;
};

struct ListOfSecrets : vorn_testing::OperationVisitor {
  template <class OfHost, class OfAdapter>
  void down(const vorn_testing::Operation& operation, OfHost, OfAdapter) {
    for (const std::string& name : vorn_testing::parameterNames(operation)) {
      if (isSecretName(name)) all.insert(std::string(operation.adapter) + "." + operation.name + " " + name);
    }
  }
  std::set<std::string> all;
};

TEST(Parameters, ThatAreSecretInTheListAreSecretInTheLanguage) {
  ListOfSecrets list;
  vorn_testing::visitOperations(list);
  EXPECT_EQ(list.all, (std::set<std::string>{"VornEMPAdapterControl.login accessToken",
                                             "VornEMPAdapterControl.launchAndPlay playContextToken"}));
  for (const Operation& operation : operations()) {
    for (const Parameter& parameter : operation.parameters) {
      if (isSecretName(parameter.name)) list.all.erase(operation.fullName() + " " + parameter.name);
    }
  }
  EXPECT_TRUE(list.all.empty());
}

class Spellings : public Secrets, public testing::WithParamInterface<const char*> {};

TEST_P(Spellings, PassEveryOperationUnseen) {
  std::string lines = "assistant VornStorage.open\n";
  for (const Operation& operation : operations()) lines += statement(operation, GetParam()) + "\n";
  lines += "assistant VornDeviceInfo.getSystemSetting WIFI_password\n";
  const std::string scenario = input("all.scenario", lines);
  const std::string output = run("record /tmp/speaker/recording --keep-going --scenario " + scenario);
  ASSERT_EQ(m_status, 0) << output;
  EXPECT_EQ(leak(output), "");
  EXPECT_EQ(leak(run("report /tmp/speaker/recording")), "");
}

const char* const kSpellings[] = {
    "KEEP-THIS",        "a, KEEP-THIS, b=c}",
    "\"KEEP-THIS\"",    "a\nKEEP-THIS",
    "KEEP-THIS\\",      "x, userName: KEEP-THIS, offset: y",
    "\x1b[2JKEEP-THIS", "a\n Time: KEEP-THIS\n Time: b",
};

INSTANTIATE_TEST_SUITE_P(Speaker, Spellings, testing::ValuesIn(kSpellings));

TEST_F(Secrets, AreShownWhenAskedFor) {
  const std::string output =
      play(m_login + "expect call VornEMPAdapterControl.login KEEP-THAT bob true 1s x\n", "--secrets");
  EXPECT_TRUE(has(output, "login(KEEP-THIS, ada"));
  EXPECT_TRUE(has(output, "expected the call VornEMPAdapterControl.login KEEP-THAT bob true 1s x, saw "));
}

TEST_F(Secrets, StayOutOfEveryMessageOfAnExpectation) {
  const std::string output =
      play(m_login +
               "expect call VornEMPAdapterControl.login KEEP-THIS bob true 1s x\n"
               "expect no call VornEMPAdapterControl.login KEEP-THIS ada true 1s x\n"
               "expect call VornEMPAdapterControl.logout KEEP-THIS\n"
               "expect KEEP-THIS\nexpect trace \"KEEP-THIS, never\"\nsection KEEP-THIS\n"
               "firmware VornDeviceInfo.notifySystemSettingChanged psk KEEP-THAT\n"
               "expect call VornDeviceInfo.notifySystemSettingChanged psk KEEP-THIS\n"
               "assistant VornDeviceInfo.setSystemSetting channel 1\nexpect token=KEEP-THIS\n",
           "--keep-going");
  EXPECT_EQ(m_status, 1);
  EXPECT_EQ(output.find(kMark), std::string::npos) << lineWith(output);
  EXPECT_TRUE(has(output, "expected the call VornEMPAdapterControl.login ******** bob true 1s x, saw "));
}

TEST_F(Secrets, StayOutOfAnExpectationOfOneThatIsNotThere) {
  const std::string output = play(
      "assistant VornDeviceInfo.getConfigData wifi_psk\nexpect KEEP-THIS\n"
      "assistant VornDeviceInfo.getConfigData productID\nexpect other\n",
      "--keep-going");
  EXPECT_EQ(output.find(kMark), std::string::npos) << lineWith(output);
  EXPECT_TRUE(has(output, "expected the result ********, saw ") &&
              has(output, "expected the result other, saw "));
}

TEST_F(Secrets, AreKnownByAnExpectation) {
  play(m_login + "expect call VornEMPAdapterControl.login KEEP-THIS ada on 1000ms x\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Secrets, StayOutOfTheTextsOfExceptions) {
  const std::string output = play("fail VornEMPAdapterControl.login \"no KEEP-THIS\"\n" + m_login +
                                      "fail VornDeviceInfo.getTimezone \"bad token KEEP-THIS\"\n"
                                      "assistant VornDeviceInfo.getTimezone\nexpect now\n"
                                      "fail VornDeviceInfo.getVolume \"still KEEP-THIS\"\n"
                                      "assistant VornDeviceInfo.getVolume\nexpect 3\n",
                                  "--keep-going");
  EXPECT_EQ(output.find(kMark), std::string::npos) << lineWith(output);
  EXPECT_TRUE(has(output, "getVolume() threw ********\n"));
}

TEST_F(Secrets, StayOutOfAReportOfACrash) {
  const std::string output = play(
      "assistant VornDeviceInfo.setSystemSetting psk KEEP-THIS\nassistant VornDeviceInfo.getMuteStatus\n",
      "--host " VORN_OWN_HOST);
  EXPECT_EQ(m_status, 3);
  EXPECT_EQ(output.find(kMark), std::string::npos) << lineWith(output);
}

TEST_F(Secrets, OfAClearRecordingAreShownOnlyWhenAskedFor) {
  m_inputs.insert("clear");
  run("record /tmp/speaker/clear --secrets --scenario " +
      input("clear.scenario", m_login + "assistant VornDeviceInfo.setSystemSetting psk KEEP-THIS\n"
                                        "assistant VornDeviceInfo.getSystemSetting psk\n"));
  ASSERT_TRUE(has(content("/tmp/speaker/clear"), kMark));
  EXPECT_EQ(leak(run("report /tmp/speaker/clear")), "");
  EXPECT_TRUE(has(run("report /tmp/speaker/clear --secrets"), kMark));
  EXPECT_EQ(leak(run("replay /tmp/speaker/clear")), "");
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(leak(run("replay /tmp/speaker/clear --host " VORN_OWN_HOST)), "");
}

TEST_F(Secrets, MayDifferInAReplayOfAMaskedRecordingOnly) {
  const std::string lines =
      "assistant VornStorage.open\nassistant VornStorage.writeKeyValue {psk=KEEP-THIS}\n"
      "assistant VornStorage.readKeyValue psk\n";
  run("record /tmp/speaker/masked --scenario " + input("a.scenario", lines));
  EXPECT_TRUE(has(run("replay /tmp/speaker/masked"), "all answered as recorded"));
  EXPECT_TRUE(has(run("replay /tmp/speaker/masked --secrets"), "all answered as recorded"));
  run("record /tmp/speaker/clear --secrets --scenario " + input("a.scenario", lines));
  std::string text = content("/tmp/speaker/clear");
  text.replace(text.rfind(kMark), 9, "KEEP-THAT");
  const std::string output = run("replay " + input("changed", text));
  EXPECT_TRUE(has(output, "is answered differently"));
  EXPECT_EQ(output.find("KEEP"), std::string::npos) << output;
  EXPECT_TRUE(has(run("replay /tmp/speaker/changed --secrets"), "recorded  {psk=KEEP-THAT}\n"));
}

TEST_F(Secrets, StayOutOfWhatThePipedConsoleSaysAndSaves) {
  const std::string output =
      run("console",
          input("typed", " \t" + m_login + "assistant VornEMPAdapterControl.Logn KEEP-THIS ada\n" +
                             "assistant VornEMPAdapterControl.login KEEP-THIS ada maybe 1s x\n"
                             "VornEMPAdapterControl.login KEEP-THIS\nlog in KEEP-THIS\n"
                             "assistant VornDeviceInfo.setSystemSetting Psk KEEP-THIS\n"
                             "assistant VornDeviceInfo.getSystemSetting Psk\nexpect true value=KEEP-THIS\n"
                             "expect KEEP-THIS\nfirmware VornAppMessaging.SendMessageToxApp a b KEEP-THIS\n"
                             "assistant VornStorage.writeKeyValue {passphrase=\"KEEP-THIS, a\", b=c}\n"
                             "assistant VornStorage.removeKeyValue [a, \"p\\x73k: x\\xffKEEP-THIS\"]\n"
                             "assistant VornDeviceInfo.getVolume\nsave /tmp/speaker/saved.scenario\n"));
  EXPECT_EQ(leak(output), "");
  EXPECT_EQ(m_status, 1);
  EXPECT_EQ(content("/tmp/speaker/saved.scenario"),
            "assistant VornEMPAdapterControl.login ******** ada true 1s x\n"
            "assistant VornDeviceInfo.setSystemSetting Psk ********\n"
            "assistant VornDeviceInfo.getSystemSetting Psk\n"
            "# expect ********\n# expect ********\n# ********\n"
            "assistant VornStorage.writeKeyValue {b=c, passphrase=********}\n# ********\n"
            "assistant VornDeviceInfo.getVolume\n");
}

TEST_F(Secrets, StayOutOfTheConsoleWhereverALineIsTorn) {
  std::string lines;
  for (std::size_t at = 1; at < m_login.size(); ++at) {
    lines += m_login.substr(0, at) + "\n" + m_login.substr(at) + "\"" + m_login.substr(0, at) + "\n";
  }
  EXPECT_EQ(leak(run("console", input("typed", lines))), "");
}

TEST_F(Secrets, StayOutOfMessagesAboutAScenarioThatIsTorn) {
  std::string lines;
  for (std::size_t at = 1; at < m_login.size(); ++at) lines += m_login.substr(at);
  EXPECT_EQ(leak(run(input("torn.scenario", lines))), "");
  EXPECT_EQ(m_status, 2);
}

}  // namespace
