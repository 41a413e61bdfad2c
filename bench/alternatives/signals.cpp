#include <sigc++/sigc++.h>

#include <boost/signals2/signal.hpp>
#include <memory>

#include "../timing.h"
#include "alternatives.h"

using VornDeviceAbstractionLayer::VornDALImplIF;

void timeSignals(VornDALImplIF& host) {
  const auto sigc = std::make_shared<sigc::signal<bool>>();
  sigc->connect(sigc::mem_fun(host, &VornDALImplIF::isMicrophoneAvailable));
  timed("alternative/libsigc++", [sigc] { benchmark::DoNotOptimize(sigc->emit()); });

  const auto boost = std::make_shared<boost::signals2::signal<bool()>>();
  boost->connect([&host] { return host.isMicrophoneAvailable(); });
  timed("alternative/boost signals2", [boost] { benchmark::DoNotOptimize((*boost)()); });
}
