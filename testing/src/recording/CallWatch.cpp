#include "CallWatch.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <type_traits>
#include <utility>

#include "vorn_testing/Masking.h"
#include "vorn_testing/Operations.h"
#include "vorn_testing/Spelling.h"

namespace vorn_testing::recording {

namespace {

using Entries = std::map<std::string, std::string>;

/// An argument, as a double found it.
struct Argument {
  std::string spelled;
  const Entries* entries = nullptr;                 ///< Of a set.
  const std::vector<std::string>* items = nullptr;  ///< Of a list.
};

template <class Value>
Argument read(const void* address) {
  using DeviceAbstractionLayer::CommsControllerInterface;
  using DeviceAbstractionLayer::CommsManagerInterface;
  // The doubles keep the number of an action, and the text of a state.
  using Kept = std::conditional_t<
      std::is_same_v<Value, CommsControllerInterface::CallAction>, int,
      std::conditional_t<std::is_same_v<Value, CommsManagerInterface::CommsStateInfo>, std::string, Value>>;
  const auto& value = *static_cast<const Kept*>(address);
  Argument argument;
  argument.spelled = spell(value);
  if constexpr (std::is_same_v<Kept, Entries>) argument.entries = &value;
  if constexpr (std::is_same_v<Kept, std::vector<std::string>>) argument.items = &value;
  return argument;
}

/// What is known of an operation where its call arrives.
struct Known {
  Operation listed;
  std::vector<std::string> parameters;
  std::vector<Argument (*)(const void*)> read;  ///< Empty where the arguments are no values.
  std::vector<bool> references;                 ///< Whether the callee may write.
};

struct Table : OperationVisitor {
  std::map<std::pair<std::string, int>, Known> all;

  Table() { visitOperations(*this); }

  template <class Class, class Result, class... P, class OfAdapter>
  void down(const Operation& listed, Result (Class::*)(P...), OfAdapter) {
    add<P...>(listed);
  }

  template <class Class, class Result, class... P>
  void up(const Operation& listed, Result (Class::*)(P...)) {
    add<P...>(listed);
  }

  template <class OfHost>
  void hostOnly(const Operation& listed, OfHost) {
    add<>(listed);
  }

  template <class OfClass>
  void own(const Operation& listed, OfClass) {
    if (listed.slot > 0) add<>(listed);
  }

 private:
  template <class... P>
  void add(const Operation& listed) {
    all[{listed.target, listed.slot}] = {listed, parameterNames(listed), {read_<P>()...}, {kWrites<P>...}};
  }

  template <class P>
  static Argument (*read_())(const void*) {
    return read<std::decay_t<P>>;
  }

  template <class P>
  static constexpr bool kWrites = std::is_same_v<P, std::string&> || std::is_same_v<P, std::int64_t&>;
};

const Known* known(const Call& call) {
  static const Table table;
  const auto found = table.all.find({call.target, call.slot});
  return found == table.all.end() ? nullptr : &found->second;
}

std::vector<Argument> arguments(const Known* operation, const Call& call) {
  std::vector<Argument> made;
  const bool typed = operation && operation->read.size() == call.addresses.size();
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    Argument text;
    if (typed)
      text = operation->read[i](call.addresses[i]);
    else
      text.spelled = spell(call.arguments[i]);
    made.push_back(text);
  }
  return made;
}

/// A number for each thread, also for one that got the identity of one that has ended.
unsigned long thread() {
  static std::atomic<unsigned long> threads(0);
  thread_local const unsigned long number = ++threads;
  return number;
}

std::string threadName() {
  char name[32] = "";
  pthread_getname_np(pthread_self(), name, sizeof name);
  return name;
}

/// Whether a parameter names a value and does not hold one.
bool isKey(const std::string& parameter) { return parameter == "key" || parameter == "keys"; }

}  // namespace

CallWatch::CallWatch(std::shared_ptr<Recorder> recorder)
    : m_recorder(std::move(recorder)), m_start(std::chrono::steady_clock::now()) {}

CallWatch::~CallWatch() { end(); }

void CallWatch::begin() {
  m_recorder->watch(*this);
  m_watching = true;
}

void CallWatch::end() {
  if (std::exchange(m_watching, false)) m_recorder->unwatch(*this);
}

long long CallWatch::now() const {
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_start)
      .count();
}

void CallWatch::began(const Call& call) {
  const Known* const operation = known(call);
  Open open{};
  RecordedCall& made = open.call;
  made.thread = threadName();
  made.direction =
      call.target == "VornDALImplIF" || (operation && operation->listed.direction == Direction::kDown)
          ? "down"
          : "up";
  made.adapter = operation ? operation->listed.adapter : call.target;
  made.operation = call.operation;
  made.interfaceName = call.target;
  made.slot = call.slot;
  for (const Argument& argument : arguments(operation, call)) open.clear.push_back(argument.spelled);
  made.arguments = open.clear;
  maskArguments(open, call);
  const std::lock_guard<std::mutex> lock(m_mutex);
  made.number = ++m_calls;
  made.threadNumber = m_numbers.emplace(thread(), static_cast<int>(m_numbers.size()) + 1).first->second;
  std::vector<Open>& outer = m_open[thread()];
  made.inside = static_cast<int>(outer.size());
  made.began = now();
  outer.push_back(std::move(open));
}

void CallWatch::returned(const Call& call) {
  const Known* const operation = known(call);
  const std::vector<Argument> after = arguments(operation, call);
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<Open>& outer = m_open[thread()];
  if (outer.empty()) return;
  Open open = std::move(outer.back());
  outer.pop_back();
  if (outer.empty()) m_open.erase(thread());
  open.call.took = now() - open.call.began;
  open.call.result = call.result;
  open.call.threw = call.threw;
  open.call.exception = call.exception;
  std::vector<std::string> texts;
  for (std::size_t i = 0; operation && i < operation->references.size() && i < after.size(); ++i) {
    if (!operation->references[i] || after[i].spelled == open.clear[i]) continue;
    open.call.written.push_back(operation->parameters[i] + "=" + after[i].spelled);
    texts.push_back(after[i].spelled);
  }
  maskAnswer(open, texts);
  take(std::move(open.call));
}

void CallWatch::maskArguments(Open& open, const Call& call) {
  const Known* const operation = known(call);
  const std::vector<Argument> all = arguments(operation, call);
  if (operation && std::count(operation->parameters.begin(), operation->parameters.end(), "samples") > 0)
    return;
  const std::vector<std::string> names = operation ? operation->parameters : std::vector<std::string>();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::string name = i < names.size() ? names[i] : "";
    const bool secret = open.keyed || isSecretName(name);
    std::string& shown = open.call.arguments[i];
    if (all[i].entries && !secret) {
      Entries entries = *all[i].entries;
      for (auto& [key, value] : entries) {
        if (!isSecretName(key) && !isSecretText(value)) continue;
        m_known.add({value});
        value = kMask;
      }
      shown = spell(entries);
    } else {
      const bool telling = !isSecretName(name) && isSecretText(call.arguments[i]);
      if (secret || (telling && !isKey(name))) {
        m_known.add({call.arguments[i]});
        if (all[i].items) m_known.add(*all[i].items);
        shown = kMask;
      }
      open.keyed = open.keyed || (telling && name != "keys");
    }
    if (m_known.in(shown)) shown = kMask;
    open.masked = open.masked || shown != open.clear[i];
  }
}

void CallWatch::maskAnswer(Open& open, const std::vector<std::string>& writtenText) {
  const auto hide = [this](std::string& text, const std::string& value, bool secret) {
    if (value.empty() || (!secret && !isSecretText(value) && !m_known.in(value))) return;
    m_known.add({value});
    text.replace(text.size() - value.size(), std::string::npos, kMask);
  };
  RecordedCall& call = open.call;
  const std::string result = call.result, exception = call.exception;
  hide(call.result, result, open.keyed && result != "true" && result != "false");
  hide(call.exception, exception, open.keyed || open.masked);
  for (std::size_t i = 0; i < call.written.size(); ++i) hide(call.written[i], writtenText[i], open.keyed);
}

}  // namespace vorn_testing::recording
