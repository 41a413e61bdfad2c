// docs/operations.tsv, written by hand, tells the same as the table that the tests drive; and nothing of the
// interfaces is left out.

#include <algorithm>
#include <limits>
#include <map>
#include <sstream>

#include "support/operation_test.h"
#include "support/reference.h"

namespace {

using namespace operations;
using reference::byName;
using reference::Fields;
using reference::split;
using reference::Texts;

/// Whether a line is one of the pattern, in which "{name}" stands for any text that no blank begins.
bool matches(const std::string& pattern, const std::string& line) {
  std::size_t at = 0;
  std::istringstream rest(pattern);
  for (std::string literal; std::getline(rest, literal, '{');
       rest.ignore(std::numeric_limits<std::streamsize>::max(), '}')) {
    const std::size_t found = line.find(literal, at);
    if (found == std::string::npos || (at == 0 && found != 0)) return false;
    at = found + literal.size();
    if (!rest.eof() && line[at] == ' ') return false;
  }
  return pattern.back() == '}' || at == line.size();
}

class Reference : public testing::TestWithParam<Row> {
 protected:
  /// The line of the file; its fields are empty when it has none.
  Fields fields() const {
    const auto found = byName().find(GetParam().name());
    return found == byName().end() ? Fields{} : found->second;
  }
};

TEST_P(Reference, TellsDirectionAndLock) {
  const std::map<Guard, std::string> locks = {{Guard::kUnlocked, "unlocked"},
                                              {Guard::kOneThread, "unlocked"},
                                              {Guard::kMutex, "m_mutex"},
                                              {Guard::kDalMutex, "m_dalMutex"}};
  EXPECT_EQ(fields()["direction"], GetParam().direction == Direction::kDown ? "down" : "up");
  EXPECT_EQ(fields()["lock"], locks.at(GetParam().guard));
}

TEST_P(Reference, TellsWhoseThreadsCall) {
  const std::string side = GetParam().direction == Direction::kDown ? "assistant" : "firmware";
  EXPECT_EQ(fields()["caller"], GetParam().keepsAssistant() ? side + ", one thread" : side);
}

TEST_P(Reference, TellsWhatIsReached) {
  Texts places;
  for (const std::string& call : GetParam().reaches({}, true, true))
    places.push_back(call.substr(0, call.rfind(' ')));
  EXPECT_EQ(split(fields()["reaches"], ", "), places);
}

TEST_P(Reference, TellsTheDefault) {
  const std::map<std::string, std::string> words = {
      {"nothing", ""}, {"empty text", ""}, {"empty map", "{}"}, {"true with empty text", "true"}};
  const std::string told = fields()["default"];
  EXPECT_EQ(words.count(told) ? words.at(told) : told, GetParam().fallback);
}

TEST_P(Reference, TellsTheLines) {
  const Row& row = GetParam();
  if (row.keepsAssistant()) {  // Its lines depend on what went before; their texts and times are told apart.
    EXPECT_EQ(split(fields()["logs"], " ;; ").size(), 3U);
    return;
  }
  const bool always = row.lines == row.lostLines;
  const Texts lines = row.lines.empty() ? row.lostLines : row.lines;
  const std::string told = fields()["logs"];
  if (lines.empty()) {
    EXPECT_EQ(told, "-");
    return;
  }
  const std::string when = always ? "always: " : row.lines.empty() ? "lost: " : "delivered: ";
  ASSERT_EQ(told.substr(0, when.size()), when);
  EXPECT_TRUE(matches(told.substr(when.size()), lines.front())) << told << "\n" << lines.front();
}

INSTANTIATE_TEST_SUITE_P(Table, Reference, testing::ValuesIn(rows()), nameOf);

TEST(TheReference, NamesNoOtherOperationOfTheseAdapters) {
  for (const auto& entry : byName()) {
    const auto& [name, fields] = entry;
    const auto named = [&entry](const auto& known) { return known.name() == entry.first; };
    const auto ours = [&entry](const Adapter& adapter) { return adapter.name == entry.second.at("adapter"); };
    if (fields.at("direction") == "life" || std::none_of(adapters().begin(), adapters().end(), ours))
      continue;
    EXPECT_TRUE(std::any_of(rows().begin(), rows().end(), named)) << name;
  }
}

TEST(TheReference, TellsTheLinesOfTheLifecycle) {
  const auto told = [](const Adapter& adapter, const std::string& operation) {
    const auto found = byName().find(adapter.name + "::" + operation);
    return found == byName().end() ? std::string("-") : found->second.at("logs");
  };
  for (const Adapter& adapter : adapters()) {
    Texts create;
    for (const std::string& line : adapter.createLines) create.push_back("always: " + line);
    for (std::size_t i = 0; i < adapter.constructLines.size(); ++i)
      create.push_back("when it creates: the constructor's line");
    if (create.empty()) create.push_back("-");
    EXPECT_EQ(split(told(adapter, "CreateInstance(VornDALImplIF&)"), " ;; "), create);
    const auto one = [](const Texts& lines) { return lines.empty() ? "-" : "always: " + lines.front(); };
    EXPECT_EQ(told(adapter, adapter.name + "(VornDALImplIF&)"), one(adapter.constructLines));
    EXPECT_EQ(told(adapter, "getInstance()"), one(adapter.getLines));
    EXPECT_EQ(told(adapter, "Shutdown()"), "-");
  }
}

TEST(TheReference, TellsWhoseThreadsCreateFetchAndShutDown) {
  for (const auto& [name, fields] : byName()) {
    if (fields.at("direction") != "life") continue;
    const bool fetches = fields.at("operation") == "getInstance()";
    EXPECT_EQ(fields.at("caller"), fetches ? "any" : "firmware") << name;
  }
}

/// How many rows reach each place: "VornDALImplIF 13".
std::map<std::string, int> places() {
  std::map<std::string, int> counts;
  for (const Row& row : rows())
    for (const std::string& call : row.reaches({}, true, true)) ++counts[call.substr(0, call.rfind(' '))];
  return counts;
}

TEST(TheTable, ReachesEverySlotOfTheHostOnce) {
  for (int slot = 3; slot <= 66; ++slot) {
    const int expected = slot == 33 ? 16 : slot == 12 ? 2 : 1;  // Every command; two invocations.
    EXPECT_EQ(places()["VornDALImplIF " + std::to_string(slot)], expected) << slot;
  }
}

TEST(TheTable, ReachesEverySlotOfTheExternalPlayerOnce) {
  for (int slot = 3; slot <= 18; ++slot)
    EXPECT_EQ(places()["VornEMPAdapterIF " + std::to_string(slot)], 1) << slot;
}

TEST(TheTable, ReachesEveryOperationOfTheAssistantSideOnceAndNothingElse) {
  const std::map<std::string, std::vector<int>> areas = {{"DeviceInfo", {33, 34, 35, 37, 38, 41, 42, 47}},
                                                         {"DeviceCapabilities", {30, 39}},
                                                         {"GUIOutput", {5}},
                                                         {"OOBE", {4, 6, 11}},
                                                         {"AudioIn", {7, 8, 11}},
                                                         {"AppMessaging", {1}},
                                                         {"CommsManager", {1}}};
  std::size_t total = 64 + 16;
  for (const auto& [area, slots] : areas) {
    for (const int slot : slots)
      EXPECT_EQ(places()[area + " " + std::to_string(slot)], 1) << area << " " << slot;
    total += slots.size();
  }
  EXPECT_EQ(places().size(), total);
}

}  // namespace
