#include "Crossings.h"

#include <pthread.h>

#include <atomic>
#include <utility>

#include "text/Lines.h"
#include "text/Spelling.h"

namespace vorn_speaker {

namespace {

thread_local const char* t_name = "main";
/// A call that has arrived.
struct Open {
  Crossing crossing;
  std::chrono::microseconds arrived;
};
thread_local std::vector<Open> t_open;
thread_local Asked* t_asked = nullptr;
thread_local const Crossing* t_innermost =
    nullptr;  // For signal handlers, which must not be the first to touch t_open.

/// The calling thread's, given at its first call. The system gives its own number again when the thread has ended.
int threadNumber() {
  static std::atomic<int> threads{0};
  thread_local const int number = ++threads;
  return number;
}

/// The arguments as a scenario holds them; what the table does not know is a text.
std::vector<std::string> spelled(const Operation* operation, const vorn_testing::Call& call) {
  if (operation && operation->spell) return operation->spell(call.addresses);
  std::vector<std::string> texts;
  for (const std::string& argument : call.arguments) texts.push_back(spell(argument));
  return texts;
}

bool isDown(const Operation* operation, const vorn_testing::Call& call) {
  // What stands in no table: the external player that is asked for, and callbacks that the assistant side handed down.
  return operation ? operation->caller == Caller::kAssistant : call.target == kHostInterface;
}

std::size_t samplesOf(const vorn_testing::Call& call) {
  if (call.target != "AudioIn" || call.operation != "sendAudioData") return 0;
  return static_cast<const std::vector<short>*>(call.addresses.at(0))->size();
}

/// What was written, or what is masked in its place when a recording spells it in no way that can be read.
std::string written(const std::string& spelled) {
  try {
    const std::vector<Token> values = split(spelled);
    if (values.size() == 1) return values[0].text;
  } catch (const Unreadable&) {
  }
  return kMask;
}

}  // namespace

void nameThread(const char* name) {
  t_name = name;
  pthread_setname_np(pthread_self(), name);
}

const char* threadName() { return t_name; }

const Crossing* openCall() { return t_innermost; }

std::string Crossing::signature() const {
  std::string line = operation + "(";
  for (std::size_t i = 0; i < arguments.size(); ++i) line += (i ? ", " : "") + arguments[i];
  return line + ")";
}

std::string Crossing::statement() const {
  std::string line = fullName();
  for (const std::string& argument : spelled) line += " " + oneLine(argument);
  return line;
}

std::string Crossing::outcome() const {
  if (threw) return "threw " + exception;
  const std::string text = answer();
  return text.empty() ? "no result" : text;
}

std::string Crossing::answer() const {
  std::string line = result;
  for (const std::string& value : written) line += (line.empty() ? "" : " ") + value;
  return line;
}

void Masker::maskArguments(Crossing& crossing) {
  if (crossing.samples > 0) return;
  const Operation* const operation = operationAt(crossing.target, crossing.slot);
  std::vector<Token> clear;
  for (const std::string& argument : crossing.spelled) clear.push_back(split(argument).at(0));
  const Masked shown = masked(operation ? parameterNames(*operation) : std::vector<std::string>(), clear);
  m_known.add(shown.secrets);
  crossing.secret = shown.answer;
  for (std::size_t i = 0; i < clear.size(); ++i) {
    const Token& token = shown.arguments[i];
    const bool known = isKnown(token.text);
    if (token.text == clear[i].text && !known) continue;
    crossing.masked = true;
    crossing.arguments[i] = known ? kMask : token.text;
    crossing.spelled[i] = known ? kMask : spell(token);
  }
}

void Masker::maskAnswer(Crossing& crossing) {
  const bool keyed = std::exchange(crossing.secret, false);  // so far: whether what is answered is one
  const auto hides = [&](const std::string& text, bool secret) {
    if (text.empty() || (!secret && !isSecret(text))) return false;
    m_known.add({text});
    return crossing.secret = true;
  };
  const bool flag = crossing.result == "true" || crossing.result == "false";
  if (hides(crossing.result, keyed && !flag)) crossing.result = kMask;
  if (hides(crossing.exception, keyed || crossing.masked)) crossing.exception = kMask;
  for (std::string& entry : crossing.written) {
    const std::size_t value = entry.find('=') + 1;
    if (hides(written(entry.substr(value)), keyed)) entry.replace(value, std::string::npos, kMask);
  }
}

Crossings::Crossings(std::shared_ptr<vorn_testing::Recorder> recorder, bool secrets)
    : m_recorder(std::move(recorder)), m_secrets(secrets), m_start(std::chrono::steady_clock::now()) {
  m_recorder->onCall([this](const vorn_testing::Call& call) { began(call); });
  m_recorder->onReturn([this](const vorn_testing::Call& call) { ended(call); });
}

Crossings::~Crossings() {
  m_recorder->onCall(nullptr);
  m_recorder->onReturn(nullptr);
}

Crossings::Asking::Asking(Crossings& crossings, const std::string& operation)
    : m_crossings(crossings), m_asked(crossings.m_asked.end()) {
  const Operation* const known = operationNamed(operation);
  if (!known || known->guard != Guard::kMutex) return;
  const std::lock_guard<std::mutex> lock(crossings.m_mutex);
  m_asked = crossings.m_asked.insert(m_asked, {operation, t_name, crossings.now(), std::nullopt});
  t_asked = &*m_asked;
}

Crossings::Asking::~Asking() {
  if (m_asked == m_crossings.m_asked.end()) return;
  t_asked = nullptr;
  const std::lock_guard<std::mutex> lock(m_crossings.m_mutex);
  m_crossings.m_asked.erase(m_asked);
}

std::vector<Asked> Crossings::waiting() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<Asked> all;
  std::copy_if(m_asked.begin(), m_asked.end(), std::back_inserter(all),
               [](const Asked& asked) { return !asked.waited; });
  return all;
}

std::chrono::microseconds Crossings::now() const {
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_start);
}

Crossing Crossings::describe(const vorn_testing::Call& call) {
  Crossing made{};
  const Operation* const operation = operationAt(call.target, call.slot);
  made.adapter = operation ? operation->adapter : call.target;
  if (call.operation == "getEMPAdapter") made.adapter = "VornEMPAdapterControl";  // asked before its commands
  made.operation = call.operation;
  made.target = call.target;
  made.slot = call.slot;
  made.direction = isDown(operation, call) ? Direction::kDown : Direction::kUp;
  made.samples = samplesOf(call);
  made.arguments = call.arguments;
  made.thread = t_name;
  made.depth = static_cast<int>(t_open.size());
  made.clear.spelled = made.spelled = spelled(operation, call);
  if (!m_secrets) m_masker.maskArguments(made);
  return made;
}

/// What is known of how long it waited for its adapter's lock; with that, when it began.
void Crossings::arrived(Crossing& crossing, std::chrono::microseconds now) {
  crossing.began = now;
  const Operation* const operation = operationAt(crossing.target, crossing.slot);
  if (operation && (operation->guard == Guard::kUnlocked || operation->guard == Guard::kOneThread))
    crossing.waited = std::chrono::microseconds(0);
  if (!t_asked) return;
  if (!t_asked->waited) t_asked->waited = now - t_asked->began;
  if (t_asked->operation != crossing.asked() || crossing.depth > 0) return;
  crossing.waited = t_asked->waited;
  crossing.began = t_asked->began;
}

void Crossings::began(const vorn_testing::Call& call) {
  const std::chrono::microseconds now = this->now();
  Crossing crossing = describe(call);
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    crossing.number = ++m_calls;
    crossing.threadNumber = threadNumber();
    arrived(crossing, now);
    t_innermost = nullptr;  // The others may move.
    t_open.push_back({crossing, now});
    t_innermost = &t_open.back().crossing;
    for (Listener* listener : m_listeners) listener->began(crossing);
  }
  if (m_disturbance) m_disturbance(crossing);
}

void Crossings::ended(const vorn_testing::Call& call) {
  t_innermost = t_open.size() > 1 ? &t_open[t_open.size() - 2].crossing : nullptr;
  const std::chrono::microseconds since = t_open.back().arrived, now = this->now();
  Crossing crossing = std::move(t_open.back().crossing);
  t_open.pop_back();
  crossing.took = now - crossing.began;
  crossing.host = now - since;  // the doubles stand where the other side begins
  crossing.reached = true;
  crossing.result = call.result;
  crossing.threw = call.threw;
  crossing.exception = call.exception;
  const Operation* const operation = operationAt(call.target, call.slot);
  for (std::size_t i = 0; operation && operation->spell && i < operation->parameters.size(); ++i) {
    if (!operation->parameters[i].reference) continue;
    const std::string after = operation->spell(call.addresses)[i];
    if (after != crossing.clear.spelled[i])
      crossing.written.push_back(operation->parameters[i].name + "=" + after);
  }
  crossing.clear.answer = crossing.answer();
  crossing.clear.exception = crossing.exception;
  if (!m_secrets) m_masker.maskAnswer(crossing);
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (Listener* listener : m_listeners) listener->ended(crossing);
}

}  // namespace vorn_speaker
