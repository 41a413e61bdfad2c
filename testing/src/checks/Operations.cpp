#include "Operations.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <tuple>
#include <type_traits>
#include <utility>

#include "Words.h"
#include "vorn_testing/Operations.h"

namespace vorn_testing::checks {

namespace {

// Answers, and what of them is text.

void collect(Texts& texts, const std::string& answer) { texts.push_back(answer); }

void collect(Texts& texts, const Entries& answer) {
  for (const auto& entry : answer) texts.insert(texts.end(), {entry.first, entry.second});
}

void collect(Texts& texts, const std::pair<bool, std::string>& answer) { texts.push_back(answer.second); }

template <class Answer>
void collect(Texts&, const Answer&) {}

/// What was written to the caller's own text is an answer too.
template <class Parameter, class Value>
void collectWritten(Texts& texts, const Value& value) {
  if constexpr (std::is_same_v<Parameter, std::string&>) texts.push_back(value);
}

template <class Value>
constexpr bool kIsText = std::is_same_v<Value, std::string> || std::is_same_v<Value, Texts> ||
                         std::is_same_v<Value, Entries> || std::is_same_v<Value, CommsStateInfo>;

template <class Value>
constexpr bool kIsNumber = !kIsText<Value> && !std::is_same_v<Value, bool>;

template <class Answer>
constexpr bool kHasText = kIsText<Answer> || std::is_same_v<Answer, std::pair<bool, std::string>>;

// Arguments have pages of their own, never used again: whoever keeps a reference is found when they are revoked.

template <class Values>
std::size_t pages() {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (sizeof(Values) + page - 1) / page * page;
}

template <class Values>
Values* onPages(Values values) {
  void* const memory =
      mmap(nullptr, pages<Values>(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return new (memory) Values(std::move(values));
}

// What was lent and has ended, so that a touch can be told from any other crash.

struct Revoked {
  std::uintptr_t begin, end;
  const char* operation;
};
Revoked g_revoked[4096];
std::atomic<std::size_t> g_revokedCount{0};

void noteRevoked(const void* begin, std::size_t size, const std::string& operation) {
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::size_t place = g_revokedCount++ % (sizeof g_revoked / sizeof *g_revoked);
  static auto* const names = new std::set<std::string>;  // what a handler reads must stay
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  g_revoked[place] = {address, address + size, names->insert(operation).first->c_str()};
}

template <class Value>
void end(Value& value, const std::string&) {
  std::destroy_at(&value);
}

#if _GLIBCXX_USE_CXX11_ABI
constexpr std::size_t kBeforeText = 0;
bool isShared(const std::string&) { return false; }
#else
/// An older text begins behind its length, its room and how many more have it; a copy of it has the same block.
constexpr std::size_t kBeforeText = 3 * sizeof(std::size_t);
bool isShared(const std::string& text) {
  return __atomic_load_n(reinterpret_cast<const int*>(text.data() - sizeof(std::size_t)), __ATOMIC_ACQUIRE) >
         0;
}
#endif

/// A long text has pages of its own, which the allocator notes before it: they stay, and cannot be reached any more, so
/// that nothing else comes to stand there.
void end(std::string& text, const std::string& operation) {
  if (isGuarded(text.data())) {
    noteRevoked(text.data(), text.size(), operation);
    std::destroy_at(&text);
    return;
  }
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(text.data());
  const char* const block = text.data() - kBeforeText;
  constexpr std::size_t kMapped = 2;
  if (text.size() < kOwnPages || address % page != 2 * sizeof(std::size_t) + kBeforeText ||
      !(reinterpret_cast<const std::size_t*>(block)[-1] & kMapped) || isShared(text)) {
    std::destroy_at(&text);
    return;
  }
  const std::uintptr_t size = (address % page + text.size()) / page * page + page;
  noteRevoked(text.data(), text.size(), operation);
  mprotect(reinterpret_cast<void*>(address - address % page), size, PROT_NONE);
}

// What the caller's own arguments were, to be compared after the call.

template <class Value>
bool same(const Value& left, const Value& right) {
  return left == right;
}
bool same(const CommsStateInfo& left, const CommsStateInfo& right) { return left.state == right.state; }

template <class Parameter>
constexpr bool kLendsConst =
    std::is_lvalue_reference_v<Parameter>&& std::is_const_v<std::remove_reference_t<Parameter>>;

template <class Parameter, class Value>
void mustBeSame(const std::string& operation, const Value& before, const Value& after) {
  if constexpr (kLendsConst<Parameter>) {
    if (!same(before, after))
      throw Outcome{HostVerdict::kBroken, operation + "() changed the caller's argument from " +
                                              spelled(before) + " to " + spelled(after)};
  }
}

/// By operation: its arguments of type text, as a host is said to accept them.
std::map<std::string, std::vector<Texts>>& accepted() {
  static auto* const all = new std::map<std::string, std::vector<Texts>>;
  return *all;
}

/// The same for one, or the words that the headers name for it.
const std::vector<Texts>& namedFor(const std::string& operation, Given given) {
  static const auto* const kNone = new std::vector<Texts>;
  if (given == Given::kWord) return wordsOf(operation);
  const auto found = accepted().find(operation);
  return found == accepted().end() ? *kNone : found->second;
}

template <class Parameter, class Value>
void accept(Value& value, const Texts& texts, std::size_t& next) {
  if constexpr (std::is_same_v<Value, std::string> && !std::is_same_v<Parameter, std::string&>) {
    if (next < texts.size()) value = texts[next++];
  }
}

template <class Object, class Answer, class... Parameters>
using Member = Answer (Object::*)(Parameters...);

template <class Object, class Answer, class... Parameters>
Texts answer(const std::string& called, Object& object, Member<Object, Answer, Parameters...> member,
             std::tuple<std::decay_t<Parameters>...>& values) {
  Texts texts;
  constexpr bool kLends = (kLendsConst<Parameters> || ...);
  std::conditional_t<kLends, std::tuple<std::decay_t<Parameters>...>, bool> before{};
  if constexpr (kLends) before = values;
  const auto ask = [&](auto&... arguments) {
    if constexpr (std::is_void_v<Answer>) {
      enterHost();
      (object.*member)(arguments...);
      leaveHost();
    } else {
      enterHost();
      const Answer answered = (object.*member)(arguments...);
      leaveHost();
      collect(texts, answered);
    }
    (collectWritten<Parameters>(texts, arguments), ...);
  };
  std::apply(ask, values);
  if constexpr (kLends) {
    std::apply(
        [&](auto&... old) {
          std::apply([&](auto&... now) { (mustBeSame<Parameters>(called, old, now), ...); }, values);
        },
        before);
  }
  return texts;
}

/// The values of a call, on pages of their own.
template <class... Parameters>
auto* lentValues(const std::string& called, Given given, int which) {
  using Values = std::tuple<std::decay_t<Parameters>...>;
  Values values(Sample<std::decay_t<Parameters>>::make(given, which)...);
  const auto& own = namedFor(called, given);
  if (!own.empty() && which >= samples(given)) {
    const auto past = static_cast<std::size_t>(which - samples(given));
    const Texts& texts =
        own[(given == Given::kHostile ? past / static_cast<std::size_t>(samples(given)) : past) % own.size()];
    std::size_t next = 0;
    std::apply([&](auto&... each) { (accept<Parameters>(each, texts, next), ...); }, values);
  }
  return onPages(std::move(values));
}

template <class Object, class Answer, class... Parameters>
Operation operation(const vorn_testing::Operation& listed, Member<Object, Answer, Parameters...> member) {
  Operation made;
  made.name = listed.name;
  made.slot = listed.slot;
  made.adapter = listed.adapter;
  made.ofPlayer = std::is_same_v<Object, Player>;
  made.takesTexts = (kIsText<std::decay_t<Parameters>> || ...);
  made.takesNumbers = (kIsNumber<std::decay_t<Parameters>> || ...);
  made.answersTexts = kHasText<Answer> || (std::is_same_v<Parameters, std::string&> || ...);
  made.prepare = [called = made.name, member]([[maybe_unused]] Given given, [[maybe_unused]] int which) {
    using Values = std::tuple<std::decay_t<Parameters>...>;
    Values* const values = lentValues<Parameters...>(called, given, which);
    Prepared prepared;
    const auto spell = [](const auto&... arguments) {
      std::string all;
      ((all += (all.empty() ? "" : ", ") + spelled(arguments)), ...);
      return all;
    };
    prepared.shown = called + "(" + std::apply(spell, *values) + ")";
    prepared.make = [called, values, member](Host& host, [[maybe_unused]] Player* player) {
      if constexpr (std::is_same_v<Object, Player>)
        return answer(called, *player, member, *values);
      else
        return answer(called, host, member, *values);
    };
    prepared.revoke = [called, values] {
      noteRevoked(values, pages<Values>(), called);
      std::apply([&](auto&... each) { (end(each, called), ...); }, *values);
      mprotect(values, pages<Values>(), PROT_NONE);
    };
    return prepared;
  };
  return made;
}

template <class Adapter, class Answer, class AdapterAnswer, class... Parameters>
Operation locked(const vorn_testing::Operation& listed, Member<Host, Answer, Parameters...> member,
                 Member<Adapter, AdapterAnswer, Parameters...> through) {
  Operation made = operation(listed, member);
  made.locked = true;
  made.prepare = [called = made.name, direct = made.prepare, through](Given given, int which) {
    Prepared prepared = direct(given, which);
    auto* const values = lentValues<Parameters...>(called, given, which);
    prepared.makeThrough = [called, values, through](Host& host) {
      answer(called, *Adapter::CreateInstance(host), through, *values);
    };
    return prepared;
  };
  return made;
}

/// The host's operations of the list by slot, then its player's.
struct Collected : OperationVisitor {
  std::vector<Operation> operations;

  Collected() {
    visitOperations(*this);
    const auto place = [](const Operation& one) { return std::make_pair(one.ofPlayer, one.slot); };
    std::sort(operations.begin(), operations.end(),
              [&](const Operation& left, const Operation& right) { return place(left) < place(right); });
  }

  template <class Answer, class... Parameters, class Through>
  void down(const vorn_testing::Operation& listed, Member<Host, Answer, Parameters...> member,
            Through through) {
    operations.push_back(listed.guard == Guard::kMutex ? locked(listed, member, through)
                                                       : operation(listed, member));
  }

  template <class Answer, class... Parameters, class Through>
  void down(const vorn_testing::Operation& listed, Member<Player, Answer, Parameters...> member, Through) {
    operations.push_back(operation(listed, member));
  }

  template <class OfHost>
  void hostOnly(const vorn_testing::Operation& listed, OfHost member) {
    operations.push_back(operation(listed, member));
  }
};

}  // namespace

std::string Operation::place() const {
  return std::string(ofPlayer ? "VornEMPAdapterIF" : "VornDALImplIF") + (slot < 10 ? "/0" : "/") +
         std::to_string(slot) + "/" + name;
}

const std::vector<Operation>& operations() {
  static const auto* const kOperations = new std::vector<Operation>(Collected().operations);
  return *kOperations;
}

Texts call(Trial& trial, const Operation& operation, const Prepared& prepared) {
  Host& host = trial.host();
  Player* const player = operation.ofPlayer ? &trial.player() : nullptr;
  Texts texts;
  trial.ask(prepared.shown, [&] { texts = prepared.make(host, player); });
  return texts;
}

Texts call(Trial& trial, const Operation& operation, Given given, int which) {
  return call(trial, operation, operation.prepare(given, which));
}

void tryCall(Trial& trial, const Operation& operation, const Prepared& prepared) {
  try {
    call(trial, operation, prepared);
  } catch (const Outcome& outcome) {
    if (outcome.kind == HostVerdict::kBroken) throw;
  }
}

void callThrough(Trial& trial, const Operation&, const Prepared& prepared) {
  Host& host = trial.host();
  trial.ask(prepared.shown, [&] { prepared.makeThrough(host); });
}

void callAll(Trial& trial, const std::vector<const Operation*>& which) {
  for (const Operation* const operation : which) {
    try {
      call(trial, *operation, Given::kPlain, 0);
      for (int word = 0; word < std::min(8, operation->samples(Given::kWord)); ++word)
        call(trial, *operation, Given::kWord, word);
    } catch (const Outcome& outcome) {
      if (outcome.kind == HostVerdict::kBroken) throw;
    }
  }
}

std::vector<const Operation*> neighbours(const Operation& operation) {
  std::vector<const Operation*> found;
  for (const Operation& other : operations()) {
    if (other.adapter == operation.adapter && (other.ofPlayer || !operation.ofPlayer))
      found.push_back(&other);
  }
  return found;
}

int Operation::samples(Given given) const {
  const bool named =
      given == Given::kPlain || given == Given::kLent || given == Given::kLoad || given == Given::kWord;
  const int count = checks::samples(given), own = static_cast<int>(namedFor(name, given).size());
  // What is refused by its name is not taken to its number: every number comes with every name.
  if (given == Given::kHostile && takesNumbers) return count + count * own;
  return count + (named ? own : 0);
}

void takeAccepted(const HostDemands& demands) {
  auto& all = accepted();
  all.clear();
  for (const auto& setting : demands.settings) {
    all["getSystemSetting"].push_back({setting.first});
    for (const auto& value : setting.second) all["setSystemSetting"].push_back({setting.first, value});
  }
  for (const auto& mode : demands.modes) {
    all["onAdjustMode"].push_back({mode.first});
    for (const auto& value : mode.second) all["onSetMode"].push_back({mode.first, value});
  }
  for (const auto& channel : demands.channels) all["onChangeChannel"].push_back({channel});
  for (const auto& input : demands.inputs) all["onInputChange"].push_back({input});
  for (const auto& locale : demands.locales) all["changeAlexaLocale"].push_back({locale});
}

const char* ownerOfRevoked(const void* address) {
  const auto wanted = reinterpret_cast<std::uintptr_t>(address);
  for (const Revoked& range : g_revoked) {
    if (range.operation && wanted >= range.begin && wanted < range.end) return range.operation;
  }
  return nullptr;
}

}  // namespace vorn_testing::checks
