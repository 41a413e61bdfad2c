// What the checks give a host: the arguments of every kind and type, and the words of the headers.

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "src/checks/Checks.h"
#include "src/checks/Words.h"

namespace {

using namespace vorn_testing::checks;
using List = std::vector<std::string>;

const std::vector<Given> kAll = {Given::kPlain, Given::kEmpty, Given::kLarge, Given::kHostile, Given::kLent,
                                 Given::kLoad,  Given::kWord,  Given::kNew,   Given::kCut};

template <class Value>
std::vector<Value> made(Given given, int count) {
  std::vector<Value> all;
  for (int which = 0; which < count; ++which) all.push_back(Sample<Value>::make(given, which));
  return all;
}

TEST(Samples, AreSoManyOfEachKind) {
  std::vector<int> counts;
  for (const Given given : kAll) counts.push_back(samples(given));
  EXPECT_EQ(counts, (std::vector<int>{2, 2, 3, 14, 2, 6, 0, 2, 4}));
}

/// Cut, folded or trimmed somewhere by whoever takes a sign of it for its own.
constexpr char kManySigns[] = "Vorn\tConform@a/b:c;d,e=f?g&h|i%20\"j\" (k)[l]{m}#n\n  ";

TEST(Samples, OfTextsAreAsTheirKindSays) {
  EXPECT_EQ(made<std::string>(Given::kPlain, 3),
            (List{"vorn-conformance", "Z\xc3\xbcrich \xe9\x9f\xb3\xe6\xa5\xbd", "vorn-conformance"}));
  EXPECT_EQ(made<std::string>(Given::kEmpty, 2), (List{"", ""}));
  EXPECT_EQ(made<std::string>(Given::kWord, 2), (List{"", ""}));
  const List large = made<std::string>(Given::kLarge, 4), lent = made<std::string>(Given::kLent, 3);
  const std::size_t mebibyte = 1 << 20;
  EXPECT_TRUE(large == (List{std::string(mebibyte, 'a'), std::string(mebibyte, '0'),
                             std::string(mebibyte, '['), std::string(mebibyte, 'a')}));
  EXPECT_TRUE(lent[0] == "L" + std::string(300000, 'l') && lent[1] == kManySigns && lent[2] == lent[0]);
  const List load = made<std::string>(Given::kLoad, 7);
  EXPECT_TRUE(load == (List{"aaa", std::string(12, 'b'), std::string(48, 'c'), std::string(192, 'd'),
                            std::string(768, 'e'), std::string(3072, 'f'), "ggg"}));
  const List fresh = made<std::string>(Given::kNew, 2);
  EXPECT_EQ(fresh[0].substr(0, 21), "vorn-conformance new ");
  EXPECT_EQ(std::stoi(fresh[1].substr(21)), std::stoi(fresh[0].substr(21)) + 1);
}

TEST(Samples, OfTextsToBeCutStandDifferently) {
  const List cut = made<std::string>(Given::kCut, 4);
  for (std::size_t which = 0; which < 3; ++which) {
    EXPECT_EQ(cut[which].substr(0, which + 3), std::string(which, 'c') + "\xe9\x9f\xb3");
    EXPECT_EQ(cut[which].size(), 4500 + which);
  }
  EXPECT_EQ(cut[3].substr(0, 4), "\xf0\x9f\x8e\xb5");
  EXPECT_EQ(cut[3].size(), 6000U);
}

TEST(Samples, OfTextsThatNobodyExpects) {
  const List hostile = made<std::string>(Given::kHostile, 14);
  EXPECT_EQ(hostile[0], "\xff\xfe\xc0\x80");
  EXPECT_EQ(hostile[1], std::string("\0vorn\0conformance\0", 18));
  EXPECT_EQ(hostile[2], "%s%n%1000000d%n");
  EXPECT_EQ(hostile[3], "../vorn-conformance/../\r\n\x1b[2J");
  EXPECT_EQ(hostile[4], "'; DROP TABLE \"x\"; -- <![CDATA[ {\"a\":[[[[ $(false) `false`");
  EXPECT_EQ(hostile[5], "\xed\xa0\x80\xf4\x90\x80\x80\xe2\x82");
  EXPECT_EQ(List(hostile.begin() + 6, hostile.end()),
            (List{"99999999999999999999", "-1", "   ", "1e999", "(*[{\\", "\n", std::string(300, '\x80'),
                  std::string(300, '\xf0')}));
}

TEST(Samples, OfListsHoldTheTextTwice) {
  EXPECT_EQ(Sample<List>::make(Given::kPlain, 0), (List{"vorn-conformance", "vorn-conformance"}));
  EXPECT_EQ(made<List>(Given::kEmpty, 2), (std::vector<List>{{}, {""}}));
  EXPECT_EQ(Sample<List>::make(Given::kLarge, 0), List(10000, "vorn-conformance"));
  EXPECT_EQ(Sample<List>::make(Given::kLarge, 1).size(), 2U);
  EXPECT_EQ(Sample<List>::make(Given::kLent, 1), (List{kManySigns, "b", "a"}));
  const List letters = {"aaa", "a", "b", "c", "d", "e", "f", "g", "h",
                        "i",   "j", "k", "l", "m", "n", "o", "p"};
  EXPECT_EQ(Sample<List>::make(Given::kLoad, 0), letters);
  List reverse(letters.rbegin(), letters.rend());
  reverse.back() = std::string(12, 'b');
  EXPECT_EQ(Sample<List>::make(Given::kLoad, 1), reverse);
}

TEST(Samples, OfSetsHoldTheTextByItself) {
  EXPECT_EQ(Sample<Entries>::make(Given::kPlain, 0), (Entries{{"vorn-conformance", "vorn-conformance"}}));
  EXPECT_EQ(made<Entries>(Given::kEmpty, 2), (std::vector<Entries>{{}, {{"", ""}}}));
  EXPECT_EQ(Sample<Entries>::make(Given::kLarge, 1).size(), 1U);
  const Entries large = Sample<Entries>::make(Given::kLarge, 0);
  EXPECT_EQ(large.size(), 10000U);
  EXPECT_TRUE(large.count("vorn-conformance 0") && large.at("vorn-conformance 9999") == "large");
  EXPECT_EQ(Sample<CommsStateInfo>::make(Given::kPlain, 0).state, "vorn-conformance");
}

TEST(Samples, OfWholeNumbersReachTheirLimits) {
  using Limits = std::numeric_limits<int>;
  EXPECT_EQ(made<int>(Given::kHostile, 15),
            (std::vector<int>{Limits::min(), -1, 0, 1, -100, 100, 101, 255, 256, 999, 4096, 32768, 65536,
                              Limits::max(), Limits::min()}));
  EXPECT_EQ(made<int>(Given::kLarge, 3),
            (std::vector<int>{Limits::max() - 1, Limits::max(), Limits::max() - 1}));
  EXPECT_EQ(made<int>(Given::kEmpty, 2), (std::vector<int>{0, 0}));
  EXPECT_EQ(made<int>(Given::kLoad, 3), (std::vector<int>{-10, -3, 4}));
  EXPECT_EQ(made<int>(Given::kPlain, 3), (std::vector<int>{1, 0, 1}));
  EXPECT_EQ(made<bool>(Given::kPlain, 3), (std::vector<bool>{true, false, true}));
  EXPECT_EQ(Sample<std::chrono::milliseconds>::make(Given::kLarge, 1), std::chrono::milliseconds::max());
}

TEST(Samples, OfNumbersAreEverythingThatADoubleIs) {
  using Limits = std::numeric_limits<double>;
  const std::vector<double> hostile = made<double>(Given::kHostile, 15);
  EXPECT_TRUE(std::isnan(hostile[0]) && std::isnan(hostile[14]) && std::signbit(hostile[5]));
  EXPECT_EQ(std::vector<double>(hostile.begin() + 1, hostile.end() - 1),
            (std::vector<double>{-Limits::infinity(), Limits::infinity(), Limits::lowest(), Limits::max(), 0,
                                 Limits::denorm_min(), -1, 1e10, 2147483648.0, -2147483649.0, 1e300, 0.1,
                                 -1e-300}));
  EXPECT_EQ(made<double>(Given::kLarge, 2), (std::vector<double>{Limits::max(), Limits::infinity()}));
  EXPECT_EQ(made<double>(Given::kPlain, 3), (std::vector<double>{0, 0.5, 0}));
}

TEST(Words, AreThoseOfTheHeaders) {
  const auto joined = [](const std::string& operation) {
    std::string all;
    for (const List& call : wordsOf(operation)) {
      for (const std::string& word : call) all += word + " ";
      all += "| ";
    }
    return all;
  };
  EXPECT_EQ(joined("alexaStateChanged"), "CONNECTED | DISCONNECTED | IDLE | ");
  EXPECT_EQ(joined("dialogUXStateChanged"), "LISTENING | THINKING | SPEAKING | IDLE | ");
  EXPECT_EQ(joined("getVolume"), "");
  const std::set<std::string> some = {"alexaAuthStatusChanged", "notifyAlexaInvocationDetected",
                                      "getConfigData",          "getSystemSetting",
                                      "onSendKeystroke",        "onSetToggleState"};
  std::vector<std::size_t> counts;
  for (const std::string& operation : some) counts.push_back(wordsOf(operation).size());
  EXPECT_EQ(counts, (std::vector<std::size_t>{3, 43, 3, 3, 6, 4}));
  std::set<std::string> items;
  for (const List& call : wordsOf("getConfigData")) items.insert(call.at(0));
  EXPECT_EQ(items.size(), 43U);
  for (const List& call : wordsOf("onSetToggleState")) EXPECT_EQ(call.at(0), "vorn-conformance");
}

}  // namespace
