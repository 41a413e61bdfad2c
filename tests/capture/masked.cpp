// What the capture masks on every call, beside the rule of all tools, which is easier to read and slower.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "../../tools/capture/library/Masker.h"

namespace {

using namespace vorn_capture;

class Masked : public testing::Test {
 protected:
  std::size_t below(std::size_t end) { return m_random() % end; }

  /// Pieces of telling words, whole ones, and what may stand between, in any case.
  std::string text() {
    std::string made;
    for (std::size_t parts = below(6); parts > 0; --parts) {
      const std::string word = vorn_testing::kSecretWords[below(std::size(vorn_testing::kSecretWords))];
      const std::size_t from = below(2) ? 0 : below(word.size());
      std::string part = word.substr(from, below(3) ? std::string::npos : below(word.size()));
      for (char& c : part) {
        if (below(3) == 0) c = static_cast<char>(c - 'a' + 'A');
        if (below(40) == 0) c = static_cast<char>(below(256));
      }
      static const char* const kBetween[] = {"",  "",  "_", "-",        " ",   "\n",
                                             ".", "7", "x", "\xc3\xa4", "***", "********"};
      part = escaped(part);
      made += part.insert(below(part.size() + 1), kBetween[below(std::size(kBetween))]);
      made += kBetween[below(std::size(kBetween))];
    }
    return made;
  }

  /// Some of its characters as JSON, C, web addresses and HTML write them, and some of these again.
  std::string escaped(std::string text) {
    static const char* const kForms[] = {"\\u%04x", "\\x%02X", "%%%02x", "\\%03o",
                                         "&#%d;",   "&#x%x",   "%%u%04X"};
    while (below(3) == 0 && !text.empty()) {
      std::string made;
      for (const char c : text) {
        char form[16] = {c};
        if (below(3) == 0)
          std::snprintf(form, sizeof form, kForms[below(std::size(kForms))], static_cast<unsigned char>(c));
        made += form;
      }
      if (below(20) == 0) made.resize(below(made.size() + 1));
      text.swap(made);
    }
    return text;
  }

  /// In parts, as a list of values is.
  bool isTelling(const std::string& text) {
    SecretSearch search;
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t size = 1 + below(text.size() - at);
      search.add(text.data() + at, size);
      at += size;
    }
    return search.found();
  }

  std::mt19937 m_random{2};
};

TEST_F(Masked, TextsAreThoseThatTheRuleOfAllToolsMasks) {
  int telling = 0;
  for (int i = 0; i < 100000; ++i) {
    const std::string made = text();
    const bool wanted = vorn_testing::isSecretText(made);
    ASSERT_EQ(isTelling(made), wanted) << made;
    telling += wanted;
  }
  EXPECT_GT(telling, 20000);
  EXPECT_LT(telling, 80000);
}

TEST_F(Masked, NamesAndTextsAreToldHoweverTheyAreSpelled) {
  const char* const kSpellings[] = {"accessToken",
                                    "ACCESS_TOKEN",
                                    "access-token",
                                    "access\ntoken",
                                    "\"access\" \"token\"",
                                    "{\"to\\u006ben\":\"x\"}",
                                    "\\u0054\\u004f\\u004b\\u0045\\u004e",
                                    "to%6ben=x",
                                    "to%256ben",
                                    "to%25256ben",
                                    "wifi%5Fpass%77ord",
                                    "pass&#119;ord",
                                    "pass&#x77ord",
                                    "pass\\167ord",
                                    "p\\x73k",
                                    "\xff\xfePSK",
                                    "ps\\\\k",
                                    "a%7%70sk",
                                    "%%%70sk",
                                    "&#&#112;sk",
                                    "x ******** y"};
  for (const char* const spelling : kSpellings) {
    EXPECT_TRUE(isTelling(spelling)) << spelling;
    EXPECT_TRUE(vorn_testing::isSecretText(spelling)) << spelling;
  }
  for (const char* const harmless : {"", "%", "\\", "&#", "%74%6f", "to\\u00", "tok%65", "\\u0130ken"}) {
    EXPECT_FALSE(isTelling(harmless)) << harmless;
    EXPECT_FALSE(vorn_testing::isSecretText(harmless)) << harmless;
  }
}

TEST_F(Masked, ValuesAreFoundAgainWhereverTheyStand) {
  std::vector<std::string> values;
  for (std::size_t i = 0; i < 200; ++i) {
    std::string value;
    while (value.size() < known::kShortest + i % 40) value += static_cast<char>('a' + below(3));
    known::add(value.data(), value.size());
    values.push_back(value);
  }
  int found = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string made;
    for (std::size_t size = below(12); made.size() < size;) made += static_cast<char>('a' + below(3));
    if (below(4) == 0) made.insert(below(made.size() + 1), values[below(values.size())]);
    const bool wanted = std::any_of(values.begin(), values.end(), [&](const std::string& value) {
      return made.find(value) != std::string::npos;
    });
    ASSERT_EQ(known::in(made.data(), made.size()), wanted) << made;
    found += wanted;
  }
  EXPECT_GT(found, 5000);
  EXPECT_LT(found, 15000);
}

TEST_F(Masked, ValuesAreFoundAsOtherTextsSpellThem) {
  const auto isKnown = [](const std::string& text) { return known::in(text.data(), text.size()); };
  const std::string secret = "Qx7/Zr9\"Lm2 Gr\u00fc\u00df \U0001f511", itself = "pa%41ss\\n&amp;";
  known::add(secret.data(), secret.size());
  known::add(itself.data(), itself.size());
  for (const char* const spelled :
       {R"(Qx7\/Zr9\"Lm2 Gr\u00fc\u00DF \ud83d\udd11)", "Qx7%2FZr9%22Lm2%20Gr%C3%BC%c3%9f%20%F0%9F%94%91",
        "Qx7/Zr9&quot;Lm2 Gr&#252;&#xDF; &#x1F511;", R"(Qx7/Zr9\\\"Lm2 Gr\\u00fc\\u00df \\ud83d\\udd11)",
        R"(pa%41ss\\n&amp;)"}) {
    EXPECT_TRUE(isKnown(std::string("{\"k\":\"") + spelled + "\"}")) << spelled;
    EXPECT_TRUE(isKnown(std::string(5000, '%') + spelled)) << spelled;
  }
  for (const char* const other :
       {"Qx7%2FZr9%23Lm2%20Gr%C3%BC%c3%9f%20%F0%9F%94%91", "%%%%%%", "a \\ b", "100 %\\ &"})
    EXPECT_FALSE(isKnown(other)) << other;
}

TEST_F(Masked, ValuesAreFoundWhereTheyWereCut) {
  const auto isKnown = [](const std::string& text) { return known::in(text.data(), text.size()); };
  for (const std::string& secret :
       {std::string("before0\0behind0", 15), std::string("first10\nsecond10\r\nthird10\n")})
    known::add(secret.data(), secret.size());
  for (const char* const part : {"before0", "behind0", "first10", "second10", "third10"})
    EXPECT_TRUE(isKnown(std::string("x ") + part)) << part;
  EXPECT_FALSE(isKnown("before1"));
}

/// Last: from there on it is so for all.
TEST_F(Masked, TextsAreAllMaskedWhenThereAreTooManySecrets) {
  for (int i = 0; i < 2100; ++i) {
    const std::string value = "value " + std::to_string(i);
    known::add(value.data(), value.size());
  }
  EXPECT_TRUE(known::in("harmless", 8));
  EXPECT_FALSE(known::in("short", 5));
}

}  // namespace
