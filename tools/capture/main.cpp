// vorn-capture: runs a program and records what crosses the library in it.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/StandardFiles.h>
#include <vorn_testing/Text.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "Program.h"
#include "Settings.h"

namespace {

using namespace vorn_capture;

constexpr int kNothingDone = 2;

constexpr char kHelp[] =
    R"(Runs a program and records every call that crosses libVornDALImpl.so in it, in a file that vorn-speaker reads.
Usage: vorn-capture -o FILE [OPTION]... PROGRAM [ARGUMENT]...

  -o, --output FILE   where to; an earlier recording is replaced, any other file is not
  --keep SIZE         keep at most so much, the newest: 500K, 64M, 2G
  --toggle SIGNAL     stop and go on at this signal, such as USR2
  --paused            begin without recording
  --audio FILE        keep the sound too, as a WAV file; without it, one line a second tells of it
  --ring SIZE         what a thread may be ahead of the file, 256K
  --library FILE      the libVornDALImpl.so that the program loads later by itself
  -h, --help          print this
  --version           print the version

Without vorn-capture: LD_PRELOAD=libvorn-capture.so VORN_CAPTURE=FILE PROGRAM; the man page names the other variables.
Exit status: the program's; 2 when it was not started.
)";

struct Options {
  std::string output, audio, library, toggle, keep, ring;
  std::string shown;  ///< "--help" or what else is printed instead.
  bool paused = false;
  std::vector<std::string> program;
};

/// The value of an option, when it is one that may be.
template <class Read>
std::string fit(Read read, const std::string& option, const std::string& value, const char* expected) {
  if (!read(value)) throw Unfit(option + " " + value + expected);
  return value;
}

std::string absolute(const std::string& path) {
  char folder[PATH_MAX];
  return path[0] == '/' || !getcwd(folder, sizeof folder) ? path : std::string(folder) + "/" + path;
}

/// One name for every way to a file.
std::filesystem::path nameOf(const std::string& path) {
  std::error_code none;
  const std::filesystem::path name = std::filesystem::weakly_canonical(absolute(path), none);
  return none ? std::filesystem::path(absolute(path)) : name;
}

Options optionsOf(int count, char** arguments) {
  Options options;
  int i = 1;
  for (; i < count && arguments[i][0] == '-'; ++i) {
    const std::string argument = arguments[i], option = argument.substr(0, argument.find('='));
    const auto value = [&]() -> std::string {
      std::string given;
      if (option.size() < argument.size())
        given = argument.substr(option.size() + 1);
      else if (i + 1 < count)
        given = arguments[++i];
      if (given.empty()) throw Unfit(option + ": expected a value after it");
      return given;
    };
    if (argument == "--") {
      ++i;
      break;
    } else if (option == "-o" || option == "--output") {
      if (!options.output.empty()) throw Unfit(option + ": is given twice; name one file");
      options.output = value();
    } else if (option == "--keep") {
      options.keep = fit(sizeOf, option, value(), kSizeExpected);
    } else if (option == "--ring") {
      options.ring = fit(sizeOf, option, value(), kSizeExpected);
    } else if (option == "--toggle") {
      options.toggle = fit(signalOf, option, value(), kSignalExpected);
    } else if (option == "--audio") {
      options.audio = value();
    } else if (option == "--library") {
      options.library = value();
    } else if (argument == "--paused") {
      options.paused = true;
    } else if (argument == "-h" || argument == "--help" || argument == "--version") {
      options.shown = argument;
      return options;
    } else {
      throw Unfit(argument + ": is not known" +
                  vorn_testing::didYouMean(option, {"--output", "--keep", "--ring", "--toggle", "--audio",
                                                    "--library", "--paused"}) +
                  " (vorn-capture --help names the options)");
    }
  }
  for (; i < count; ++i) options.program.emplace_back(arguments[i]);
  if (options.output.empty()) throw Unfit("where to? Name a file with -o");
  if (options.program.empty()) throw Unfit("what to run? Name a program after the options");
  if (!options.audio.empty() && nameOf(options.audio) == nameOf(options.output))
    throw Unfit(options.audio + ": give the sound a file of its own");
  return options;
}

/// What the preloaded library would refuse later, when nobody looks.
void refuseToOverwrite(const std::string& path, bool recordings) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    if (errno != ENOENT) throw Unfit(path + ": " + std::strerror(errno));
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    if (access(folder.c_str(), W_OK | X_OK) != 0) throw Unfit(folder + ": " + std::strerror(errno));
    return;
  }
  if (!recordings) throw Unfit(path + ": is there already; choose another name");
  if (S_ISREG(status.st_mode) && (status.st_nlink != 1 || status.st_uid != geteuid()))
    throw Unfit(path + ": is no plain file of yours; choose another name");
  char first[28] = {};
  const int file = S_ISREG(status.st_mode) ? open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC) : -1;
  const ssize_t size = file < 0 ? -1 : read(file, first, sizeof first - 1);
  if (file >= 0) close(file);
  if (size != 0 && std::strcmp(first, R"({"recording":"vorn-speaker")") != 0)
    throw Unfit(path + ": is there already and is no recording; choose another name");
}

/// The libraries are where they are installed, or beside this program in a build folder.
std::string preloaded(StringAbi abi) {
  const std::string name = abi == StringAbi::kOld ? "libvorn-capture-old.so" : "libvorn-capture.so";
  char self[PATH_MAX];
  const ssize_t size = readlink("/proc/self/exe", self, sizeof self);
  const std::string path(self, size > 0 ? static_cast<std::size_t>(size) : 0);
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  for (const std::string& file : {folder + name, folder + VORN_CAPTURE_WAY + "/" + name}) {
    if (access(file.c_str(), R_OK) == 0) return file;
  }
  throw Unfit(name + ": is not beside " + path + " nor in " + folder + VORN_CAPTURE_WAY +
              "; install the tools again");
}

void set(const char* name, const std::string& value) {
  if (value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1))
    throw Unfit(std::string(name) + ": " + std::strerror(errno));
}

void complain(const std::string& text) {
  std::cerr << "vorn-capture: " << vorn_testing::harmless(text) << '\n';
}

void start(Options options) {
  const std::string output = absolute(options.output);
  refuseToOverwrite(output, true);
  if (!options.audio.empty()) refuseToOverwrite(absolute(options.audio), false);
  const Program program = lookAt(options.program[0], options.library);
  for (const std::string& remark : program.remarks) complain(remark);

  const std::string library = preloaded(program.abi);
  if (library.find_first_of(": ") != std::string::npos)
    throw Unfit(library + ": the system cannot preload a file with a blank or colon in its name");
  const char* const others = std::getenv("LD_PRELOAD");
  set("LD_PRELOAD", others && *others ? std::string(others) + ":" + library : library);
  set("VORN_CAPTURE", output);
  set("VORN_CAPTURE_AUDIO", options.audio.empty() ? "" : absolute(options.audio));
  set("VORN_CAPTURE_KEEP", options.keep);
  set("VORN_CAPTURE_RING", options.ring);
  set("VORN_CAPTURE_TOGGLE", options.toggle);
  set("VORN_CAPTURE_PAUSED", options.paused ? "1" : "");
  set("VORN_CAPTURE_RUN", std::to_string(getpid()) + "." +
                              std::to_string(std::chrono::system_clock::now().time_since_epoch().count()));
  std::vector<char*> arguments;
  for (std::string& argument : options.program) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  execv(program.path.c_str(), arguments.data());
  throw Unfit(program.path + ": " + std::strerror(errno));
}

}  // namespace

int main(int count, char** arguments) {
  try {
    const Options options = optionsOf(count, arguments);
    if (!options.shown.empty()) {
      std::cout << (options.shown == "--version" ? "vorn-capture " VORN_VERSION "\n" : kHelp);
      return vorn_testing::standardOutputArrived("vorn-capture") ? 0 : 1;
    }
    start(options);
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return kNothingDone;
}
