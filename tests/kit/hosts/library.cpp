// The hosts as a library: makes the one that the environment names.

#include <vorn_testing/HostEntry.h>

#include <cstdlib>

#include "Host.h"

std::vector<hosts::Row>& hosts::rows() {
  static auto* const all = new std::vector<Row>;
  return *all;
}

extern "C" __attribute__((visibility("default"))) const hosts::Row* vornKitHosts(std::size_t* count) {
  *count = hosts::rows().size();
  return hosts::rows().data();
}

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() {
  const char* const name = std::getenv("VORN_KIT_HOST");
  for (const hosts::Row& row : hosts::rows())
    if (name && std::string(row.name) == name) return row.make();
  return nullptr;
}

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }

vorn_testing::MediaPlayers* vornMediaPlayers(VornDeviceAbstractionLayer::VornDALImplIF* host) {
  auto* const bringing = dynamic_cast<hosts::WithPlayers*>(host);
  return bringing ? &bringing->players : nullptr;
}
