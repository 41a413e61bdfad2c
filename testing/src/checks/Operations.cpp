#include "Operations.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

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

template <class Object, class Answer, class... Parameters>
using Member = Answer (Object::*)(Parameters...);

template <class Object, class Answer, class... Parameters>
Texts answer(Object& object, Member<Object, Answer, Parameters...> member,
             std::tuple<std::decay_t<Parameters>...>& values) {
  Texts texts;
  const auto ask = [&](auto&... arguments) {
    if constexpr (std::is_void_v<Answer>)
      (object.*member)(arguments...);
    else
      collect(texts, (object.*member)(arguments...));
    (collectWritten<Parameters>(texts, arguments), ...);
  };
  std::apply(ask, values);
  return texts;
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
    Values* const values = onPages(Values(Sample<std::decay_t<Parameters>>::make(given, which)...));
    Prepared prepared;
    const auto spell = [](const auto&... arguments) {
      std::string all;
      ((all += (all.empty() ? "" : ", ") + spelled(arguments)), ...);
      return all;
    };
    prepared.shown = called + "(" + std::apply(spell, *values) + ")";
    prepared.make = [values, member](Host& host, [[maybe_unused]] Player* player) {
      if constexpr (std::is_same_v<Object, Player>)
        return answer(*player, member, *values);
      else
        return answer(host, member, *values);
    };
    prepared.revoke = [values] {
      values->~Values();
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
  made.prepare = [direct = made.prepare, through](Given given, int which) {
    using Values = std::tuple<std::decay_t<Parameters>...>;
    Prepared prepared = direct(given, which);
    Values* const values = onPages(Values(Sample<std::decay_t<Parameters>>::make(given, which)...));
    prepared.makeThrough = [values, through](Host& host) {
      answer(*Adapter::CreateInstance(host), through, *values);
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

void callOthers(Trial& trial, const Operation& operation) {
  for (const Operation& other : operations()) {
    if (other.adapter != operation.adapter || other.place() == operation.place()) continue;
    if (operation.ofPlayer && !other.ofPlayer) continue;
    try {
      call(trial, other, Given::kPlain, 0);
    } catch (const Outcome&) {
    }
  }
}

}  // namespace vorn_testing::checks
