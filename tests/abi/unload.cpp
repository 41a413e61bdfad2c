// Loading and unloading: the library comes and goes without leaving anything behind.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>

#include <filesystem>
#include <memory>

namespace {

/// What every CreateInstance() on a host, and every getInstance(), looks like to a caller.
using Create = std::shared_ptr<void> (*)(void* host);
using Get = std::shared_ptr<void> (*)();

const char* const kAdapters[] = {
    "14VornAlexaState",         "16VornAppMessaging", "14VornAudioFocus", "11VornAudioIn",
    "22VornDeviceCapabilities", "14VornDeviceInfo",   "13VornGUIOutput",  "17VornLEDController",
    "18VornLoggerObserver",     "8VornOOBE",          "11VornStorage",    "21VornEMPAdapterControl",
    "16VornCommsManager"};

template <class Function>
Function find(void* library, const std::string& name) {
  void* const symbol = dlsym(library, ("_ZN26VornDeviceAbstractionLayer" + name).c_str());
  EXPECT_NE(symbol, nullptr) << name;
  return reinterpret_cast<Function>(symbol);
}

/// A host that must not be touched.
void* untouchable() {
  static void* const host = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return host;
}

/// Loads the library, makes everything there is to make, and unloads it with every instance still held by the library.
void comeAndGo() {
  void* const library = dlopen(VORN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  for (const char* adapter : kAdapters)
    find<Create>(library, std::string(adapter) + "14CreateInstanceERNS_13VornDALImplIFE")(untouchable());
  find<Get>(library, "10FileLogger11getInstanceEv")();
  find<Get>(library, "36VornAttachmentReaderContainerFactory11getInstanceEv")();
  dlclose(library);
  ASSERT_EQ(dlopen(VORN_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still mapped";
}

std::size_t entries(const char* directory) {
  const std::filesystem::directory_iterator all(directory);
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST(Unload, LeavesNothingBehindHoweverOften) {
  // The loader's own chunks settle within a few thousand bytes; the smallest leak would be 32 bytes each time,
  // 64,000 at least.
  [[maybe_unused]] constexpr int kSettled = 10000;
  for (int i = 0; i < 10; ++i) comeAndGo();  // what the loader itself keeps is there
  const std::size_t descriptors = entries("/proc/self/fd");
  [[maybe_unused]] const std::size_t bytes = mallinfo2().uordblks;
  for (int i = 0; i < VORN_TIMES && !HasFatalFailure(); ++i) comeAndGo();
  EXPECT_EQ(entries("/proc/self/fd"), descriptors);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_LOG_(INFO)
      << "bytes are not compared: the sanitizer has an allocator of its own, and its own leak check";
#else
  EXPECT_LT(mallinfo2().uordblks, bytes + kSettled);
#endif
}

TEST(Load, StartsNoThreadAndOpensNoFile) {
  const std::size_t threads = entries("/proc/self/task");
  const std::size_t descriptors = entries("/proc/self/fd");
  void* const library = dlopen(VORN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  EXPECT_EQ(entries("/proc/self/task"), threads);
  EXPECT_EQ(entries("/proc/self/fd"), descriptors);
  dlclose(library);
}

}  // namespace
