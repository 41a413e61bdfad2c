#include "Crossings.h"

#include <pthread.h>

#include <utility>

#include "language/Operations.h"
#include "text/Secrets.h"
#include "text/Spelling.h"

namespace vorn_speaker {

namespace {

thread_local const char* t_name = "main";
thread_local std::vector<Crossing> t_open;
thread_local const Crossing* t_innermost =
    nullptr;  // For signal handlers, which must not be the first to touch t_open.

/// Whether the first argument names the value that the others and the answer hold.
bool isKeyed(const Crossing& crossing) {
  for (const char* operation :
       {"getConfigData", "getSystemSetting", "setSystemSetting", "notifySystemSettingChanged"}) {
    if (crossing.operation == operation) return true;
  }
  return false;
}

void mask(Crossing& crossing) {
  const auto hide = [&](std::size_t index) { crossing.arguments[index] = crossing.spelled[index] = kMask; };
  if (crossing.operation == "login") hide(0);
  if (isKeyed(crossing) && isSecretName(crossing.arguments[0])) {
    for (std::size_t i = 1; i < crossing.arguments.size(); ++i) hide(i);
    if (crossing.operation == "getConfigData" && !crossing.result.empty()) crossing.result = kMask;
    for (std::string& value : crossing.written) value = kMask;
  }
  for (std::string& argument : crossing.arguments) argument = hideSecrets(argument);
  crossing.result = hideSecrets(crossing.result);
  crossing.exception = hideSecrets(crossing.exception);
}

/// The arguments as a scenario holds them; what the table does not know is a text.
std::vector<std::string> spelled(const Operation* operation, const vorn_testing::Call& call, bool secrets) {
  if (operation && operation->spell) return operation->spell(call.addresses, secrets);
  std::vector<std::string> texts;
  for (const std::string& argument : call.arguments) texts.push_back(spell(argument));
  return texts;
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

std::string Crossing::answer() const {
  std::string line = result;
  for (const std::string& value : written) line += (line.empty() ? "" : " ") + value;
  return line;
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

Crossing Crossings::describe(const vorn_testing::Call& call) const {
  Crossing made;
  const Operation* const operation = operationAt(call.target, call.slot);
  made.adapter = operation ? operation->adapter : call.target;
  if (call.operation == "getEMPAdapter") made.adapter = "VornEMPAdapterControl";  // asked before its commands
  made.operation = call.operation;
  made.target = call.target;
  made.slot = call.slot;
  // The assistant side's interfaces, and callbacks that it handed down, are called upward.
  made.down = call.target.compare(0, 4, "Vorn") == 0;
  made.arguments = call.arguments;
  made.result = call.result;
  made.threw = call.threw;
  made.exception = call.exception;
  made.thread = t_name;
  made.began =
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_start);
  made.took = std::chrono::microseconds(0);
  made.depth = static_cast<int>(t_open.size());
  made.spelled = spelled(operation, call, m_secrets);
  if (!m_secrets) mask(made);
  return made;
}

void Crossings::began(const vorn_testing::Call& call) {
  Crossing crossing = describe(call);
  const std::lock_guard<std::mutex> lock(m_mutex);
  crossing.number = ++m_calls;
  t_innermost = nullptr;  // The others may move.
  t_open.push_back(crossing);
  t_innermost = &t_open.back();
  for (Listener* listener : m_listeners) listener->began(crossing);
}

void Crossings::ended(const vorn_testing::Call& call) {
  t_innermost = t_open.size() > 1 ? &t_open[t_open.size() - 2] : nullptr;
  Crossing crossing = std::move(t_open.back());
  t_open.pop_back();
  const auto now = std::chrono::steady_clock::now() - m_start;
  crossing.took = std::chrono::duration_cast<std::chrono::microseconds>(now) - crossing.began;
  crossing.result = call.result;
  crossing.threw = call.threw;
  crossing.exception = call.exception;
  const Operation* const operation = operationAt(call.target, call.slot);
  for (std::size_t i = 0; operation && operation->spell && i < operation->parameters.size(); ++i) {
    if (!operation->parameters[i].reference) continue;
    const std::string after = operation->spell(call.addresses, m_secrets)[i];
    if (after != crossing.spelled[i]) crossing.written.push_back(operation->parameters[i].name + "=" + after);
  }
  if (!m_secrets) mask(crossing);
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (Listener* listener : m_listeners) listener->ended(crossing);
}

}  // namespace vorn_speaker
