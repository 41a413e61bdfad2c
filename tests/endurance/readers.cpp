#include "readers.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include <vorn_testing/Text.h>
#include <vorn_testing/TraceLine.h>

#include "Program.h"
#include "device/parts/DeviceFile.h"
#include "device/sound/Sound.h"
#include "language/Console.h"
#include "language/Operations.h"
#include "log/Records.h"
#include "log/Report.h"
#include "recordings/Export.h"
#include "recordings/Recording.h"
#include "recordings/Report.h"
#include "run/Replay.h"
#include "speaker/script.h"
#include "text/Lines.h"

namespace {

using namespace vorn_speaker;

[[noreturn]] void broken(const std::string& promise) {
  std::fprintf(stderr, "fuzz: %s\n", promise.c_str());
  std::abort();
}

void mustBeHarmless(const std::string& shown) {
  if (vorn_testing::harmless(shown) != shown) broken("control characters would reach a terminal");
}

void mustName(const std::string& place, const std::string& message) {
  if (message.find(place) == std::string::npos) broken("a refusal without its place: " + message);
  mustBeHarmless(message);
}

/// The text as a file, while it is read.
class File {
 public:
  explicit File(const std::string& text) : path("/tmp/fuzz" + std::to_string(getpid())) {
    std::ofstream(path, std::ios::binary) << text;
  }
  ~File() { unlink(path.c_str()); }

  const std::string path;
};

/// What is said on the standard streams meanwhile.
class Said {
 public:
  Said() : m_out(std::cout.rdbuf(m_said.rdbuf())), m_err(std::cerr.rdbuf(m_said.rdbuf())) {}
  ~Said() {
    std::cout.rdbuf(m_out);
    std::cerr.rdbuf(m_err);
  }

  std::string text() const { return m_said.str(); }

 private:
  std::ostringstream m_said;
  std::streambuf* const m_out;
  std::streambuf* const m_err;
};

void scenario(const std::string& text) {
  try {
    vorn_speaker::readScenario("fuzz", text);
  } catch (const BadScenario& error) {
    if (std::string(error.what()).compare(0, 5, "fuzz:") != 0) broken("a refusal without its place");
    mustBeHarmless(error.what());
  }
}

void device(const std::string& text) {
  const File file(text);
  try {
    const DeviceFile device = DeviceFile::read(file.path);
    if (device.volume < 0 || device.volume > 100) broken("a volume outside its range");
  } catch (const std::runtime_error& error) {
    mustName(file.path, error.what());
  }
}

void sound(const std::string& bytes) {
  try {
    const Sound sound = Sound::fromBytes("fuzz", bytes);
    if (sound.channels < 1 || sound.channels > 2 || sound.rate <= 0) broken("a sound of an impossible form");
    if (sound.samples.size() < 100000 && sound.rate <= 192000) sound.mono(16000);
  } catch (const std::runtime_error& error) {
    mustBeHarmless(error.what());
  }
}

void recording(const std::string& text) {
  const File file(text);
  try {
    Recorded recorded = Recording::read(file.path);
    recorded.mask();
    std::ostringstream report;
    vorn_speaker::report(recorded, report);
    mustBeHarmless(report.str());
    for (const ExportFormat& format : exportFormats()) {
      std::ostringstream made;
      format.write(recorded, made);
    }
  } catch (const std::runtime_error& error) {
    mustName(file.path, error.what());
  }
}

void trace(const std::string& text) {
  for (const bool all : {false, true}) {
    vorn_log::Options options;
    options.explain = options.all = all;
    std::ostringstream printed;
    vorn_log::Report report(options, printed);
    vorn_log::Records records([&](const vorn_log::Records::Record& record) { return report.take(record); });
    // In two parts, as a file that grows is read.
    records.add(text.data(), text.size() / 2);
    records.add(text.data() + text.size() / 2, text.size() - text.size() / 2);
    records.finish();
    report.finish();
    mustBeHarmless(printed.str());
  }
  std::istringstream stream(text);
  for (const std::string& record : vorn_testing::traceRecords(stream)) {
    const std::string masked = vorn_testing::TraceLine::masked(record);
    if (vorn_testing::TraceLine::masked(masked) != masked)
      broken("a masked line that is masked again changes");
  }
}

/// The words of a command line, one a line. Only read: --list comes first, so that nothing is done.
void options(const std::string& text) {
  std::vector<std::string> words = {"vorn-speaker", "--list"};
  for (const std::string& word : lines(text)) words.push_back(word.substr(0, word.find('\0')));
  if (text.find("list") != std::string::npos) return;  // It would take the other back.
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(&word[0]);
  arguments.push_back(nullptr);
  const Said said;
  const int status = vorn_speaker::program(static_cast<int>(words.size()), arguments.data());
  if (status != 0 && status != 2) broken("a command line ends with " + std::to_string(status));
  if (said.text().empty()) broken("a command line without an answer");
  mustBeHarmless(said.text());
}

/// What is typed at the console, played by nobody.
void statement(const std::string& text) {
  completions(text.substr(0, text.find_first_of("\r\n")));
  for (const std::string& line : lines(text)) {
    try {
      const auto words = split(line);
      if (!words.empty() && words[0].text == "save") return;  // It would write.
      if (readStatement(line) && maskedStatement(maskedStatement(line)) != maskedStatement(line))
        broken("a masked statement that is masked again changes");
    } catch (const Unreadable& error) {
      if (error.column < 1 || error.column > line.size() + 1) broken("a column outside its line");
    }
  }
  Script script;
  const Said said;
  std::istringstream typed(text);
  Console(script, "", false).run(false, typed);
  mustBeHarmless(said.text());
}

}  // namespace

const std::vector<Reader>& readers() {
  static const std::vector<Reader> all = {
      {"scenario", scenario, "/simulator/scenarios", ".scenario", 400},
      {"device", device, "/simulator/data", ".toml", 3000},
      {"sound", sound, "/simulator/data", ".wav", 1000},
      {"recording", recording, "", "", 1000},
      {"trace", trace, "", "", 1000},
      {"options", options, "", "", 200},
      {"statement", statement, "/simulator/scenarios", ".scenario", 200},
  };
  return all;
}
