// What vorn-capture finds: the program, the library that it will load, its own; and what it hands on to them.

#include <unistd.h>

#include <cstdlib>

#include "capture/capture_program.h"

namespace {

class Found : public CaptureProgram {
 protected:
  void SetUp() override {
    if (kEmulated) GTEST_SKIP() << "the programs of the emulator's processor are started by a script here";
    CaptureProgram::SetUp();
  }

  /// vorn-capture, with the environment before it.
  std::string arguments(const std::string& words, const std::string& environment = "") {
    return run(environment + " " VORN_CAPTURE_PROGRAM " " + words);
  }
  std::string inScript(const std::string& name, const std::string& content,
                       std::filesystem::perms rights = std::filesystem::perms::owner_all) {
    const std::string path = std::string(kFolder) + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    file(name, content);
    std::filesystem::permissions(path, rights);
    return path;
  }
};

TEST_F(Found, IsTheFirstProgramInThePathThatMayRun) {
  inScript("first/tool", "#!/bin/sh\necho first\n", std::filesystem::perms::owner_read);
  inScript("second/tool", "#!/bin/sh\necho second\n");
  const std::string path = std::string("PATH=") + kFolder + "/first:" + kFolder + "/second:/usr/bin:/bin";
  EXPECT_TRUE(has(arguments("-o " + m_path + " tool", path), "second\n"));
}

TEST_F(Found, IsAProgramOfThisFolderWhereThePathHasAnEmptyPart) {
  inScript("tool", "#!/bin/sh\necho here\n");
  EXPECT_TRUE(
      has(run(std::string("cd ") + kFolder + "; PATH=:/usr/bin:/bin " VORN_CAPTURE_PROGRAM " -o r tool"),
          "here\n"));
}

TEST_F(Found, IsNoTextAndNoProgramOfAnotherProcessor) {
  EXPECT_TRUE(has(arguments("-o " + m_path + " " + inScript("text", "words\n")),
                  "/text: is neither a program for this processor nor a script"));
  EXPECT_EQ(m_status, 2);
  const std::string other = std::string(kFolder) + "/other";
  std::filesystem::copy_file(VORN_CALLER_FILE, other);
  std::fstream(other, std::ios::in | std::ios::out | std::ios::binary).seekp(18).put('\x08');
  EXPECT_TRUE(has(arguments("-o " + m_path + " " + other),
                  "/other: is for another processor than this vorn-capture"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Found, IsNoProgramThatRunsAsAnotherGroup) {
  const std::string other = std::string(kFolder) + "/other";
  std::filesystem::copy_file(VORN_CALLER_FILE, other);
  if (chown(other.c_str(), geteuid(), 12345) != 0 || chmod(other.c_str(), 02755) != 0)
    GTEST_SKIP() << "no file may be given away here";
  EXPECT_TRUE(has(arguments("-o " + m_path + " " + other), "set-group-id"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Found, IsTheLibraryThatAProgramMayLoadLater) {
  const std::filesystem::path library = VORN_LIBRARY;
  const std::string said =
      arguments("-o " + m_path + " echo", "LD_LIBRARY_PATH=" + library.parent_path().string());
  EXPECT_TRUE(has(said, "echo: does not load libVornDALImpl.so at its start; taken as one that loads " +
                            library.string() + " later\n"));
  EXPECT_TRUE(
      has(arguments("-o " + m_path + " echo", "unset LD_LIBRARY_PATH;"),
          "echo: does not load libVornDALImpl.so at its start; should it load one later whose strings "
          "are old, name that with --library\n"));
  EXPECT_TRUE(has(arguments("--library /bin/sh -o " + m_path + " echo"), "/bin/sh: is no libVornDALImpl.so"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Found, IsALibraryInAFolderWithBrackets) {
  const std::string folder = std::string(kFolder) + "/of (the) product";
  std::filesystem::create_directory(folder);
  std::filesystem::create_symlink(VORN_LIBRARY, folder + "/libVornDALImpl.so");
  EXPECT_EQ(arguments("-o " + m_path + " " VORN_CALLER " plain", "LD_LIBRARY_PATH='" + folder + "'"), "");
}

TEST_F(Found, IsSaidOnceThatALibraryLacks) {
  const std::string other = std::string(kFolder) + "/other";
  run("sed 's/libDALIMPL[.]so/libDALIMPX.so/g' " VORN_CALLER " >" + other + " && chmod +x " + other);
  const std::string said = arguments("-o " + m_path + " " + other + " plain");
  EXPECT_EQ(said.find("cannot open shared object"), said.rfind("cannot open shared object")) << said;
}

TEST_F(Found, AreTheOptionsUpToTwoDashes) {
  EXPECT_EQ(arguments("-o " + m_path + " -- " VORN_CALLER " plain"), "");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
}

TEST_F(Found, IsAnEmptyFileForARecording) {
  file("recording", "");
  EXPECT_EQ(capture("plain"), "");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
}

TEST_F(Found, IsNothingOfAnEarlierCaptureInTheEnvironment) {
  capture("plain");
  setenv("VORN_CAPTURE_PAUSED", "1", 1);
  setenv("VORN_CAPTURE_AUDIO", (std::string(kFolder) + "/sound.wav").c_str(), 1);
  EXPECT_EQ(capture("plain"), "");
  unsetenv("VORN_CAPTURE_PAUSED");
  unsetenv("VORN_CAPTURE_AUDIO");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(std::string(kFolder) + "/sound.wav"));
}

TEST_F(Found, StaysWhatThePreloadsWereBefore) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer is preloaded before everything";
#endif
  const std::string preloads = "-o " + m_path + " sh -c 'echo preloads: $LD_PRELOAD'";
  EXPECT_TRUE(has(arguments(preloads, "LD_PRELOAD=libm.so.6"), "preloads: libm.so.6:/"));
  EXPECT_TRUE(has(arguments(preloads, "LD_PRELOAD="), "preloads: /"));
}

TEST_F(Found, IsNoLibraryThatCannotBePreloaded) {
  const std::string folder = std::string(kFolder) + "/the tools";
  std::filesystem::create_directory(folder);
  run("cp " VORN_WITHOUT_CALLS " '" + folder + "/vorn-capture'");
  for (const char* const name : {"/libvorn-capture.so", "/libvorn-capture-old.so"})
    std::ofstream(folder + name).put('x');
  EXPECT_TRUE(has(run("'" + folder + "/vorn-capture' -o " + m_path + " " VORN_CALLER " plain"),
                  "the system cannot preload a file with a blank or colon in its name"));
  EXPECT_EQ(m_status, 2);
}

}  // namespace
