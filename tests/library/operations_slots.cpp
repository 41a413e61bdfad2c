// The slots that the library's code calls, told by virtual tables made by hand: each entry throws its number.
// The assistant side's getInstance() functions here take the place of the stand-in's.

#include <DeviceAbstractionLayer/AppMessaging.h>
#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/GUIOutput.h>
#include <DeviceAbstractionLayer/OOBE.h>
#include <VornEMPAdapterIF.h>

#include <optional>
#include <typeinfo>
#include <utility>

#include "support/interposed.h"
#include "support/operation_test.h"

namespace {

using namespace operations;
using namespace VornDeviceAbstractionLayer;

constexpr std::size_t kMegabyte = 1U << 20;
constexpr int kSlots = 70;
constexpr int kGetEMPAdapter = 33;

struct Reached {
  int slot;
  std::size_t copies;  ///< Texts of a megabyte made since the call began.
};

std::optional<interposed::Blocks> g_watch;
bool g_assistant;

// Whatever the operation's arguments and result are: this one leaves by throwing, and the caller of an
// operation destroys the arguments.
template <int Slot>
void reached() {
  throw Reached{Slot, g_watch ? g_watch->live(kMegabyte) : 0};
}

/// An object of which the library sees nothing but the pointer to its virtual table.
class HandMade {
 public:
  explicit HandMade(const std::type_info& type) : HandMade(type, std::make_integer_sequence<int, kSlots>()) {}

  void replace(int slot, void* function) { m_table[slot + 1] = function; }

  template <class Interface>
  Interface& as() {
    return *reinterpret_cast<Interface*>(&m_pointer);
  }

 private:
  template <int... Slot>
  HandMade(const std::type_info& type, std::integer_sequence<int, Slot...>)
      : m_pointer(m_table + 2),
        m_table{nullptr, const_cast<std::type_info*>(&type),
                reinterpret_cast<void*>(static_cast<void (*)()>(reached<Slot + 1>))...} {}

  void* const* m_pointer;
  void* m_table[kSlots + 2];  ///< Offset to the top and type first.
};

HandMade g_host{typeid(VornDALImplIF)};
HandMade g_player{typeid(VornEMPAdapterIF)};

void* player() { return &g_player; }

template <class Area>
std::shared_ptr<Area> handMade() {
  static HandMade object{typeid(Area)};
  if (!g_assistant) return nullptr;
  return std::shared_ptr<Area>(&object.as<Area>(), [](Area*) {});
}

class Slots : public testing::TestWithParam<Row> {
 protected:
  Slots() {
    g_host.replace(kGetEMPAdapter, reinterpret_cast<void*>(player));
    g_assistant = true;
  }
  ~Slots() override { GetParam().adapter->shutdown(); }

  Reached reach(Sample sample) {
    const auto object = GetParam().adapter->create(g_host.as<VornDALImplIF>());
    const auto invocation = GetParam().with(sample);
    Reached seen{};
    g_watch.emplace();
    try {
      invocation->make(object.get());
    } catch (const Reached& reached) {
      seen = reached;
    }
    left = g_watch->live(kMegabyte);
    g_watch.reset();
    given = invocation->outcome;
    return seen;
  }

  Outcome given;
  std::size_t left = 0;  ///< Texts of a megabyte that are still there after the call.
};

TEST_P(Slots, AreTheOnesOfTheTable) { EXPECT_EQ(reach(Sample::kUsual).slot, GetParam().slot); }

TEST_P(Slots, AreReachedWithOneMoreCopyOfEachTextByValue) {
  std::size_t texts = 0;
  const Reached seen = reach(Sample::kHuge);
  for (std::size_t i = 0; i < given.given.size(); ++i)
    if (!given.reference[i]) texts += given.given[i].size() / kMegabyte;
  // Texts of the old ABI share their bytes until one is written to.
  EXPECT_EQ(seen.copies, _GLIBCXX_USE_CXX11_ABI ? texts : 0);
  EXPECT_EQ(left, 0U);
}

INSTANTIATE_TEST_SUITE_P(Table, Slots, testing::ValuesIn(rows()), nameOf);

TEST(TheExternalPlayer, IsAskedForInSlot33) {
  g_host.replace(kGetEMPAdapter, reinterpret_cast<void*>(static_cast<void (*)()>(reached<33>)));
  for (const Row& row : rows()) {
    if (row.target != "VornEMPAdapterIF") continue;
    EXPECT_THROW(row.call(row.adapter->create(g_host.as<VornDALImplIF>()).get()), Reached) << row.name();
  }
  rows().front().adapter->shutdown();
}

TEST(TheTalkButton, ReachesTheHostInSlot12) {
  g_assistant = false;
  for (const Row& row : rows()) {
    if (row.operation != "notifyAlexaButtonPress") continue;
    try {
      row.call(row.adapter->create(g_host.as<VornDALImplIF>()).get());
      ADD_FAILURE() << "returned";
    } catch (const Reached& reached) {
      EXPECT_EQ(reached.slot, 12);
    }
    row.adapter->shutdown();
  }
}

}  // namespace

namespace DeviceAbstractionLayer {

std::shared_ptr<DeviceInfo> DeviceInfo::getInstance() { return handMade<DeviceInfo>(); }
std::shared_ptr<DeviceCapabilities> DeviceCapabilities::getInstance() {
  return handMade<DeviceCapabilities>();
}
std::shared_ptr<GUIOutput> GUIOutput::getInstance() { return handMade<GUIOutput>(); }
std::shared_ptr<OOBE> OOBE::getInstance() { return handMade<OOBE>(); }
std::shared_ptr<AudioIn> AudioIn::getInstance() { return handMade<AudioIn>(); }
std::shared_ptr<AppMessaging> AppMessaging::getInstance() { return handMade<AppMessaging>(); }
std::shared_ptr<CommsManager> CommsManager::getInstance() { return handMade<CommsManager>(); }

}  // namespace DeviceAbstractionLayer
