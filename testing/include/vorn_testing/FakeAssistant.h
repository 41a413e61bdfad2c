#pragma once

#include <memory>
#include <string>

#include "Recorder.h"

namespace vorn_testing {

/// The assistant side, for tests: fills the singletons of the stand-in libDALIMPL.so and records every call.
///
/// While a FakeAssistant lives, the seven getInstance() functions return its objects; before and after they
/// return empty pointers. One at a time. Failing, blocking and watching go through recorder->onCall().
/// Objects that a caller keeps (as the audio path does) stay valid and go on recording here.
class __attribute__((visibility("default"))) FakeAssistant {
 public:
  enum Area { kDeviceInfo, kDeviceCapabilities, kGUIOutput, kOOBE, kAudioIn, kAppMessaging, kCommsManager };
  static const int kAreas = 7;

  /// What the three operations with a result answer. Change it while no call runs.
  struct Answers {
    std::string authStatus;       ///< getAlexaAuthStatus(); "AUTHORIZED" at first.
    bool messageAccepted;         ///< SendMessageToxApp(); true at first.
    bool playbackActionAccepted;  ///< notifyPlaybackControllerAction(); true at first.
  };

  /// Makes all seven objects. `recorder` may be shared with other doubles.
  explicit FakeAssistant(std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>());

  /// Takes all objects away.
  ~FakeAssistant();

  FakeAssistant(const FakeAssistant&) = delete;
  FakeAssistant& operator=(const FakeAssistant&) = delete;

  /// Gives the area a new object.
  void create(Area area);

  /// Takes the area's object away; holders of copies keep it.
  void remove(Area area);

  /// How many pointers to the area's object exist besides the singleton's own; 0 when there is none.
  static long references(Area area);

  /// Never empty.
  const std::shared_ptr<Recorder> recorder;

  /// Shared with the objects.
  const std::shared_ptr<Answers> answers;
};

}  // namespace vorn_testing
