#include "Crossings.h"

#include <pthread.h>

#include <utility>

#include "Operations.h"
#include "Secrets.h"

namespace vorn_speaker {

namespace {

thread_local const char* t_name = "main";
thread_local std::vector<Crossing> t_open;

void mask(Crossing& crossing) {
  if (crossing.operation == "login" && !crossing.arguments.empty()) crossing.arguments[0] = kMask;
  const bool keyed = crossing.operation == "getConfigData" || crossing.operation == "getSystemSetting" ||
                     crossing.operation == "setSystemSetting" || crossing.operation == "readKeyValue" ||
                     crossing.operation == "notifySystemSettingChanged";
  if (keyed && !crossing.arguments.empty() && isSecretName(crossing.arguments[0])) {
    for (std::size_t i = 1; i < crossing.arguments.size(); ++i) crossing.arguments[i] = kMask;
    if (crossing.operation == "getConfigData" && !crossing.result.empty()) crossing.result = kMask;
  }
  for (std::string& argument : crossing.arguments) argument = hideSecrets(argument);
  crossing.result = hideSecrets(crossing.result);
}

}  // namespace

void nameThread(const char* name) {
  t_name = name;
  pthread_setname_np(pthread_self(), name);
}

const char* threadName() { return t_name; }

std::string Crossing::signature() const {
  std::string line = operation + "(";
  for (std::size_t i = 0; i < arguments.size(); ++i) line += (i ? ", " : "") + arguments[i];
  return line + ")";
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
  made.adapter = adapterOf(call.target, call.slot);
  const bool callback = made.adapter.empty();  // what the firmware calls back on, named as it is
  if (callback) made.adapter = call.target;
  made.operation = call.operation;
  made.target = call.target;
  made.slot = call.slot;
  // The assistant side's interfaces, and callbacks that it handed down, are called upward.
  made.down = call.target.compare(0, 4, "Vorn") == 0;
  made.arguments = call.arguments;
  made.result = call.result;
  made.threw = call.threw;
  made.thread = t_name;
  made.began =
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_start);
  made.took = std::chrono::microseconds(0);
  made.depth = static_cast<int>(t_open.size());
  if (!m_secrets) mask(made);
  return made;
}

void Crossings::began(const vorn_testing::Call& call) {
  const Crossing crossing = describe(call);
  t_open.push_back(crossing);
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (Listener* listener : m_listeners) listener->began(crossing);
}

void Crossings::ended(const vorn_testing::Call& call) {
  const Crossing opened = t_open.back();
  t_open.pop_back();
  Crossing crossing = describe(call);
  crossing.took = crossing.began - opened.began;
  crossing.began = opened.began;
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (Listener* listener : m_listeners) listener->ended(crossing);
}

}  // namespace vorn_speaker
