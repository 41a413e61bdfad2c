// The classes that work on no host, as the table has them: what they reach are callbacks and media players.

#include <FileLogger.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornMediaPlayerFactory.h>

#include <array>

#include "Invocations.h"
#include "Operations.h"

namespace operations {

namespace {

using namespace VornDeviceAbstractionLayer;
using Containers = VornAttachmentReaderContainerFactory;
using Container = VornAttachmentReaderContainerInterfaceImpl;
using Recorder = std::shared_ptr<vorn_testing::Recorder>;

/// A call of whatever `work` calls.
class FreeCall final : public Invocation {
 public:
  explicit FreeCall(std::function<std::string(void*)> work) : m_work(std::move(work)) {}

  void make(void* object) override {
    outcome.result = m_work(object);
    returned();
  }

 private:
  const std::function<std::string(void*)> m_work;
};

std::string rendered(const std::string& value) { return value; }
std::string rendered(const void* value) { return vorn_testing::text(value); }
std::string rendered(std::size_t value) { return std::to_string(value); }

/// A callback that allocates when it is copied and records when it is called.
template <class... Arguments>
auto callback(const Recorder& recorder, const char* name) {
  return [recorder, name, weight = std::array<long, 8>{}](Arguments... arguments) {
    static_cast<void>(weight);
    recorder->run(vorn_testing::makeCall("callback", name, 0, nullptr, rendered(arguments)...), [] {});
  };
}

const Adapter& named(const char* name) {
  for (const Adapter& adapter : otherClasses())
    if (adapter.name == name) return adapter;
  throw std::out_of_range(name);
}

/// `ready` makes the call ready and returns the work itself.
template <class Ready>
Row own(const char* adapter, const char* operation, Guard guard, Ready ready) {
  Row row{};
  row.adapter = &named(adapter);
  row.operation = operation;
  row.direction = Direction::kOwn;
  row.guard = guard;
  row.with = [ready](Sample) { return std::make_unique<FreeCall>(ready()); };
  return row;
}

/// An operation of a container, which has its callbacks already when it is `subscribed`.
template <class Work>
Row ofContainer(const Recorder& recorder, const char* operation, std::vector<std::string> heard,
                bool subscribed, Work work) {
  Row row = own("VornAttachmentReaderContainerFactory", operation, Guard::kUnlocked, [=] {
    const auto made = Containers::getInstance()->createAttachmentReaderContainer(
        callback<std::string>(recorder, "onClose"));
    const std::function<void(void*, std::size_t)> data =
        callback<const void*, std::size_t>(recorder, "onData");
    const std::function<void()> end = callback<>(recorder, "onEnd");
    if (subscribed) made->Subscribe(data, end);
    return [=](void*) -> std::string { return work(*made, data, end); };
  });
  row.heard = std::move(heard);
  return row;
}

}  // namespace

const std::vector<Adapter>& otherClasses() {
  static const std::vector<Adapter> all = {
      {"VornMediaPlayerFactory",
       [](Foundation on) -> std::shared_ptr<void> {
         VornMediaPlayerFactory::CreateInstance(on.players);
         return VornMediaPlayerFactory::getInstance();
       },
       []() -> std::shared_ptr<void> { return VornMediaPlayerFactory::getInstance(); },
       [] { VornMediaPlayerFactory::Shutdown(); },
       [](Foundation on) -> std::shared_ptr<void> {
         return std::make_shared<VornMediaPlayerFactory>(on.players);
       },
       sizeof(VornMediaPlayerFactory),
       false,
       {},
       {},
       {}},
      {"VornAttachmentReaderContainerFactory",
       [](Foundation) -> std::shared_ptr<void> { return Containers::getInstance(); },
       []() -> std::shared_ptr<void> { return Containers::getInstance(); },
       [] {},
       [](Foundation) -> std::shared_ptr<void> { return std::make_shared<Containers>(); },
       sizeof(Containers),
       false,
       {},
       {},
       {}},
      {"FileLogger",
       [](Foundation) -> std::shared_ptr<void> { return FileLogger::CreateInstance(true); },
       []() -> std::shared_ptr<void> { return FileLogger::getInstance(); },
       [] { FileLogger::Shutdown(); },
       [](Foundation) -> std::shared_ptr<void> { return std::make_shared<FileLogger>(false); },
       sizeof(FileLogger),
       false,
       {},
       {},
       {}},
  };
  return all;
}

std::vector<const Adapter*> classes() {
  std::vector<const Adapter*> all;
  for (const std::vector<Adapter>* const some : {&adapters(), &otherClasses()})
    for (const Adapter& adapter : *some) all.push_back(&adapter);
  return all;
}

std::vector<Row> everyRow(Firmware& firmware) {
  const Recorder& recorder = firmware.recorder;
  const std::string& text = erased::kTexts[0];
  std::vector<Row> all = rows();

  Row player = own("VornMediaPlayerFactory", "createDalMediaPlayer", Guard::kMutex, [&firmware, text] {
    const std::function<void(std::string)> configured =
        callback<std::string>(firmware.recorder, "configured");
    return [=, &firmware](void* object) -> std::string {
      const auto found =
          static_cast<VornMediaPlayerFactory*>(object)->createDalMediaPlayer(configured, true, text, false);
      return found == firmware.players.at("DefaultMediaPlayer") ? "object" : "another";
    };
  });
  player.answer = "object";
  // The player calls its callback from inside Configure().
  player.heard = {"VornDalMediaPlayerInterfaceImpl 21 Configure(true, " + text + ", false)",
                  "callback 0 configured(configured)"};
  player.lines = {"VornMediaPlayerFactory::createDalMediaPlayer name=" + text};
  all.push_back(player);

  Row container =
      own("VornAttachmentReaderContainerFactory", "createAttachmentReaderContainer", Guard::kUnlocked, [] {
        return [](void* object) -> std::string {
          return rendered(
              static_cast<Containers*>(object)->createAttachmentReaderContainer([](std::string) {}).get());
        };
      });
  container.answer = "object";
  all.push_back(container);

  all.push_back(ofContainer(recorder, "Subscribe", {"callback 0 onData(null, 3)"}, false,
                            [](Container& made, const auto& data, const auto& end) -> std::string {
                              made.Subscribe(data, end);
                              made.sendData(nullptr, 3);
                              return "";
                            }));
  all.push_back(ofContainer(recorder, "Unsubscribe", {}, true,
                            [](Container& made, const auto&, const auto&) -> std::string {
                              made.Unsubscribe();
                              made.sendData(nullptr, 3);
                              made.notifyEndOfStream();
                              return "";
                            }));
  all.push_back(ofContainer(recorder, "sendData", {"callback 0 onData(object, 7)"}, true,
                            [](Container& made, const auto&, const auto&) -> std::string {
                              char bytes[7];
                              made.sendData(bytes, sizeof bytes);
                              return "";
                            }));
  all.push_back(ofContainer(recorder, "notifyEndOfStream", {"callback 0 onEnd()"}, true,
                            [](Container& made, const auto&, const auto&) -> std::string {
                              made.notifyEndOfStream();
                              return "";
                            }));
  all.push_back(ofContainer(recorder, "GetOnCloseCallbackFunction", {"callback 0 onClose(" + text + ")"},
                            true, [text](Container& made, const auto&, const auto&) -> std::string {
                              made.GetOnCloseCallbackFunction()(text);
                              return "";
                            }));

  Row message = own("FileLogger", "logMessage", Guard::kMutex, [text] {
    return [text](void*) -> std::string {
      FileLogger::getInstance()->logMessage(text);
      return "";
    };
  });
  message.lines = {text};
  all.push_back(message);
  for (Row& row : all)
    if (row.direction == Direction::kOwn) {
      row.fallback = row.answer;
      row.lostLines = row.lines;
    }
  return all;
}

}  // namespace operations
