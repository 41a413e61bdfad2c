#include <functional>

#include "../opaque.h"
#include "../timing.h"
#include "alternatives.h"

void timeFunction(VornDeviceAbstractionLayer::VornDALImplIF& host) {
  const std::function<bool()> ask = [&host] { return host.isMicrophoneAvailable(); };
  timed("alternative/std::function", [ask] { benchmark::DoNotOptimize((*opaque(&ask))()); });
}
