#include <VornDeviceInfo.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/NullHost.h>

int main() {
  vorn_testing::NullHost host;
  vorn_testing::FakeAssistant assistant;
  VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(host)->notifyVolumeChanged(40);
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
  return assistant.recorder->count("notifyVolumeChanged") == 1 ? 0 : 1;
}
