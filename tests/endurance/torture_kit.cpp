// The kit's doubles, with each thing that can fail in them failing in turn.

#include <array>
#include <functional>
#include <optional>

#include "torture.h"

namespace {

using namespace torture;

class TorturedKit : public Torture {
 protected:
  struct Use {
    std::function<void()> use;
    void operator()() { use(); }
  };

  void torture(
      std::function<void()> use, std::function<void()> settle = [] {}) {
    use();
    settle();
    long living = 0;
    tryEveryPoint(
        [&] {
          settle();
          living = interposed::living();
          return std::make_unique<Use>(Use{use});
        },
        [&](std::unique_ptr<Use> used, End end) {
          EXPECT_EQ(end, expected());
          used.reset();
          settle();
          EXPECT_EQ(interposed::living(), living) << "leaked";
          use();
          settle();
        });
  }

  Firmware m_firmware;
};

TEST_F(TorturedKit, RecordsAndForgetsWithoutLosingALockOrAByte) {
  m_firmware.host.setAnimation({"a name that has to be copied", "and another one"});
  const std::shared_ptr<vorn_testing::Recorder> recorder = m_firmware.recorder;
  torture([&] { recorder->calls(); });
  torture([&] { recorder->signatures(); });
  torture([&] { recorder->count("the operation that nobody calls"); });
  torture([&] { recorder->clear(); });
  torture(
      [&] {
        recorder->onReturn([weight = std::array<long, 8>{}](const vorn_testing::Call&) { (void)weight; });
      },
      [&] { recorder->onReturn(nullptr); });
}

TEST_F(TorturedKit, TheAssistantComesAndGoesWhole) {
  std::optional<vorn_testing::FakeAssistant> made;
  torture([&] { made.emplace(); },
          [&] {
            made.reset();
            vorn_testing::FakeAssistant();  // Takes away what could not be taken without a lock.
          });
  vorn_testing::FakeAssistant assistant(m_firmware.recorder);
  for (int area = 0; area < vorn_testing::FakeAssistant::kAreas; ++area)
    torture([&] { assistant.create(static_cast<vorn_testing::FakeAssistant::Area>(area)); });
}

}  // namespace
