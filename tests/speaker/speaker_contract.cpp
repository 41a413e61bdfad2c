// The simulated speaker's host, and all that the kit asks of a host.

#include <vorn_testing/HostContract.h>

#include <mutex>
#include <sstream>

#include "device/Attachments.h"
#include "device/SpeakerHost.h"

namespace {

using namespace vorn_speaker;

/// The firmware around the host, as vorn-speaker puts it together.
struct Device {
  std::mutex mutex;
  std::ostringstream canvas;
  Display display{canvas, false};
  Microphone microphone{Microphone::Pace::kFast, [this](std::vector<short>& samples) {
                          adapters.held<VornDeviceAbstractionLayer::VornAudioIn>()->sendAudioData(samples);
                        }};
  SpeakerHost host{DeviceFile::read(VORN_DATA "/device.toml"), "/tmp/speaker-contract.sqlite", microphone,
                   SpeakerHost::Face{[this](const std::function<void(Display&)>& drawing) {
                                       const std::lock_guard<std::mutex> lock(mutex);
                                       drawing(display);
                                     },
                                     [](const std::string&) {}}};
  PlayerTable players;
  Attachments attachments{std::make_shared<vorn_testing::Recorder>(), players};
  Adapters adapters{host, players, attachments};

  Device() {
    microphone.hear(VORN_DATA "/request.wav");
    host.connect(adapters);
    adapters.create();
  }
  ~Device() {
    microphone.stop();
    adapters.shutdown();
  }
};

vorn_testing::HostDemands demands() {
  vorn_testing::HostDemands demands;
  demands.durable = true;
  demands.settings = {{"friendlyName", {"Kitchen", "Bath"}}, {"handsFreeAlwaysOnEnabled", {"true", "false"}}};
  return demands;
}

[[maybe_unused]] const bool kAdded = vorn_testing::addHostContract(
    "SpeakerHost",
    [] {
      const auto device = std::make_shared<Device>();
      return std::shared_ptr<VornDALImplIF>(device, &device->host);
    },
    demands());

}  // namespace
