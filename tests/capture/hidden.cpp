// What of a call's arguments and answers vorn-capture puts into a ring, and what it masks.

#include <gtest/gtest.h>

#include "../../tools/capture/library/Values.h"

namespace {

using namespace vorn_capture;
using vorn_testing::kMask;

TEST(ParameterNames, TellOfSecretsAndKeys) {
  const auto told = [](const char* name) {
    const ParameterName made = parameterName(name);
    return std::string(made.secret ? "s" : "") + (made.key ? "k" : "") + (made.keys ? "K" : "");
  };
  EXPECT_EQ(told("accessToken"), "s");
  EXPECT_EQ(told("key"), "k");
  EXPECT_EQ(told("keys"), "kK");
  EXPECT_EQ(told("value") + told("keyed") + told(""), "");
}

/// The texts of a call's arguments as they go into a ring, one behind the other; what is masked is "*".
class HiddenArguments : public testing::Test {
 protected:
  template <class Value>
  std::string put(const Value& value, const char* name) {
    alignas(8) char bytes[1024] = {};
    Pen pen(bytes);
    putArgument(pen, value, parameterName(name), masking);
    return shown(bytes);
  }
  template <class Value>
  static std::string answer(const Value& value, bool secret) {
    alignas(8) char bytes[1024] = {};
    Pen pen(bytes);
    putAnswer(pen, value, secret);
    return shown(bytes);
  }
  static std::string shown(const char* bytes) {
    ValueHead head;
    std::memcpy(&head, bytes, sizeof head);
    if (head.tag == Tag::kMasked) return "*";
    std::string text(bytes + sizeof head, head.size);
    for (char& c : text) c = c >= ' ' && c <= '~' ? c : '|';
    return text;
  }
  static std::string_view text(const char* value) { return value; }

  Masking masking;
};

TEST_F(HiddenArguments, AreShownWhereNothingTellsOfASecret) {
  EXPECT_EQ(put(text("mode"), "key") + put(text("night"), "value"), "modenight");
  EXPECT_FALSE(masking.masked || masking.answer);
}

TEST_F(HiddenArguments, AreMaskedByTheirOwnName) {
  EXPECT_EQ(put(text("x"), "accessToken"), "*");
  EXPECT_TRUE(masking.masked && !masking.answer);
  EXPECT_EQ(put(text("ada"), "userName"), "ada");
}

TEST_F(HiddenArguments, AreMaskedBehindAKeyThatTells) {
  EXPECT_EQ(put(text("wifiPassword"), "key"), "wifiPassword");
  EXPECT_TRUE(!masking.masked && masking.answer);
  EXPECT_EQ(put(text("x"), "value"), "*");
  EXPECT_TRUE(masking.masked);
}

TEST_F(HiddenArguments, OfManyKeysAreAllShown) {
  EXPECT_EQ(put(text("wifiPassword"), "keys"), "wifiPassword");
  EXPECT_FALSE(masking.answer);
}

TEST_F(HiddenArguments, ThatTellThemselvesAreMaskedWithAllThatFollows) {
  EXPECT_EQ(put(text("the password: x"), "message"), "*");
  EXPECT_EQ(put(text("y"), "more"), "*");
  EXPECT_TRUE(masking.answer && masking.masked);
}

TEST_F(HiddenArguments, AreFoundAgain) {
  put(text("known-1"), "accessToken");
  EXPECT_EQ(put(text("it is known-1."), "note"), "*");
  EXPECT_EQ(put(text("it is known-2."), "note"), "it is known-2.");
  EXPECT_EQ(put(Texts{"a", "known-1"}, "list"), "*");
  EXPECT_EQ(put(Entries{{"a", "known-1"}}, "entries"), "*");
}

TEST_F(HiddenArguments, OfASetAreMaskedByTheirKeys) {
  EXPECT_EQ(put(Entries{{"apiToken", "x"}, {"city", "Oslo"}}, "entries"),
            std::string("||||apiToken||||") + kMask + "||||city||||Oslo");
  EXPECT_TRUE(masking.masked);
  Masking none;
  masking = none;
  put(Entries{{"city", "Oslo"}}, "entries");
  EXPECT_FALSE(masking.masked);
}

TEST_F(HiddenArguments, TellOfTheAnswer) {
  EXPECT_EQ(answer(text("x"), true) + answer(text("x"), false) + answer(text(""), true), "*x");
  EXPECT_EQ(answer(text("the token is x"), false), "*");
  EXPECT_EQ(answer(true, true).size(), 1U);
  EXPECT_EQ(answer(Answer{true, ""}, true), "||||true||||");
  EXPECT_EQ(answer(Answer{true, "why"}, true), "*");
  EXPECT_EQ(answer(std::int64_t{7}, true), "*");
}

}  // namespace
