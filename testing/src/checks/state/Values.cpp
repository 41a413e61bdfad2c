#include "Values.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <sstream>
#include <system_error>
#include <vector>

#include "../Checks.h"

namespace vorn_testing::checks {

namespace {

/// Something that a host can be asked for and told.
struct Value {
  std::string setter;
  std::function<std::optional<std::string>(Host&)> get;
  std::function<void(Host&, const std::string&)> set;
};

/// The volume before the mute: some devices are unmuted when it changes.
std::vector<Value> values(const HostDemands& demands) {
  std::vector<Value> all{{"onSetVolume", [](Host& host) { return std::to_string(host.getVolume()); },
                          [](Host& host, const std::string& value) { host.onSetVolume(std::stoi(value)); }},
                         {"onMute", [](Host& host) { return host.getMuteStatus() ? "on" : "off"; },
                          [](Host& host, const std::string& value) { host.onMute(value == "on"); }},
                         {"changeAlexaLocale", [](Host& host) { return host.getDeviceLocale(); },
                          [](Host& host, const std::string& value) { host.changeAlexaLocale(value); }}};
  for (const auto& setting : demands.settings) {
    const std::string& name = setting.first;
    all.push_back({"setSystemSetting",
                   [name](Host& host) {
                     std::string value;
                     return host.getSystemSetting(name, value) ? std::make_optional(value) : std::nullopt;
                   },
                   [name](Host& host, const std::string& value) { host.setSystemSetting(name, value); }});
  }
  return all;
}

std::optional<std::string> ask(Trial& trial, const Value& value) {
  std::optional<std::string> answer;
  try {
    Host& host = trial.host();
    trial.ask(value.setter + "()", [&] { answer = value.get(host); });
  } catch (const Outcome&) {  // it has checks of its own
  }
  return answer;
}

void runApart(const std::function<void(Trial&)>& act, const HostMaker& maker, HostDemands demands,
              const Known& known) {
  demands.bound = std::min<std::chrono::milliseconds>(demands.bound, std::chrono::seconds(5));
  runWatched(checkOfHost("values", "", "", act), maker, demands, known);
}

}  // namespace

Values::Values() : m_file(memfd_create("values", MFD_CLOEXEC)) {
  if (m_file < 0) throw std::system_error(errno, std::generic_category(), "no memory for the host's values");
}

Values::~Values() { close(m_file); }

void Values::note(const HostMaker& maker, const HostDemands& demands, const Known& known) const {
  const auto writeAll = [file = m_file](Trial& trial) {
    for (const Value& value : values(trial.demands)) {
      const auto answer = ask(trial, value);
      const std::string line = answer ? std::to_string(answer->size()) + ":" + *answer : "-1:";
      if (write(file, line.data(), line.size()) < 0) return;
    }
  };
  runApart(writeAll, maker, demands, known);
}

void Values::putBack(const HostMaker& maker, const HostDemands& demands, const Known& known) const {
  std::string noted(static_cast<std::size_t>(lseek(m_file, 0, SEEK_END)), '\0');
  noted.resize(static_cast<std::size_t>(std::max<ssize_t>(pread(m_file, &noted[0], noted.size(), 0), 0)));
  const auto setAll = [noted](Trial& trial) {
    std::istringstream in(noted);
    in.imbue(std::locale::classic());
    bool changed = false;
    for (const Value& value : values(trial.demands)) {
      std::ptrdiff_t size = -1;
      if (!(in >> size) || in.get() != ':') break;
      if (size < 0) continue;
      std::string before(static_cast<std::size_t>(size), '\0');
      in.read(&before[0], size);
      if (ask(trial, value) == before) continue;
      changed = true;
      Host& host = trial.host();
      try {
        trial.ask(value.setter + "()", [&] { value.set(host, before); });
      } catch (const Outcome&) {  // it has checks of its own
      }
    }
    if (changed) trial.destroy();  // some keep their values at their end
  };
  runApart(setAll, maker, demands, known);
}

}  // namespace vorn_testing::checks
