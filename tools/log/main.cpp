// vorn-log: reads the library's trace, also while it grows.

#include <signal.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include <vorn_testing/StandardFiles.h>
#include <vorn_testing/Text.h>

#include "Records.h"
#include "Report.h"
#include "TraceFile.h"

namespace {

using namespace vorn_log;

constexpr int kDone = 0;
constexpr int kOutputLost = 1;
constexpr int kNothingDone = 2;

volatile sig_atomic_t g_signal = 0;

/// From now on Ctrl-C, a hang-up and a request to end leave time to print what is known; a second one ends at once.
void endGently() {
  struct sigaction action {};
  action.sa_handler = [](int signal) { g_signal = signal; };
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    sigaction(signal, &action, &before);
    if (before.sa_handler == SIG_IGN) sigaction(signal, &before, nullptr);  // as nohup wants it
  }
}

/// After what is on its way to standard output, which std::cerr flushes.
void say(const std::string& text) { std::cerr << "vorn-log: " << vorn_testing::harmless(text) << '\n'; }

int read(const Options& options) {
  Report report(options, std::cout);
  Records records([&](const Records::Record& record) { return report.take(record); });
  TraceFile file(options.file, options.follow, say);
  endGently();
  std::string bytes;
  bool more = true;
  try {
    while (more && g_signal == 0 && std::cout) {
      switch (file.read(bytes)) {
        case TraceFile::Event::kBytes:
          more = records.add(bytes.data(), bytes.size());
          break;
        case TraceFile::Event::kEndForNow:
          more = records.flush();
          std::cout.flush();
          break;
        case TraceFile::Event::kEnd:
          more = records.finish() && options.follow;
          break;
      }
    }
  } catch (const std::exception& error) {
    report.finish();
    throw;
  }
  if (more) records.finish();
  report.finish();
  // Following ends in no other way.
  if (g_signal == 0 || options.follow) return kDone;
  say("interrupted; the rest of " + options.file + " was not read");
  return 128 + g_signal;
}

/// Nothing names no file, and is part of every line.
std::string refuseEmpty(const std::string& text) {
  return text.empty() ? "expected a text that is not empty" : "";
}

/// "; did you mean --follow?" of an option that is not known, or nothing.
std::string meant(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  for (const std::string& word : app.remaining(true)) {
    const std::string hint = vorn_testing::didYouMean(word.substr(0, word.find('=')), names);
    if (word.compare(0, 2, "--") == 0 && !hint.empty()) return hint;
  }
  return "";
}

}  // namespace

int main(int argc, char** argv) {
  vorn_testing::prepareStandardFiles();
  Options options;
  std::string colour = "auto";
  CLI::App app{"Reads the trace of libVornDALImpl.so: groups, filters, explains. Tokens are masked."};
  app.name("vorn-log");
  app.set_version_flag("--version", VORN_LOG_VERSION);
  app.footer(
      "Exit status: 0 the trace was read, or followed until told to end; 1 the output could not be written;\n"
      "2 nothing was read.");
  app.add_option("FILE", options.file, "The trace file")->capture_default_str()->check(refuseEmpty);
  app.add_option("-a,--adapter", options.adapters,
                 "Only lines of this class, \"?\" for lines of others; may be given several times")
      ->allow_extra_args(false)
      ->check([](const std::string& name) {
        const auto& known = adapters();
        if (std::find(known.begin(), known.end(), name) != known.end()) return std::string();
        return name + " is no adapter" + didYouMeanAdapter(name);
      });
  app.add_option("-g,--grep", options.text, "Only lines that contain this text")->check(refuseEmpty);
  app.add_option("-u,--until", options.until, "Stop after a line that contains this text")
      ->check(refuseEmpty);
  app.add_flag("-f,--follow", options.follow,
               "Go on reading while the file grows, is replaced or cut; wait for one that is not there");
  app.add_flag("-c,--count", options.count, "Count lines by class and operation instead of printing them");
  app.add_flag("-e,--explain", options.explain, "Say in words what each line means");
  app.add_flag("--all", options.all, "Print every line, also runs of lines that differ in numbers only");
  app.add_flag("--secrets", options.secrets, "Do not mask tokens");
  app.add_option("--color", colour, "Colours: auto for terminals only, unless NO_COLOR is set; always; never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  int status = kDone;
  try {
    app.parse(argc, argv);
    options.colour = vorn_testing::standardOutputIsColoured(colour);
    status = read(options);
  } catch (const CLI::Success& asked) {
    app.exit(asked);
  } catch (const CLI::ExtrasError&) {
    // What is caught names them from the last to the first.
    say(CLI::ExtrasError(app.remaining_for_passthrough()).what() + meant(app));
    std::cerr << "Run with --help for more information.\n";
    status = kNothingDone;
  } catch (const CLI::ParseError& error) {
    say(error.what());
    std::cerr << "Run with --help for more information.\n";
    status = kNothingDone;
  } catch (const std::exception& error) {
    say(error.what());
    status = kNothingDone;
  }
  return vorn_testing::standardOutputArrived("vorn-log") || status != kDone ? status : kOutputLost;
}
