#include "Accesses.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>
#include <memory>

#include <vorn_testing/Stack.h>
#include "../Trial.h"
#include "LockOrder.h"
#include "Operand.h"
#include "Steps.h"

namespace vorn_testing::checks {

namespace {

enum class Kind { kHost, kCLibrary, kCxxLibrary, kOther };

/// A library's part of the addresses.
struct Range {
  std::uintptr_t begin, end;
  Kind kind;
};

// Read by a handler: places of fixed size.
constexpr std::size_t kRanges = 256, kAccesses = 4096;
constexpr long kMostSteps = 12000;
Range g_code[kRanges], g_data[kRanges], g_adapters[kRanges];
std::size_t g_codes = 0, g_datas = 0, g_adapterDatas = 0;

struct Log {
  Access all[kAccesses];
  std::size_t count = 0;
};

enum class Role { kNone, kNotes, kStops, kMeets };
thread_local Role t_role = Role::kNone;
thread_local Log* t_log = nullptr;
thread_local Kind t_before = Kind::kOther;
thread_local std::uintptr_t t_entry = 0, t_caller = 0;
thread_local long t_instructions = 0;
thread_local std::uintptr_t t_fresh = 0;  ///< Blocks beyond were asked for since.

/// The place where two threads are to meet; what the one that stops is about to do there.
Access g_place, g_stopped;
std::atomic<bool> g_isStopped{false};

Kind kindOf(std::uintptr_t address) {
  for (std::size_t i = 0; i < g_codes; ++i) {
    if (address >= g_code[i].begin && address < g_code[i].end) return g_code[i].kind;
  }
  return Kind::kOther;
}

bool isShared(std::uintptr_t address) {
  if (isGuarded(reinterpret_cast<const void*>(address))) return true;
  for (std::size_t i = 0; i < g_datas; ++i) {
    if (address >= g_data[i].begin && address < g_data[i].end) return true;
  }
  return false;
}

bool isOwn(const void* mutex) {
  const auto address = reinterpret_cast<std::uintptr_t>(mutex);
  return std::none_of(g_adapters, g_adapters + g_adapterDatas,
                      [&](const Range& range) { return address >= range.begin && address < range.end; });
}

bool overlap(const Access& left, const Access& right) {
  return left.address < right.address + right.size && right.address < left.address + left.size;
}

void note(const Access& access) {
  if (t_log->count == kAccesses) return;
  for (std::size_t i = t_log->count; i-- > 0 && i + 12 > t_log->count;) {
    const Access& other = t_log->all[i];
    if (other.address == access.address && other.size == access.size && other.writes == access.writes &&
        other.held == access.held && other.wide == access.wide && other.entry == access.entry)
      return;
  }
  t_log->all[t_log->count++] = access;
}

int addRanges(dl_phdr_info* info, std::size_t, void*) {
  const std::string name = info->dlpi_name ? info->dlpi_name : "";
  const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  Kind kind = Kind::kHost;
  if (has("/libc.so") || has("/libc-"))
    kind = Kind::kCLibrary;
  else if (has("/libstdc++."))
    kind = Kind::kCxxLibrary;
  else if (name.empty() || has("linux-vdso") || has("/ld-") || has("libVornDALImpl") || has("libDALIMPL") ||
           has("/libatomic.") || has("/libpthread") || has("/libgcc_s.") || has("/libm.") || has("/libm-"))
    kind = Kind::kOther;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& part = info->dlpi_phdr[i];
    if (part.p_type != PT_LOAD) continue;
    const std::uintptr_t begin = info->dlpi_addr + part.p_vaddr, end = begin + part.p_memsz;
    if (part.p_flags & PF_X) {
      if (g_codes < kRanges) g_code[g_codes++] = {begin, end, kind};
    } else if (part.p_flags & PF_W && kind == Kind::kHost) {
      if (g_datas < kRanges) g_data[g_datas++] = {begin, end, kind};
    } else if (part.p_flags & PF_W && has("libVornDALImpl")) {
      if (g_adapterDatas < kRanges) g_adapters[g_adapterDatas++] = {begin, end, kind};
    }
  }
  return 0;
}

/// By which a library goes to a function of another one: no place in the host's own text.
bool isJumpThroughTable(std::uintptr_t instruction) {
  const auto* const code = reinterpret_cast<const unsigned char*>(instruction);
  const auto starts = [&](const char* with, std::size_t size) { return std::memcmp(code, with, size) == 0; };
  return starts("\xff\x25", 2) || starts("\xf2\xff\x25", 3) || starts("\xf3\x0f\x1e\xfa", 4);
}

/// Before the next instruction of a call. Returns whether to go on so.
bool onInstruction(const void* context) {
  if (++t_instructions > kMostSteps) return false;
  const std::uintptr_t instruction = instructionOf(context);
  const Kind kind = kindOf(instruction);
  if (kind == Kind::kCLibrary && t_before != Kind::kCLibrary) t_entry = instruction;
  t_before = kind;
  if (kind == Kind::kHost && !isJumpThroughTable(instruction)) t_caller = instruction;
  if (kind == Kind::kOther) return true;
  Operand operands[2];
  const std::size_t count = operandsOf(context, operands);
  for (std::size_t i = 0; i < count; ++i) {
    const Operand& operand = operands[i];
    if (!isShared(operand.address)) continue;
    Access access{operand.address,
                  operand.size,
                  operand.writes,
                  operand.wide,
                  operand.changes,
                  operand.locked,
                  operand.address >= t_fresh && isGuarded(reinterpret_cast<const void*>(operand.address)),
                  instruction,
                  kind == Kind::kCLibrary ? t_entry : 0,
                  t_caller,
                  0,
                  {},
                  false};
    access.held = heldMutexes(access.mutexes, 4);
    access.own = std::any_of(access.mutexes, access.mutexes + std::min<std::size_t>(access.held, 4), isOwn);
    if (t_role == Role::kNotes || (t_role == Role::kMeets && g_isStopped && overlap(access, g_stopped)))
      note(access);
    const bool here = g_place.size ? overlap(access, g_place) : instruction == g_place.instruction;
    if (t_role == Role::kStops && here && access.writes == g_place.writes) {
      g_stopped = access;
      g_isStopped = true;
      t_role = Role::kNone;
      pauseHere();
      g_isStopped = false;
      return false;
    }
  }
  return true;
}

void play(Role role, Log* log, const std::function<void()>& act) {
  t_role = role;
  t_log = log;
  t_fresh =
      reinterpret_cast<std::uintptr_t>(std::make_unique<char>().get());  // addresses are given in their order
  const AtEnd end([] {
    onEveryStep(nullptr);
    t_role = Role::kNone;
  });
  onEveryStep(onInstruction);
  act();
}

}  // namespace

Accesses::Accesses() {
  g_codes = g_datas = g_adapterDatas = 0;
  dl_iterate_phdr(addRanges, nullptr);
  const auto find = [](std::vector<std::uintptr_t>& all, std::initializer_list<const char*> names) {
    for (const char* const name : names) {
      if (void* const function = dlsym(RTLD_DEFAULT, name))
        all.push_back(reinterpret_cast<std::uintptr_t>(function));
    }
  };
  find(m_copying, {"memcpy", "memmove", "__memcpy_chk", "__memmove_chk"});
  find(m_writing, {"memset", "__memset_chk", "strcpy", "strncpy", "strcat", "strncat", "__strcpy_chk",
                   "__strncpy_chk", "__strcat_chk", "sprintf", "snprintf", "vsprintf", "vsnprintf",
                   "__sprintf_chk", "__snprintf_chk", "__vsprintf_chk", "__vsnprintf_chk"});
}

Accesses::~Accesses() { onEveryStep(nullptr); }

bool Accesses::sees() { return canStep() && interposesMemory(); }

std::vector<Access> Accesses::of(const std::function<void()>& act) const {
  static Log log;
  log.count = 0;
  t_instructions = 0;
  play(Role::kNotes, &log, act);
  std::vector<Access> exact;
  std::copy_if(log.all, log.all + log.count, std::back_inserter(exact),
               [&](const Access& access) { return isExact(access); });
  return exact;
}

bool Accesses::isSurelyPlain(const Access& access) const {
  const auto isOneOf = [&](const std::vector<std::uintptr_t>& functions) {
    return std::find(functions.begin(), functions.end(), access.entry) != functions.end();
  };
  if (access.entry) return isOneOf(m_copying) || (access.writes && isOneOf(m_writing));
  if (kindOf(access.instruction) == Kind::kHost) return access.wide;
  const auto known = m_known.find(access.instruction);
  if (known != m_known.end()) return known->second;
  return m_known[access.instruction] = isPlainThere(access.instruction);
}

/// Functions of the C++ library that are about one object, and of no counter that is shared as older strings have.
bool Accesses::isPlainThere(std::uintptr_t instruction) const {
  Dl_info where;
  if (dladdr(reinterpret_cast<const void*>(instruction), &where) == 0 || !where.dli_sname) return false;
  const std::string name = where.dli_sname;
  for (const char* const plain :
       {"_ZNSt7__cxx1112basic_string", "_ZNKSt7__cxx1112basic_string", "_ZSt29_Rb_tree_insert_and_rebalance",
        "_ZSt28_Rb_tree_rebalance_for_erase", "_ZNSt8__detail15_List_node_base"}) {
    if (name.compare(0, std::strlen(plain), plain) == 0) return true;
  }
  return false;
}

/// What else the C library does has locks of its own, and reads beyond the end of a text.
bool Accesses::isExact(const Access& access) const { return !access.entry || isSurelyPlain(access); }

bool Accesses::collide(const Access& left, const Access& right) const {
  return overlap(left, right) && (left.writes || right.writes) && isExact(left) && isExact(right) &&
         ((left.changes && right.changes) || isSurelyPlain(left) || isSurelyPlain(right));
}

void Accesses::stopAt(const Access& place, const std::function<void()>& act) const {
  g_place = place;
  t_instructions = 0;
  play(Role::kStops, nullptr, act);
}

void Accesses::stopAtInstruction(const Access& like, const std::function<void()>& act) const {
  Access place = like;
  place.size = 0;
  stopAt(place, act);
}

bool Accesses::guardedApart(const Access& left, const Access& right) {
  return overlap(left, right) && (left.writes || right.writes) && left.own && right.own && !left.locked &&
         !right.locked && !left.entry && !right.entry;
}

std::vector<Access> Accesses::meet(const std::function<void()>& act, bool apart) const {
  static Log log;
  log.count = 0;
  t_instructions = 0;
  play(Role::kMeets, &log, act);
  std::vector<Access> met;
  for (std::size_t i = 0; i < log.count; ++i) {
    if (collide(log.all[i], g_stopped) || (apart && guardedApart(log.all[i], g_stopped)))
      met.push_back(log.all[i]);
  }
  return met;
}

Access Accesses::stoppedAt() { return g_stopped; }

std::string Accesses::whereIs(const Access& access) {
  Dl_info where;
  if (dladdr(reinterpret_cast<const void*>(access.caller), &where) == 0) return "";
  return where.dli_sname ? demangled(where.dli_sname) : "";
}

}  // namespace vorn_testing::checks
