// What docs/operations.tsv tells that an operation may throw is what comes out of it when everything that can fail
// in it fails in turn: each allocation, each lock, each call of the other side.

#include <DeviceAbstractionLayer/AppMessaging.h>
#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/GUIOutput.h>
#include <DeviceAbstractionLayer/OOBE.h>
#include <FileLogger.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAttachmentReaderContainerInterfaceImpl.h>
#include <VornDalMediaPlayerInterfaceImpl.h>
#include <VornMediaPlayerFactory.h>
#include <vorn_testing/NullHost.h>

#include <new>
#include <set>
#include <system_error>

#include "support/interposed.h"
#include "support/operation_test.h"
#include "support/reference.h"

// The assistant side, without an allocation or a lock of its own. A program's definitions come before those of the
// libraries that it loads.

namespace {

namespace assistant_side = DeviceAbstractionLayer;
bool g_assistant;

template <class Object>
std::shared_ptr<Object> present(const std::shared_ptr<Object>& object) {
  return g_assistant ? object : nullptr;
}

struct Messaging final : assistant_side::AppMessaging {
  bool SendMessageToxApp(std::string, std::string, std::string) override { return true; }
};

struct Audio final : assistant_side::AudioIn {
  void notifyAlexaButtonPress(std::string, std::chrono::milliseconds) override {}
  void notifyAlexaButtonReleased() override {}
  void sendAudioData(std::vector<short>&) override {}
};

struct Comms final : assistant_side::CommsManager {
  void notifyCallAction(assistant_side::CommsControllerInterface::CallAction) override {}
};

struct Capabilities final : assistant_side::DeviceCapabilities {
  void notifyUpdatedAssociation(std::string, std::string) override {}
  void notifyFriendlyNameChange(std::string) override {}
};

struct Info final : assistant_side::DeviceInfo {
  void notifySystemSettingChanged(std::string, std::string) override {}
  void notifyLocaleChange(std::string) override {}
  void notifyLocaleChange(std::vector<std::string>) override {}
  void notifyNetworkConnectionChanged(std::string) override {}
  void notifyMicrophoneAvailabilityChanged(std::string) override {}
  void notifyVolumeChanged(int) override {}
  void notifyMuteChanged(bool) override {}
  void notifyHandsfreeStateChanged(bool) override {}
};

struct Display final : assistant_side::GUIOutput {
  bool notifyPlaybackControllerAction(std::string) override { return true; }
};

struct Setup final : assistant_side::OOBE {
  void notifyOOBEInitiated() override {}
  void notifyOOBECancelled() override {}
  std::string getAlexaAuthStatus() override { return {}; }
};

const auto g_messaging = std::make_shared<Messaging>();
const auto g_audio = std::make_shared<Audio>();
const auto g_comms = std::make_shared<Comms>();
const auto g_capabilities = std::make_shared<Capabilities>();
const auto g_info = std::make_shared<Info>();
const auto g_display = std::make_shared<Display>();
const auto g_setup = std::make_shared<Setup>();

}  // namespace

namespace DeviceAbstractionLayer {

std::shared_ptr<AppMessaging> AppMessaging::getInstance() { return present<AppMessaging>(g_messaging); }
std::shared_ptr<AudioIn> AudioIn::getInstance() { return present<AudioIn>(g_audio); }
std::shared_ptr<CommsManager> CommsManager::getInstance() { return present<CommsManager>(g_comms); }
std::shared_ptr<DeviceCapabilities> DeviceCapabilities::getInstance() {
  return present<DeviceCapabilities>(g_capabilities);
}
std::shared_ptr<DeviceInfo> DeviceInfo::getInstance() { return present<DeviceInfo>(g_info); }
std::shared_ptr<GUIOutput> GUIOutput::getInstance() { return present<GUIOutput>(g_display); }
std::shared_ptr<OOBE> OOBE::getInstance() { return present<OOBE>(g_setup); }

}  // namespace DeviceAbstractionLayer

namespace {

using namespace VornDeviceAbstractionLayer;
using reference::Fields;
using Words = std::set<std::string>;

/// What a callback or a player throws.
struct Refusal {};

void mayRefuse() {
  if (interposed::point(interposed::kCall)) throw Refusal();
}

/// The work of one call, made ready anew for each failure.
using Ready = std::function<std::function<void()>()>;

/// What comes out when each point fails in turn. Ends with a run in which none did.
Words thrownBy(const Ready& ready, const std::string& caught) {
  Words words;
  for (std::size_t failing = 1;; ++failing) {
    const auto work = ready();
    std::string thrown;
    try {
      interposed::arm(failing);
      work();
      interposed::disarm();
    } catch (const std::bad_alloc&) {
      thrown = "bad_alloc";
    } catch (const std::system_error&) {
      thrown = "system_error";
    } catch (const Refusal&) {
      thrown = caught;
    }
    interposed::disarm();
    if (interposed::failed().empty()) return words;
    if (!thrown.empty()) words.insert(thrown);
  }
}

// The operations of Operations.h.

/// What the other sides throw: that they pass is what operations_throw.cpp shows.
Words ofOtherSides(const operations::Row& row) {
  Words words;
  for (const std::string& place : row.reaches({}, true, true)) {
    const bool host = place.find("VornDALImplIF ") == 0 || place.find("VornEMPAdapterIF ") == 0;
    words.insert(host ? "host" : "assistant");
  }
  return words;
}

Words thrownBy(const operations::Row& row) {
  Words words = ofOtherSides(row);
  for (const bool present : {false, true}) {  // in this order: what the audio path found, it keeps
    vorn_testing::NullHost host;
    const auto object = present ? row.adapter->create(host) : row.adapter->construct(host);
    g_assistant = present;
    words.merge(thrownBy(
        [&] {
          const std::shared_ptr<operations::Invocation> call = row.with(operations::Sample::kHuge);
          call->returned = interposed::disarm;
          return [call, &object] { call->make(object.get()); };
        },
        "nobody"));
    row.adapter->shutdown();
  }
  return words;
}

// Life.

Words thrownBy(const operations::Adapter& adapter, const std::string& operation) {
  vorn_testing::NullHost host;
  const auto ready = [&]() -> std::function<void()> {
    adapter.shutdown();
    if (operation == "getInstance()") return [&] { adapter.get(); };
    if (operation == "Shutdown()") return [&] { adapter.shutdown(); };
    if (operation == "CreateInstance(VornDALImplIF&)") return [&] { adapter.create(host); };
    return [&] { adapter.construct(host); };
  };
  const Words words = thrownBy(ready, "nobody");
  adapter.shutdown();
  return words;
}

// The classes that work on no host.

/// May refuse to be called and to be copied.
struct Callback {
  Callback() = default;
  Callback(const Callback&) { mayRefuse(); }
  template <class... Arguments>
  void operator()(const Arguments&...) const {
    mayRefuse();
  }
};

struct RefusingPlayer : VornDalMediaPlayerInterfaceImpl {
  void Configure(Settings, std::function<void(std::string)>) override { mayRefuse(); }
};

using OnClose = std::function<void(std::string)>;
using Container = VornAttachmentReaderContainerInterfaceImpl;
using Factory = VornMediaPlayerFactory;

std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>& players() {
  static std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>> table = {
      {"DefaultMediaPlayer", std::make_shared<RefusingPlayer>()}};
  return table;
}

std::shared_ptr<Container> subscribed() {
  const auto container = std::make_shared<Container>(OnClose(Callback()));
  container->Subscribe(Callback(), Callback());
  return container;
}

Words thrownByOthers(const std::string& name) {
  const std::map<std::string, Ready> others = {
      {"VornMediaPlayerFactory::CreateInstance", [] { return [] { Factory::CreateInstance(players()); }; }},
      {"VornMediaPlayerFactory::getInstance", [] { return [] { Factory::getInstance(); }; }},
      {"VornMediaPlayerFactory::Shutdown", [] { return [] { Factory::Shutdown(); }; }},
      {"VornMediaPlayerFactory::VornMediaPlayerFactory", [] { return [] { Factory factory(players()); }; }},
      {"VornMediaPlayerFactory::createDalMediaPlayer",
       [] {
         const auto factory = std::make_shared<Factory>(players());
         const auto player = std::make_shared<std::string>(1000, 'x');
         return [=] { factory->createDalMediaPlayer({}, false, std::move(*player), false); };
       }},
      {"VornAttachmentReaderContainerFactory::getInstance",
       [] { return [] { VornAttachmentReaderContainerFactory::getInstance(); }; }},
      {"VornAttachmentReaderContainerFactory::createAttachmentReaderContainer",
       [] {
         const auto factory = VornAttachmentReaderContainerFactory::getInstance();
         const auto onClose = std::make_shared<OnClose>(Callback());
         return [=] { factory->createAttachmentReaderContainer(std::move(*onClose)); };
       }},
      {"VornAttachmentReaderContainerInterfaceImpl::Subscribe",
       [] {
         const auto container = std::make_shared<Container>(OnClose());
         const auto onData = std::make_shared<std::function<void(void*, std::size_t)>>(Callback());
         const auto onEnd = std::make_shared<std::function<void()>>(Callback());
         return [=] { container->Subscribe(std::move(*onData), std::move(*onEnd)); };
       }},
      {"VornAttachmentReaderContainerInterfaceImpl::Unsubscribe",
       [] { return [container = subscribed()] { container->Unsubscribe(); }; }},
      {"VornAttachmentReaderContainerInterfaceImpl::sendData",
       [] { return [container = subscribed()] { container->sendData(nullptr, 0); }; }},
      {"VornAttachmentReaderContainerInterfaceImpl::notifyEndOfStream",
       [] { return [container = subscribed()] { container->notifyEndOfStream(); }; }},
      {"VornAttachmentReaderContainerInterfaceImpl::GetOnCloseCallbackFunction",
       [] { return [container = subscribed()] { container->GetOnCloseCallbackFunction(); }; }},
      {"FileLogger::CreateInstance", [] { return [] { FileLogger::CreateInstance(true); }; }},
      {"FileLogger::getInstance", [] { return [] { FileLogger::getInstance(); }; }},
      {"FileLogger::Shutdown", [] { return [] { FileLogger::Shutdown(); }; }},
      {"FileLogger::logMessage", [] {
         const auto logger = std::make_shared<FileLogger>(true);
         const auto message = std::make_shared<std::string>(1000, 'x');
         return [=] { logger->logMessage(std::move(*message)); };
       }}};
  const auto found = others.find(name.substr(0, name.find('(')));
  if (found == others.end()) return {"no call of it in this test"};
  const bool createsLogger = name.find("FileLogger::") == 0;
  return thrownBy(
      [&] {
        if (createsLogger) FileLogger::Shutdown();
        return found->second();
      },
      name.find("createDalMediaPlayer") != std::string::npos ? "player" : "callback");
}

Words thrownBy(const Fields& line) {
  for (const operations::Row& row : operations::rows())
    if (row.name() == line.at("name")) return thrownBy(row);
  for (const operations::Adapter& adapter : operations::adapters())
    if (adapter.name == line.at("adapter")) return thrownBy(adapter, line.at("operation"));
  return thrownByOthers(line.at("name"));
}

class Throws : public testing::TestWithParam<Fields> {
 protected:
  Throws() { FileLogger::CreateInstance(true); }
  ~Throws() override { FileLogger::Shutdown(); }
};

TEST_P(Throws, WhatTheReferenceTells) {
  const std::string text = GetParam().at("throws");
  const auto parts = reference::split(text, ", ");
  Words told = text == "-" ? Words() : Words(parts.begin(), parts.end());
  Words thrown = thrownBy(GetParam());
  if (!_GLIBCXX_USE_CXX11_ABI) {  // the older texts share memory where the newer allocate, and the reverse
    told.erase("bad_alloc");
    thrown.erase("bad_alloc");
  }
  EXPECT_EQ(thrown, told) << GetParam().at("name");
}

INSTANTIATE_TEST_SUITE_P(Lines, Throws, testing::ValuesIn(reference::lines()));

}  // namespace
