#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "../text/Spelling.h"

namespace vorn_testing::checks {

/// A text of so many bytes gets pages of its own from the allocator.
constexpr std::size_t kOwnPages = 300000;

/// What kind of arguments an operation is given.
enum class Given {
  kPlain,  ///< What an assistant client sends on a good day.
  kEmpty,  ///< Empty texts, lists and maps.
  kLarge,  ///< A mebibyte of text, also of what opens and is never closed, ten thousand entries, the largest numbers.
  kHostile,  ///< Bytes and numbers that nobody expects.
  kLent,  ///< Too long for a text to hold without a buffer; in an order and a case that somebody may want to change.
  kLoad,  ///< Of many lengths, so that what is shared without a guard is laid out anew.
  kWord,  ///< The words that the headers name for the operation, one in each sample; none for most.
  kNew,   ///< A text that was never given before.
  kCut    ///< Long, of characters of three bytes, each sample begun elsewhere, or of four: every cut shows.
};

/// How many samples of a kind there are.
inline int samples(Given given) {
  switch (given) {
    case Given::kHostile:
      return 14;
    case Given::kLoad:
      return 6;
    case Given::kCut:
      return 4;
    case Given::kLarge:
      return 3;
    case Given::kWord:
      return 0;
    default:
      return 2;
  }
}

/// The arguments themselves, by type; `which` counts from 0 and wraps round.
template <class Value>
struct Sample;

template <>
struct Sample<std::string> {
  static std::string make(Given given, int which) {
    static const std::string kHostile[] = {"\xff\xfe\xc0\x80",
                                           std::string("\0vorn\0conformance\0", 18),
                                           "%s%n%1000000d%n",
                                           "../vorn-conformance/../\r\n\x1b[2J",
                                           "'; DROP TABLE \"x\"; -- <![CDATA[ {\"a\":[[[[ $(false) `false`",
                                           "\xed\xa0\x80\xf4\x90\x80\x80\xe2\x82",
                                           "99999999999999999999",
                                           "-1",
                                           "   ",
                                           "1e999",
                                           "(*[{\\",
                                           "\n",
                                           std::string(300, '\x80'),   // no character begins
                                           std::string(300, '\xf0')};  // none ends
    switch (given) {
      case Given::kPlain:
        return which % 2 ? "Z\xc3\xbcrich \xe9\x9f\xb3\xe6\xa5\xbd" : "vorn-conformance";
      case Given::kEmpty:
        return "";
      case Given::kLarge:
        return std::string(1 << 20, "a0["[which % 3]);
      case Given::kHostile:
        return kHostile[which % 14];
      case Given::kLent:
        return which % 2 ? "Vorn\tConform@a/b:c;d,e=f?g&h|i%20\"j\" (k)[l]{m}#n\n  "
                         : "L" + std::string(kOwnPages, 'l');
      case Given::kLoad:
        return std::string(std::size_t{3} << (which % 6 * 2), static_cast<char>('a' + which % 26));
      case Given::kWord:
        return "";
      case Given::kNew: {
        static std::atomic<int> count{0};
        return "vorn-conformance new " + std::to_string(++count);
      }
      case Given::kCut: {
        std::string text(static_cast<std::size_t>(which % 3), 'c');
        for (int i = 0; i < 1500; ++i) text += which % 4 == 3 ? "\xf0\x9f\x8e\xb5" : "\xe9\x9f\xb3";
        return text;
      }
    }
    return "";
  }
};

template <>
struct Sample<Texts> {
  static Texts make(Given given, int which) {
    const std::string text = Sample<std::string>::make(given, which);
    if (given == Given::kEmpty && which % 2 == 0) return {};
    if (given == Given::kLarge && which % 2 == 0) return Texts(10000, "vorn-conformance");
    if (given == Given::kLent) return {text, "b", "a"};
    if (given == Given::kLoad) {  // in an order and its reverse
      Texts letters{text};
      for (char letter = 'a'; letter <= 'p'; ++letter) letters.emplace_back(1, letter);
      if (which % 2) std::reverse(letters.begin(), letters.end());
      return letters;
    }
    return given == Given::kEmpty ? Texts{text} : Texts{text, text};
  }
};

template <>
struct Sample<Entries> {
  static Entries make(Given given, int which) {
    const std::string text = Sample<std::string>::make(given, which);
    if (given == Given::kEmpty && which % 2 == 0) return {};
    if (given != Given::kLarge || which % 2) return {{text, text}};
    Entries entries;
    for (int i = 0; i < 10000; ++i) entries["vorn-conformance " + std::to_string(i)] = "large";
    return entries;
  }
};

template <>
struct Sample<CommsStateInfo> {
  static CommsStateInfo make(Given given, int which) {
    CommsStateInfo info;
    info.state = Sample<std::string>::make(given, which);
    return info;
  }
};

template <>
struct Sample<bool> {
  static bool make(Given, int which) { return which % 2 == 0; }
};

/// Whole numbers.
template <class Number>
struct Sample {
  static Number make(Given given, int which) {
    using Limits = std::numeric_limits<Number>;
    static const Number kHostile[] = {Limits::min(), -1,  0,   1,    -100,  100,   101,
                                      255,           256, 999, 4096, 32768, 65536, Limits::max()};
    switch (given) {
      case Given::kLarge:
        return which % 2 ? Limits::max() : static_cast<Number>(Limits::max() - 1);
      case Given::kHostile:
        return kHostile[which % 14];
      case Given::kEmpty:
        return 0;
      case Given::kLoad:
        return static_cast<Number>(which * 7 - 10);
      default:
        return static_cast<Number>(1 - which % 2);
    }
  }
};

template <>
struct Sample<double> {
  static double make(Given given, int which) {
    using Limits = std::numeric_limits<double>;
    static const double kHostile[] = {Limits::quiet_NaN(),
                                      -Limits::infinity(),
                                      Limits::infinity(),
                                      Limits::lowest(),
                                      Limits::max(),
                                      -0.0,
                                      Limits::denorm_min(),
                                      -1,
                                      1e10,
                                      2147483648.0,
                                      -2147483649.0,
                                      1e300,
                                      0.1,
                                      -1e-300};
    if (given == Given::kLarge) return which % 2 ? Limits::infinity() : Limits::max();
    if (given == Given::kHostile) return kHostile[which % 14];
    return 0.5 * (which % 2);
  }
};

template <>
struct Sample<std::chrono::milliseconds> {
  static std::chrono::milliseconds make(Given given, int which) {
    return std::chrono::milliseconds(Sample<std::chrono::milliseconds::rep>::make(given, which));
  }
};

}  // namespace vorn_testing::checks
