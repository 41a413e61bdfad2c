#include <VornAlexaState.h>
#include <vorn_testing/RecordingHost.h>

#include <iostream>

int main() {
  vorn_testing::RecordingHost host;
  VornDeviceAbstractionLayer::VornAlexaState::CreateInstance(host)->alexaStateChanged("IDLE");
  VornDeviceAbstractionLayer::VornAlexaState::Shutdown();
  std::cout << "host heard: " << host.recorder->signatures().at(0) << "\n";
}
