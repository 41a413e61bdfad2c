#include "vorn_testing/HostChecks.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "checks/Checks.h"
#include "checks/state/Values.h"

namespace vorn_testing {

namespace {

const checks::Checks& all() {
  static const auto* const kAll = [] {
    auto* const made = new checks::Checks;
    checks::addCallChecks(*made);
    checks::addStoreChecks(*made);
    checks::addStoreAnswerChecks(*made);
    checks::addDurabilityChecks(*made);
    checks::addSettingChecks(*made);
    checks::addVolumeChecks(*made);
    checks::addLifeChecks(*made);
    checks::addMediaPlayerChecks(*made);
    checks::addHostChecks(*made);
    checks::addLeftChecks(*made);
    checks::addUpwardChecks(*made);
    checks::addNewsChecks(*made);
    checks::addGetterChecks(*made);
    std::stable_sort(made->begin(), made->end(), [](const checks::Check& left, const checks::Check& right) {
      const auto place = [](const checks::Check& check) {
        const std::string& id = check.shown.id;
        const std::size_t slash = id.rfind('/');
        const auto named = [&](const char* name) { return id.compare(slash, id.npos, name) == 0; };
        // Whether the store opens when its process was killed is seen before one was.
        const bool first = named("/killed") && check.shown.operation == "open";
        const int turn = first ? 0 : named("/answers") ? 1 : check.shown.slot == 1 ? 3 : 2;
        return std::make_pair(turn, id.substr(0, slash));
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

const std::vector<std::string>& hostAreas() { return checks::areas(); }

struct HostCheckRun::State {
  HostMaker maker;
  HostDemands demands;
  checks::Known known;
  checks::Values values;
};

HostCheckRun::HostCheckRun(HostMaker maker, HostDemands demands)
    : m_state(new State{std::move(maker), std::move(demands), {}, {}}) {
  for (const auto* const areas : {&m_state->demands.without, &m_state->demands.required}) {
    for (const std::string& area : *areas) {
      if (std::find(hostAreas().begin(), hostAreas().end(), area) == hostAreas().end())
        throw std::invalid_argument("there is no area " + area + ", see hostAreas()");
    }
  }
  // What the host does not offer is not called either.
  for (const checks::Operation& operation : checks::operations()) {
    if (m_state->demands.without.count(checks::areaOf(operation.name)))
      m_state->known.dead.insert(operation.name);
  }
}

HostVerdict HostCheckRun::run(const HostCheck& check) {
  for (const checks::Check& known : all()) {
    if (known.shown.id != check.id) continue;
    const std::string area = checks::areaOf(check.operation);
    HostVerdict verdict{
        HostVerdict::kNotAsked, "the host is said to be without " + area, true, "", {}, false, false, "", {}};
    if (m_state->demands.without.count(area)) return verdict;
    verdict = checks::runWatched(known, m_state->maker, m_state->demands, m_state->known);
    if (verdict.kind == HostVerdict::kNotAsked && verdict.refused && m_state->demands.required.count(area)) {
      verdict.kind = HostVerdict::kBroken;
      verdict.detail = area + " is required and could not be asked: " + verdict.detail;
    }
    remember(check, verdict);
    return verdict;
  }
  throw std::invalid_argument("there is no check " + check.id + ", see hostChecks()");
}

void HostCheckRun::remember(const HostCheck& check, const HostVerdict& verdict) {
  if (verdict.kind != HostVerdict::kBroken) return;
  m_state->known.broken.insert(check.id);
  const std::string culprit = verdict.detail.substr(0, verdict.detail.find('('));
  const std::string kAnswers = "/answers";
  const bool plainly = check.id.size() > kAnswers.size() &&
                       check.id.compare(check.id.size() - kAnswers.size(), kAnswers.size(), kAnswers) == 0;
  if (plainly) m_state->known.dead.insert(check.operation);
  if (verdict.hung || plainly) {
    for (const checks::Operation& operation : checks::operations()) {
      if (operation.name == culprit) m_state->known.dead.insert(culprit);
    }
  }
}

void HostCheckRun::noteValues() { m_state->values.note(m_state->maker, m_state->demands, m_state->known); }

void HostCheckRun::putValuesBack() {
  m_state->values.putBack(m_state->maker, m_state->demands, m_state->known);
}

HostVerdict runHostCheck(const HostCheck& check, const HostMaker& maker, const HostDemands& demands) {
  return HostCheckRun(maker, demands).run(check);
}

}  // namespace vorn_testing
