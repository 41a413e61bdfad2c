#include "Program.h"

#include <elf.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace vorn_capture {

namespace {

constexpr char kLibrary[] = "libVornDALImpl.so";
/// An exported function that every build has, whatever its strings are.
constexpr char kAnyFunction[] = "_ZN26VornDeviceAbstractionLayer14VornDeviceInfo9getVolumeEv";
constexpr char kNewStrings[] = "_ZN26VornDeviceAbstractionLayer14VornDeviceInfo11getTimezoneB5cxx11Ev";
constexpr char kDeviceFolders[] = "/opt/Vorn/lib64:/opt/Vorn/lib";

bool isFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// As execvp() finds it.
std::string found(const std::string& name) {
  if (name.find('/') != std::string::npos) return name;
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path ? path : "/usr/local/bin:/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string file = (folder.empty() ? "." : folder) + "/" + name;
    if (isFile(file) && access(file.c_str(), X_OK) == 0) return file;
  }
  throw Unfit(name + ": no such program in PATH");
}

/// A file of machine code, as far as it must be understood here. Nothing in it is believed.
class Object {
 public:
  explicit Object(const std::string& path) {
    // A pipe or a device would be read without an end.
    if (!isFile(path) && access(path.c_str(), F_OK) == 0) throw Unfit(path + ": is no file");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Unfit(path + ": " + std::strerror(errno));
    std::ostringstream bytes;
    bytes << in.rdbuf();  // block by block
    m_bytes = bytes.str();
  }

  bool isScript() const { return m_bytes.compare(0, 2, "#!") == 0; }

  bool isCode() const {
    return m_bytes.size() > sizeof(Elf64_Ehdr) && std::memcmp(m_bytes.data(), ELFMAG, SELFMAG) == 0;
  }

  /// Whether it is for the processor that this program is for.
  bool isOfThisProcessor() const {
    Elf64_Ehdr own;
    std::ifstream("/proc/self/exe", std::ios::binary).read(reinterpret_cast<char*>(&own), sizeof own);
    const auto header = at<Elf64_Ehdr>(0);
    return header.e_ident[EI_CLASS] == own.e_ident[EI_CLASS] && header.e_machine == own.e_machine;
  }

  /// The loader that it names; empty when it is linked statically.
  std::string loader() const {
    for (const auto& segment : segments()) {
      if (segment.p_type != PT_INTERP || segment.p_offset >= m_bytes.size()) continue;
      return m_bytes.c_str() + segment.p_offset;
    }
    return "";
  }

  /// Whether calls inside it go to its own functions, whatever stands before them.
  bool isSymbolic() const {
    for (const auto& segment : segments()) {
      if (segment.p_type != PT_DYNAMIC) continue;
      for (std::uint64_t offset = segment.p_offset; offset + sizeof(Elf64_Dyn) <= m_bytes.size();
           offset += sizeof(Elf64_Dyn)) {
        const auto entry = at<Elf64_Dyn>(offset);
        if (entry.d_tag == DT_NULL) break;
        if (entry.d_tag == DT_SYMBOLIC || (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_SYMBOLIC)))
          return true;
      }
    }
    return false;
  }

  /// Whether it has the function, for itself or for others.
  bool defines(const char* name) const {
    const auto header = at<Elf64_Ehdr>(0);
    std::uint64_t left = m_bytes.size();  // All symbols together are no more.
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
      const auto section = at<Elf64_Shdr>(header.e_shoff + i * sizeof(Elf64_Shdr));
      if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_SYMTAB) continue;
      const auto texts = at<Elf64_Shdr>(header.e_shoff + section.sh_link * sizeof(Elf64_Shdr));
      const std::uint64_t size = std::min<std::uint64_t>(section.sh_size, left);
      left -= size;
      for (std::uint64_t offset = 0; offset + sizeof(Elf64_Sym) <= size; offset += sizeof(Elf64_Sym)) {
        const auto symbol = at<Elf64_Sym>(section.sh_offset + offset);
        const std::uint64_t place = texts.sh_offset + symbol.st_name;
        if (symbol.st_shndx != SHN_UNDEF && place < m_bytes.size() &&
            std::strcmp(m_bytes.c_str() + place, name) == 0)
          return true;
      }
    }
    return false;
  }

 private:
  template <class Value>
  Value at(std::uint64_t offset) const {
    Value value{};
    if (offset <= m_bytes.size() && m_bytes.size() - offset >= sizeof value)
      std::memcpy(&value, m_bytes.data() + offset, sizeof value);
    return value;
  }

  std::vector<Elf64_Phdr> segments() const {
    const auto header = at<Elf64_Ehdr>(0);
    std::vector<Elf64_Phdr> all;
    for (std::size_t i = 0; i < header.e_phnum; ++i)
      all.push_back(at<Elf64_Phdr>(header.e_phoff + i * sizeof(Elf64_Phdr)));
    return all;
  }

  std::string m_bytes;
};

/// What the program's loader says that it would load: name and path. The program itself does not run. `starts`: whether it
/// could; the loader tells what is missing when it is started in earnest.
std::vector<std::pair<std::string, std::string>> loaded(const std::string& loader, const std::string& program,
                                                        bool& starts) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Unfit(std::string("no pipe can be made: ") + std::strerror(errno));
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  std::string texts[] = {loader, "--list", program};
  char* const arguments[] = {texts[0].data(), texts[1].data(), texts[2].data(), nullptr};
  pid_t process = 0;
  const int wrong = posix_spawn(&process, loader.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string output;
  char part[4096];
  for (ssize_t size; wrong == 0 && (size = read(ends[0], part, sizeof part)) != 0;) {
    if (size > 0) output.append(part, static_cast<std::size_t>(size));
    if (size < 0 && errno != EINTR) break;
  }
  close(ends[0]);
  int status = 0;
  if (wrong == 0) waitpid(process, &status, 0);
  starts = status == 0;

  std::vector<std::pair<std::string, std::string>> all;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t name = line.find_first_not_of('\t'), arrow = line.find(" => "), end = line.rfind(" (");
    if (arrow == std::string::npos || end == std::string::npos || end < arrow + 4) continue;
    const std::string path = line.substr(arrow + 4, end - arrow - 4);
    if (isFile(path)) all.emplace_back(line.substr(name, arrow - name), path);
  }
  return all;
}

StringAbi abiOf(const std::string& library) {
  const Object object(library);
  if (!object.isCode() || !object.defines(kAnyFunction)) throw Unfit(library + ": is no libVornDALImpl.so");
  return object.defines(kNewStrings) ? StringAbi::kNew : StringAbi::kOld;
}

/// Where a program that loads it later would find it.
std::string guessed() {
  const char* const path = std::getenv("LD_LIBRARY_PATH");
  std::istringstream folders((path ? std::string(path) + ":" : "") + kDeviceFolders);
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string file = (folder.empty() ? "." : folder) + "/" + kLibrary;
    if (isFile(file)) return file;
  }
  return "";
}

void refuseOtherRights(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) throw Unfit(path + ": " + std::strerror(errno));
  const bool otherUser = (status.st_mode & S_ISUID) && status.st_uid != geteuid();
  const bool otherGroup = (status.st_mode & S_ISGID) && status.st_gid != getegid();
  const bool capable = geteuid() != 0 && getxattr(path.c_str(), "security.capability", nullptr, 0) > 0;
  if (otherUser || otherGroup || capable)
    throw Unfit(
        path +
        ": runs with rights of its own (set-user-id, set-group-id or capabilities), and the system preloads nothing "
        "into such a program; run a copy without that mark, as the user whose rights it needs");
}

}  // namespace

Program lookAt(const std::string& name, const std::string& library) {
  Program program;
  program.path = found(name);
  if (access(program.path.c_str(), X_OK) != 0 || !isFile(program.path))
    throw Unfit(program.path + ": " +
                (isFile(program.path) || access(program.path.c_str(), F_OK) != 0 ? std::strerror(errno)
                                                                                 : "is no program"));
  refuseOtherRights(program.path);
  const Object object(program.path);
  bool starts = true;
  if (!library.empty()) {
    program.library = library;
    program.abi = abiOf(library);
  }
  if (object.isCode()) {
    if (!object.isOfThisProcessor())
      throw Unfit(program.path + ": is for another processor than this vorn-capture");
    const std::string loader = object.loader();
    if (loader.empty())
      throw Unfit(
          program.path +
          ": is linked statically, so that nothing can be preloaded into it; link libVornDALImpl.so as a shared library");
    const auto all = loaded(loader, program.path, starts);
    for (const auto& [needed, path] : all) {
      if (needed != kLibrary || !program.library.empty()) continue;
      program.library = path;
      program.abi = abiOf(path);
    }
    const auto remark = [&](const std::string& path, const Object& part) {
      if (part.isSymbolic() && part.defines(kAnyFunction))
        program.remarks.push_back(
            path +
            ": has adapters of its own and is bound to them (-Bsymbolic): calls inside it are not recorded");
    };
    remark(program.path, object);
    for (const auto& [needed, path] : all) {
      if (needed != kLibrary) remark(path, Object(path));
    }
  } else if (!object.isScript()) {
    throw Unfit(program.path + ": is neither a program for this processor nor a script");
  }
  if (program.abi == StringAbi::kUnknown) {
    const std::string guess = guessed();
    if (!guess.empty()) program.abi = abiOf(guess);
    if (starts)
      program.remarks.push_back(
          program.path + ": does not load " + kLibrary + " at its start; " +
          (guess.empty() ? "should it load one later whose strings are old, name that with --library"
                         : "taken as one that loads " + guess + " later"));
  }
  return program;
}

}  // namespace vorn_capture
