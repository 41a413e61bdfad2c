#include "vorn_testing/AroundHost.h"

namespace vorn_testing::list {

namespace {

using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;

/// The operations of both host interfaces.
struct Slots : OperationVisitor {
  std::vector<Operation> ofHost, ofPlayer;

  Slots() { visitOperations(*this); }

  template <class OfHost, class OfAdapter>
  void down(const Operation& operation, OfHost member, OfAdapter) {
    place(operation, member);
  }

  template <class OfHost>
  void hostOnly(const Operation& operation, OfHost member) {
    place(operation, member);
  }

 private:
  template <class Result, class... Parameters>
  void place(const Operation& operation, Result (VornDALImplIF::*)(Parameters...)) {
    place(operation, ofHost);
  }

  template <class Result, class... Parameters>
  void place(const Operation& operation, Result (VornEMPAdapterIF::*)(Parameters...)) {
    place(operation, ofPlayer);
  }

  static void place(const Operation& operation, std::vector<Operation>& into) {
    const auto slot = static_cast<std::size_t>(operation.slot);
    if (into.size() <= slot) into.resize(slot + 1);
    into[slot] = operation;
  }
};

const Slots& slots() {
  static const Slots* const all = new Slots;  // for calls of whoever outlives this file
  return *all;
}

}  // namespace

const Operation* ofHost() { return slots().ofHost.data(); }

const Operation* ofPlayer() { return slots().ofPlayer.data(); }

}  // namespace vorn_testing::list
