// What vorn-capture does not do, and what it says then.

#include <elf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>

#include "capture/capture_program.h"

namespace {

class Refused : public CaptureProgram {
 protected:
  std::string arguments(const std::string& words) { return run(VORN_CAPTURE_PROGRAM " " + words); }
};

/// What vorn-capture says of a program into whose file it looks.
class WithAProgramInSight : public Refused {
 protected:
  void SetUp() override {
    if (kEmulated) GTEST_SKIP() << "the programs of the emulator's processor are started by a script here";
    Refused::SetUp();
  }
};

TEST_F(Refused, OptionsSayWhatIsExpected) {
  const std::pair<const char*, const char*> wrong[] = {
      {"true", "Name a file with -o"},
      {"-o", "-o: expected a value"},
      {"-o r", "Name a program"},
      {"-o r --kep 5 true", "--kep: is not known; did you mean --keep?"},
      {"--outptu=r true", "--outptu=r: is not known; did you mean --output?"},
      {"-o r --anything true", "--anything: is not known (vorn-capture --help names the options)"},
      {"-o r --audio r true", "r: give the sound a file of its own"},
      {"-o /tmp/capture/r --audio /tmp/./capture/r true",
       "/tmp/./capture/r: give the sound a file of its own"},
      {"-o r --audio ./r true", "./r: give the sound a file of its own"},
      {"-o r --audio= true", "--audio: expected a value"},
      {"-o r --library '' true", "--library: expected a value"},
      {"-o '' true", "-o: expected a value"},
      {"-o r -o other true", "-o: is given twice; name one file"},
      {"-o r --library /dev/zero true", "/dev/zero: is no file"},
      {"-o r --library /tmp true", "/tmp: is no file"},
      {"--output=r --keep=3 true", "--keep 3: expected a size from 64K"},
      {"-o r --keep 5X true", "--keep 5X: expected a size"},
      {"-o r --keep 3 true", "--keep 3: expected a size from 64K"},
      {"-o r --toggle KILL true", "--toggle KILL: expected a signal"},
      {"-o r no-such-program", "no-such-program: no such program in PATH"},
      {"-o r /etc/passwd", "/etc/passwd: Permission denied"},
      {"-o /no/folder/r true", "/no/folder/: No such file or directory"}};
  for (const auto& [words, said] : wrong) {
    EXPECT_TRUE(has(arguments(words), said)) << words;
    EXPECT_EQ(m_status, 2) << words;
  }
}

TEST_F(Refused, LibrariesThatTellOfMoreThanTheyHold) {
  std::string library = content(VORN_LIBRARY);
  const auto put = [&](std::size_t at, auto value) { std::memcpy(&library.at(at), &value, sizeof value); };
  Elf64_Ehdr header;
  std::memcpy(&header, library.data(), sizeof header);
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    const std::size_t at = header.e_shoff + i * sizeof(Elf64_Shdr);
    Elf64_Shdr section;
    std::memcpy(&section, &library.at(at), sizeof section);
    if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_SYMTAB) continue;
    put(at + offsetof(Elf64_Shdr, sh_size), Elf64_Xword{1} << 62);
    put(at + offsetof(Elf64_Shdr, sh_link), Elf64_Word{0});
  }
  EXPECT_TRUE(has(arguments("-o " + m_path + " --library " + file("libVornDALImpl.so", library) + " true"),
                  "is no libVornDALImpl.so"));
  EXPECT_EQ(m_status, 2);
  const std::string pipe = std::string(kFolder) + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_TRUE(has(arguments("-o " + m_path + " --library " + pipe + " true"), "pipe: is no file"));
}

TEST_F(Refused, HelpAndVersionArePrinted) {
  EXPECT_TRUE(has(arguments("--keep 64K --help"), "Usage: vorn-capture -o FILE"));
  EXPECT_EQ(arguments("--version"), "vorn-capture " VORN_VERSION "\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Refused, FilesThatAreNoRecordingsStay) {
  file("recording", "precious\n");
  EXPECT_TRUE(has(capture("plain"), "is there already and is no recording"));
  EXPECT_EQ(m_status, 2);
  EXPECT_EQ(content(m_path), "precious\n");
}

TEST_F(Refused, LinksAreNotFollowed) {
  const std::string target = file("target", "");
  std::filesystem::create_symlink(target, m_path);
  EXPECT_TRUE(has(capture("plain"), "is no recording"));
  std::filesystem::create_hard_link(target, m_path + ".hard");
  EXPECT_TRUE(has(arguments("-o " + m_path + ".hard true"), "is no plain file of yours"));
  EXPECT_EQ(m_status, 2);
  // Nor by the preloaded library, when the link comes later.
  EXPECT_TRUE(
      has(run("LD_PRELOAD=" VORN_CAPTURE_LIBRARY " VORN_CAPTURE=" + m_path + " " VORN_CALLER " plain 3"),
          "nothing is recorded"));
  EXPECT_EQ(m_status, 3);
  EXPECT_EQ(content(target), "");
}

TEST_F(Refused, RecordingsAreReadableForTheirOwnerAlone) {
  umask(0);
  file("recording", "{\"recording\":\"vorn-speaker\",\"version\":1}\n");
  chmod(m_path.c_str(), 0666);
  capture("plain");
  struct stat status {};
  ASSERT_EQ(stat(m_path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(Refused, ProgramsIntoWhichNothingIsPreloaded) {
  EXPECT_TRUE(has(arguments("-o " + m_path + " " VORN_STATIC), "is linked statically"));
  EXPECT_EQ(m_status, 2);
  const std::string other = std::string(kFolder) + "/other";
  std::filesystem::copy_file(VORN_CALLER_FILE, other);
  // A user of another number, where that is allowed.
  if (chown(other.c_str(), 12345, 12345) != 0 || chmod(other.c_str(), 06755) != 0)
    GTEST_SKIP() << "no file may be given away here";
  EXPECT_TRUE(has(arguments("-o " + m_path + " " + other), "set-user-id"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Refused, SoundIsWrittenOverNothing) {
  const std::string wave = file("sound.wav", "song");
  EXPECT_TRUE(has(capture("audio", "--audio " + wave), "is there already"));
  EXPECT_EQ(content(wave), "song");
}

TEST_F(WithAProgramInSight, AProgramThatLacksALibraryIsLeftToTheLoader) {
  const std::string other = std::string(kFolder) + "/other";
  run("sed 's/libDALIMPL[.]so/libDALIMPX.so/g' " VORN_CALLER " >" + other + " && chmod +x " + other);
  const std::string said = arguments("-o " + m_path + " " + other + " plain");
  EXPECT_TRUE(has(said, "libDALIMPX.so: cannot open shared object file"));
  EXPECT_EQ(said.find("does not load"), std::string::npos) << said;
  EXPECT_EQ(m_status, 127);
}

TEST_F(WithAProgramInSight, LibrariesAreFoundInAFolderWithABlank) {
  const std::string folder = std::string(kFolder) + "/of the product";
  std::filesystem::create_directory(folder);
  std::filesystem::create_symlink(VORN_LIBRARY, folder + "/libVornDALImpl.so");
  EXPECT_EQ(run("LD_LIBRARY_PATH='" + folder + "' " VORN_CAPTURE_PROGRAM " -o " + m_path +
                " " VORN_CALLER " plain"),
            "");
}

TEST_F(WithAProgramInSight, OtherProgramsRunAllTheSame) {
  EXPECT_TRUE(has(arguments("-o " + m_path + " echo it runs"), "it runs"));
  EXPECT_EQ(m_status, 0);
}

}  // namespace
