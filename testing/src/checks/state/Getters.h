#pragma once

#include <functional>
#include <string>
#include <vector>

#include "../Trial.h"

namespace vorn_testing::checks {

/// A question, and the answer put into a text.
struct Getter {
  std::string shown;
  std::function<std::string(Host&)> ask;
};

std::string ask(Trial& trial, const Getter& getter);

/// What a device is, and not what it does at the moment.
std::vector<Getter> facts(const HostDemands& demands);

/// Every question that there is.
std::vector<Getter> questions(const HostDemands& demands);

/// Something that can be set: to values that were seen to be answered then.
struct Settable {
  Getter getter;
  struct To {
    std::string shown, answered;
    std::function<bool(Host&)> set;
  };
  std::vector<To> values;
};

/// Volume, mute and settings, as far as they can be set; ends the check when nothing can.
std::vector<Settable> settables(Trial& trial);

/// Sets it; answers whether the host accepts.
bool accepts(Trial& trial, const Settable::To& to);

/// Whether it is answered, a moment later at last.
bool becomes(Trial& trial, const Settable& what, const std::string& wanted);

}  // namespace vorn_testing::checks
