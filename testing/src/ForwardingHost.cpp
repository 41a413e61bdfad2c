#include "vorn_testing/ForwardingHost.h"

namespace vorn_testing {

ForwardingPlayer::ForwardingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner)
    : AroundPlayer(inner) {}

ForwardingHost::ForwardingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner) : AroundHost(inner) {}

template class AroundPlayer<ForwardingPlayer>;
template class AroundHost<ForwardingHost>;

}  // namespace vorn_testing
