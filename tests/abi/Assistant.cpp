// A libDALIMPL.so of tables: the nineteen operations that the library may call, each in its slot.

#include <memory>

#include "Slots.h"

namespace slots {

std::vector<Seen> seen;

}  // namespace slots

namespace DeviceAbstractionLayer {

using namespace slots;

/// The declarations that the library must agree with: a static function each, by its mangled name.
#define SINGLETON(Class)                         \
  class Class {                                  \
   public:                                       \
    static std::shared_ptr<Class> getInstance(); \
  };                                             \
  std::shared_ptr<Class> Class::getInstance() { return pointer<Class>(fill##Class); }

namespace {

template <class Class>
std::shared_ptr<Class> pointer(void (*fill)(Table&)) {
  static Table table(60);
  fill(table);
  return std::shared_ptr<Class>(reinterpret_cast<Class*>(table.object()), [](Class*) {});
}

void fillDeviceInfo(Table& table) {
  SLOT(33, "notifySystemSettingChanged", void, Text, Text);
  SLOT(34, "notifyLocaleChange", void, Text);
  SLOT(35, "notifyLocaleChange", void, Texts);
  SLOT(37, "notifyNetworkConnectionChanged", void, Text);
  SLOT(38, "notifyMicrophoneAvailabilityChanged", void, Text);
  SLOT(41, "notifyVolumeChanged", void, int);
  SLOT(42, "notifyMuteChanged", void, bool);
  SLOT(47, "notifyHandsfreeStateChanged", void, bool);
}

void fillDeviceCapabilities(Table& table) {
  SLOT(30, "notifyUpdatedAssociation", void, Text, Text);
  SLOT(39, "notifyFriendlyNameChange", void, Text);
}

void fillGUIOutput(Table& table) { SLOT(5, "notifyPlaybackControllerAction", bool, Text); }

void fillOOBE(Table& table) {
  SLOT(4, "notifyOOBEInitiated", void);
  SLOT(6, "notifyOOBECancelled", void);
  SLOT(11, "getAlexaAuthStatus", Text);
}

void fillAudioIn(Table& table) {
  SLOT(7, "notifyAlexaButtonPress", void, Text, Duration);
  SLOT(8, "notifyAlexaButtonReleased", void);
  SLOT(11, "sendAudioData", void, Samples&);
}

void fillAppMessaging(Table& table) { SLOT(1, "SendMessageToxApp", bool, Text, Text, Text); }

void fillCommsManager(Table& table) { SLOT(1, "notifyCallAction", void, int); }

}  // namespace

SINGLETON(DeviceInfo)
SINGLETON(DeviceCapabilities)
SINGLETON(GUIOutput)
SINGLETON(OOBE)
SINGLETON(AudioIn)
SINGLETON(AppMessaging)
SINGLETON(CommsManager)

}  // namespace DeviceAbstractionLayer
