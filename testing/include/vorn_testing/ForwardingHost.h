#pragma once

#include "AroundHost.h"

namespace vorn_testing {

/// An external media player that hands every operation on to another, which is borrowed.
class ForwardingPlayer : public AroundPlayer<ForwardingPlayer> {
 public:
  explicit ForwardingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner);

 private:
  friend class AroundPlayer<ForwardingPlayer>;

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation&, const Onward<Interface, Result, Parameters...>& onward,
                typename std::remove_reference<Parameters>::type&... arguments) {
    return onward(arguments...);
  }
};

/// A host that hands every operation on to another, which is borrowed. Override one operation to change, watch
/// or fail it, and leave the rest to the host behind. getEMPAdapter() hands on too.
class ForwardingHost : public AroundHost<ForwardingHost> {
 public:
  explicit ForwardingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner);

 private:
  friend class AroundHost<ForwardingHost>;

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation&, const Onward<Interface, Result, Parameters...>& onward,
                typename std::remove_reference<Parameters>::type&... arguments) {
    return onward(arguments...);
  }
};

extern template class AroundPlayer<ForwardingPlayer>;
extern template class AroundHost<ForwardingHost>;

}  // namespace vorn_testing
