// Where a thread was, in words: whole lines into little room, names of functions, the library's operation.

#include <VornDeviceInfo.h>
#include <VornOOBE.h>
#include <VornStorage.h>
#include <gtest/gtest.h>
#include <vorn_testing/MemoryHost.h>
#include <vorn_testing/Stack.h>

#include <dlfcn.h>

#include <cstring>

namespace {

using vorn_testing::Stack;
using Lines = std::vector<std::string>;

/// Frames in functions whose names are known: those that the dynamic linker finds.
Stack known() {
  Stack stack;
  stack.depth = 3;
  const char* const names[] = {"getenv", "abort", "exit"};
  for (int i = 0; i < 3; ++i) stack.frames[i] = dlsym(RTLD_DEFAULT, names[i]);
  return stack;
}

/// How dladdr() calls the place: one function may have several names.
std::string nameOf(const void* place) {
  Dl_info where = {};
  return dladdr(place, &where) && where.dli_sname ? where.dli_sname : "";
}

Lines namesOf(const Stack& stack, int from, int to) {
  Lines names;
  for (int i = from; i < to; ++i) names.push_back(nameOf(stack.frames[i]));
  return names;
}

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

std::string spelled(const Stack& stack, std::size_t room, int from = 0, int to = Stack::kFrames) {
  std::vector<char> text(room + 1, '#');
  const std::size_t length = stack.spell(text.data(), room, from, to);
  EXPECT_EQ(text[room], '#') << "beyond the room";
  EXPECT_EQ(text[length], '\0');
  EXPECT_EQ(std::strlen(text.data()), length);
  return text.data();
}

TEST(Stacks, AreSpelledFromOneFrameToBeforeAnother) {
  const Stack stack = known();
  for (int from = 0; from <= 3; ++from) {
    for (int to = from; to <= 3; ++to)
      EXPECT_EQ(spelled(stack, 1000, from, to), joined(namesOf(stack, from, to))) << from << " " << to;
  }
  EXPECT_EQ(spelled(stack, 1000), joined(namesOf(stack, 0, 3)));
  EXPECT_EQ(spelled(stack, 1000, 1), joined(namesOf(stack, 1, 3)));
}

TEST(Stacks, AreCutToWholeLinesWhereThereIsNoRoom) {
  const Stack stack = known();
  const std::string all = joined(namesOf(stack, 0, 3));
  for (std::size_t room = 1; room <= all.size() + 2; ++room) {
    std::string fits = all.substr(0, room - 1);
    fits.erase(fits.rfind('\n') + 1);  // nothing, where no line ends
    EXPECT_EQ(spelled(stack, room), fits) << room;
  }
}

TEST(Stacks, NameFileAndPlaceWhereAFunctionHasNoName) {
  Stack stack;
  stack.depth = 1;
  Dl_info where = {};
  ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, "getenv"), &where), 0);
  stack.frames[0] = static_cast<char*>(where.dli_fbase) + 0x1f;
  if (!nameOf(stack.frames[0]).empty()) GTEST_SKIP() << "the C library has a name at its beginning";
  EXPECT_EQ(stack.lines(), Lines{where.dli_fname + std::string("+0x0000001f")});
}

TEST(Stacks, LeaveOutWhatIsInNoFile) {
  Stack stack = known();
  int here = 0;
  stack.frames[1] = &here;
  EXPECT_EQ(stack.lines(), (Lines{nameOf(stack.frames[0]), nameOf(stack.frames[2])}));
}

TEST(Stacks, BeginWithTheirOwnThread) {
  const Stack stack = Stack::here();
  ASSERT_GT(stack.depth, 2);
  ASSERT_LE(stack.depth, Stack::kFrames);
  EXPECT_EQ(Stack().depth, 0);
  EXPECT_EQ(Stack().lines(), Lines{});
}

[[gnu::noinline]] Stack deep(int more) {
  const Stack inner = more > 0 ? deep(more - 1) : Stack::here();
  return inner;
}

TEST(Stacks, HoldTheInnermostOfTooManyFrames) { EXPECT_EQ(deep(2 * Stack::kFrames).depth, Stack::kFrames); }

struct Host : vorn_testing::MemoryHost {
  std::string operation;
  std::string getTimezone() override {
    operation = Stack::here().operation();
    return "";
  }
  int getVolume() override {
    operation = Stack::here().operation();
    return 0;
  }
};

TEST(Stacks, NameTheOperationOfTheLibrary) {
  Host host;
  EXPECT_EQ(Stack::here().operation(), "");
  VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(host);
  VornDeviceAbstractionLayer::VornDeviceInfo::getInstance()->getVolume();
  EXPECT_EQ(host.operation, "VornDeviceInfo::getVolume()");
  VornDeviceAbstractionLayer::VornDeviceInfo::getInstance()->getTimezone();
  EXPECT_EQ(host.operation, "VornDeviceInfo::getTimezone()");
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
}

TEST(Stacks, NameTheInnermostOfTwoOperations) {
  Stack stack = known();
  stack.frames[0] = reinterpret_cast<void*>(&VornDeviceAbstractionLayer::VornStorage::Shutdown);
  EXPECT_EQ(stack.operation(), "VornStorage::Shutdown()");
  std::swap(stack.frames[0], stack.frames[2]);
  EXPECT_EQ(stack.operation(), "VornStorage::Shutdown()");
  stack.frames[1] = reinterpret_cast<void*>(&VornDeviceAbstractionLayer::VornOOBE::Shutdown);
  EXPECT_EQ(stack.operation(), "VornOOBE::Shutdown()");
  int here = 0;
  stack.frames[1] = &here;
  EXPECT_EQ(stack.operation(), "VornStorage::Shutdown()");
  stack.depth = 2;
  EXPECT_EQ(stack.operation(), "");
}

TEST(Demangled, IsANameThatACompilerMade) {
  EXPECT_EQ(vorn_testing::demangled("_ZN4vorn5speakEi"), "vorn::speak(int)");
  EXPECT_EQ(vorn_testing::demangled("i"), "int");
  EXPECT_EQ(vorn_testing::demangled("a.so+0x1"), "a.so+0x1");
  EXPECT_EQ(vorn_testing::demangled(""), "");
}

TEST(Demangled, IsEveryLine) {
  EXPECT_EQ(vorn_testing::demangledLines("_ZN4vorn5speakEi\nx.so+0x1\n\n_Z1fv"),
            (Lines{"vorn::speak(int)", "x.so+0x1", "", "f()"}));
  EXPECT_EQ(vorn_testing::demangledLines(""), Lines{});
}

}  // namespace
