#include "vorn_testing/HostChecks.h"

#include <algorithm>
#include <stdexcept>

#include "checks/Checks.h"

namespace vorn_testing {

namespace {

const checks::Checks& all() {
  static const auto* const kAll = [] {
    auto* const made = new checks::Checks;
    checks::addCallChecks(*made);
    checks::addStoreChecks(*made);
    checks::addSettingChecks(*made);
    checks::addLifeChecks(*made);
    std::stable_sort(made->begin(), made->end(), [](const checks::Check& left, const checks::Check& right) {
      const auto place = [](const checks::Check& check) {
        return check.shown.id.substr(0, check.shown.id.rfind('/'));
      };
      return place(left) < place(right);
    });
    return made;
  }();
  return *kAll;
}

}  // namespace

const std::vector<HostCheck>& hostChecks() {
  static const auto* const kShown = [] {
    auto* const shown = new std::vector<HostCheck>;
    for (const checks::Check& check : all()) shown->push_back(check.shown);
    return shown;
  }();
  return *kShown;
}

HostVerdict runHostCheck(const HostCheck& check, const HostMaker& maker, const HostDemands& demands) {
  for (const checks::Check& known : all()) {
    if (known.shown.id == check.id) return checks::runWatched(known, maker, demands);
  }
  throw std::invalid_argument("there is no check " + check.id + ", see hostChecks()");
}

}  // namespace vorn_testing
