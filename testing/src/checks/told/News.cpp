#include "News.h"

#include <map>
#include <utility>

#include "../../text/Spelling.h"
#include "../load/Load.h"
#include "vorn_testing/Call.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const std::string kOfSetting = "setting ";
constexpr int kOneLocale = 34;

std::optional<News> newsOf(const Call& told) {
  static const std::map<std::string, std::string> kNumbers{{"notifyVolumeChanged", "volume"},
                                                           {"notifyMuteChanged", "mute"},
                                                           {"notifyHandsfreeStateChanged", "hands-free"}};
  const auto& with = told.arguments;
  const auto number = kNumbers.find(told.operation);
  if (number != kNumbers.end()) return News{told.signature(), number->second, with[0]};
  if (told.operation == "notifySystemSettingChanged")
    return News{told.operation + "(" + spelled(with[0]) + ", " + spelled(with[1]) + ")", kOfSetting + with[0],
                with[1]};
  if (told.operation == "notifyLocaleChange")
    return News{told.operation + "(" + spelled(with[0]) + ")", told.slot == kOneLocale ? "locale" : "locales",
                with[0]};
  if (told.operation == "notifyOOBECancelled") return News{told.signature(), "setup", ""};
  return std::nullopt;
}

std::string getter(const std::string& of) {
  if (of == "volume") return "getVolume()";
  if (of == "mute") return "getMuteStatus()";
  if (of.compare(0, kOfSetting.size(), kOfSetting) == 0)
    return "getSystemSetting(" + spelled(of.substr(kOfSetting.size())) + ")";
  return "getDeviceLocale()";
}

}  // namespace

Listener::Listener(Trial& trial) : m_trial(trial) {
  m_assistant.recorder->keepCalls(false);
  createAdapters(trial.host());
  m_assistant.recorder->onCall([this](const Call& told) {
    const auto news = newsOf(told);
    if (!news) return;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_heard.push_back(*news);
    }
    if (inside) m_kept.run([&] { inside(*news); });
  });
}

Listener::~Listener() { m_assistant.recorder->onCall(nullptr); }

void Listener::begin() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_heard.clear();
}

std::vector<News> Listener::heard() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_heard;
}

std::vector<News> Listener::heardOf(const std::string& of) const {
  std::vector<News> found;
  for (const News& news : heard()) {
    if (news.of == of) found.push_back(news);
  }
  return found;
}

std::optional<std::string> Listener::read(const std::string& of) const {
  std::optional<std::string> found;
  Host& host = m_trial.host();
  m_trial.ask(getter(of), [&] {
    if (of == "volume")
      found = text(host.getVolume());
    else if (of == "mute")
      found = text(host.getMuteStatus());
    else if (of.compare(0, kOfSetting.size(), kOfSetting) != 0)
      found = host.getDeviceLocale();
    else if (std::string value; host.getSystemSetting(of.substr(kOfSetting.size()), value))
      found = value;
  });
  return found;
}

std::string Listener::wrong(const std::vector<News>& heard) const {
  std::map<std::string, News> last;
  for (const News& news : heard) last[news.of] = news;
  for (const auto& entry : last) {
    const News& news = entry.second;
    if (news.of == "hands-free" || news.of == "setup") continue;  // no getter
    const auto found = read(news.of);
    const bool named =
        news.of == "locales" &&
        (", " + news.value.substr(1, news.value.size() - 2) + ", ").find(", " + found.value_or("") + ", ") !=
            std::string::npos;
    if (found != news.value && !named)
      return "was told last by " + news.shown + ", and " + getter(news.of) + " answers " +
             (!found                                     ? "false"
              : news.of == "volume" || news.of == "mute" ? *found
                                                         : spelled(*found));
  }
  return "";
}

std::string Listener::settle(milliseconds atLast) const {
  constexpr milliseconds kStill(30);
  constexpr int kTooOften = 20;
  std::size_t count = heard().size();
  int oftener = 0;  // the news that came when nothing was done but to ask
  for (auto start = Clock::now(), since = start;;) {
    std::this_thread::sleep_for(milliseconds(5));  // the host alone knows when it tells
    const std::vector<News> all = heard();
    const auto time = Clock::now();
    if (all.size() != count) since = time;
    count = all.size();
    if (time - since < kStill) continue;
    std::string found = wrong(all);
    if (heard().size() != count && ++oftener > kTooOften)
      return "was told again each time that it was asked, by " + heard().back().shown;
    if (heard().size() == count && (found.empty() || time - since > atLast)) return found;
  }
}

void Listener::waitForSilence() const {
  constexpr milliseconds kStill(600), kAtMost(3000), kBetween(10);
  const auto start = Clock::now();
  std::size_t count = heard().size();
  for (auto since = start, time = start; time - since < kStill && time - start < kAtMost;
       time = Clock::now()) {
    std::this_thread::sleep_for(kBetween);  // as in settle()
    const std::size_t now = heard().size();
    if (now != count) since = time;
    count = now;
  }
}

}  // namespace vorn_testing::checks
