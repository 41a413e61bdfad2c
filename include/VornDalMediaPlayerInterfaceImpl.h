#pragma once

#include <functional>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

/// A media player of the firmware, found by name in the table that VornMediaPlayerFactory is given.
///
/// The firmware derives its players from it and owns them. The library calls Configure() and nothing
/// else; the other slots are the firmware's, here held open.
class VORN_DAL_API VornDalMediaPlayerInterfaceImpl {
 public:
  /// What the assistant client asked for. The two flags are known by their position only.
  struct Settings {
    bool firstFlag;    ///< The first flag of createDalMediaPlayer().
    std::string name;  ///< The name asked for, also when the default player stands in.
    bool secondFlag;   ///< The second flag of createDalMediaPlayer().
  };

  /// Slots 1 and 2.
  virtual ~VornDalMediaPlayerInterfaceImpl() = default;

  /// Reserved: slots that the library does not call.
  virtual void reserved3() {}
  virtual void reserved4() {}
  virtual void reserved5() {}
  virtual void reserved6() {}
  virtual void reserved7() {}
  virtual void reserved8() {}
  virtual void reserved9() {}
  virtual void reserved10() {}
  virtual void reserved11() {}
  virtual void reserved12() {}
  virtual void reserved13() {}
  virtual void reserved14() {}
  virtual void reserved15() {}
  virtual void reserved16() {}
  virtual void reserved17() {}
  virtual void reserved18() {}
  virtual void reserved19() {}
  virtual void reserved20() {}

  /// Slot 21. Prepares the player for a request. What the flags mean and when `callback` is called, with
  /// what text, is the player's choice.
  ///
  /// Both arguments are the player's own copies. An exception reaches the assistant client. Does nothing
  /// unless overridden.
  /// @locked  The factory's m_mutex: do not call VornMediaPlayerFactory from inside.
  virtual void Configure(Settings settings, std::function<void(std::string)> callback) {
    static_cast<void>(settings);
    static_cast<void>(callback);
  }
};

}  // namespace VornDeviceAbstractionLayer
