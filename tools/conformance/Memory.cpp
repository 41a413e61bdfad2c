// Stands before the C library's allocator for everything in this process, the host included. While the checks want it, a
// block gets pages of its own, ends where they end, and is out of reach from the moment when it is given back: reading or
// writing beyond it, or after its end, ends the process there.

#include <cstdint>

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) && defined(__GLIBC__) && defined(__LP64__)

#include <dlfcn.h>
#include <malloc.h>
#include <sys/mman.h>
#include <vorn_testing/Interposed.h>

#include <atomic>
#include <cerrno>
#include <cstring>

// The C library's own names for what this file stands before.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

constexpr std::uintptr_t kPage = 4096, kSpace = std::uintptr_t{1} << 36;
/// The kernel bounds how many ranges of different protection a process may have; each block is two.
constexpr long kMostBlocks = 4000;

std::atomic<std::uintptr_t> g_begin{0}, g_next{0};
std::atomic<long> g_blocks{0};

bool owns(const void* block) {
  const std::uintptr_t begin = g_begin;
  return begin && reinterpret_cast<std::uintptr_t>(block) - begin < kSpace;
}

/// Addresses, none of which can be reached yet.
bool reserve() {
  static std::atomic<int> state{0};  // 1 on its way, 2 there, 3 refused
  int none = 0;
  if (state.compare_exchange_strong(none, 1)) {
    void* const space = mmap(nullptr, kSpace, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (space != MAP_FAILED) {
      g_next = reinterpret_cast<std::uintptr_t>(space);
      g_begin = g_next.load();
      vorn_testing::interposed::guardedBy(owns);
    }
    state = space == MAP_FAILED ? 3 : 2;
  }
  return state == 2;
}

/// Before the block, in the same page.
struct Head {
  std::size_t size, unused;
};
Head& headOf(void* block) { return static_cast<Head*>(block)[-1]; }

std::uintptr_t pagesOf(std::size_t size) {
  return (((size + 15) & ~std::size_t{15}) + sizeof(Head) + kPage - 1) & ~(kPage - 1);
}

/// Null where the C library is to serve.
void* guarded(std::size_t size, int fill) {
  if (!vorn_testing::interposed::guardsMemory() || size > kSpace / 64 || g_blocks >= kMostBlocks ||
      !reserve())
    return nullptr;
  const std::uintptr_t pages = pagesOf(size), start = g_next.fetch_add(pages + kPage);
  if (start + pages + kPage > g_begin + kSpace) return nullptr;
  const int error = errno;
  void* const memory = reinterpret_cast<void*>(start);
  if (mprotect(memory, pages, PROT_READ | PROT_WRITE) != 0) {
    errno = error;
    return nullptr;
  }
  ++g_blocks;
  void* const block = reinterpret_cast<void*>(start + pages - ((size + 15) & ~std::size_t{15}));
  headOf(block).size = size;
  if (fill) std::memset(block, fill, size);
  return block;
}

void giveBack(void* block) {
  const int error = errno;
  const std::uintptr_t pages = pagesOf(headOf(block).size);
  const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(block) + headOf(block).size;
  void* const start = reinterpret_cast<void*>(((end + 15) & ~std::uintptr_t{15}) - pages);
  static_cast<void>(
      mmap(start, pages, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0));
  --g_blocks;
  errno = error;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
  vorn_testing::interposed::place();
  void* const block = guarded(size, 0x5a);
  return block ? block : __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
  std::size_t all = 0;
  void* const block = __builtin_mul_overflow(count, size, &all) ? nullptr : guarded(all, 0);
  return block ? block : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void free(void* block) noexcept {
  if (block) vorn_testing::interposed::place();
  if (owns(block))
    giveBack(block);
  else
    __libc_free(block);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) noexcept {
  if (!block || !owns(block)) return block ? __libc_realloc(block, size) : malloc(size);
  void* const other = size ? malloc(size) : nullptr;
  if (other) std::memcpy(other, block, size < headOf(block).size ? size : headOf(block).size);
  if (other || !size) free(block);
  return other;
}

__attribute__((visibility("default"))) std::size_t malloc_usable_size(void* block) noexcept {
  static const auto real = reinterpret_cast<std::size_t (*)(void*)>(dlsym(RTLD_NEXT, "malloc_usable_size"));
  return owns(block) ? headOf(block).size : real(block);
}
}

#endif
