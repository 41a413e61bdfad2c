#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// Voice input: microphone control down, the talk button and the samples up.
///
/// Down  Each operation is one call of the VornDALImplIF operation of the same name.
/// Up    The talk button is one call of DeviceAbstractionLayer::AudioIn, fetched anew. The samples go to
///       the object that the first successful sendAudioData() found, for the life of the process.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornAudioIn {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @logs   The constructor's signature, when it creates.
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornAudioIn> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornAudioIn> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornAudioIn(VornDALImplIF& host);

  VornAudioIn(const VornAudioIn&) = delete;
  VornAudioIn& operator=(const VornAudioIn&) = delete;

  /// Asks the host to push microphone samples through sendAudioData().
  ///
  /// @returns    true when the host has started.
  /// @ifnotlive  false
  /// @unlocked
  bool startStreamingAudioData();

  /// Asks the host to stop pushing samples.
  ///
  /// @ifnotlive  Nothing.
  /// @unlocked
  void stopStreamingAudioData();

  /// Asks whether a microphone can be used.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false
  /// @unlocked
  bool isMicrophoneAvailable();

  /// Tells the host what started a request, any text; the usual ones stand in InvocationTypes.h.
  ///
  /// @ifnotlive  Nothing, and no line.
  /// @logs       The signature and " calling xApp API", before the host is called.
  /// @unlocked
  void notifyAlexaInvocationDetected(std::string invocationType);

  /// Tells the host whether hands-free listening shall be on.
  ///
  /// @ifnotlive  Nothing, and no line.
  /// @logs       The signature and " calling xApp API", before the host is called.
  /// @unlocked
  void setAlexaHandsFreeState(bool enabled);

  /// Reports a press of the talk button: to the assistant side as given, then to the host as the
  /// invocation "AlexaButtonPress", on this thread and before it returns. Each half works without the other. Hold
  /// no lock that your notifyAlexaInvocationDetected() takes.
  ///
  /// @ifnotlive  The host is not called.
  /// @ifabsent   The assistant side is not called, and no line.
  /// @logs       The signature and " calling xApp API", before the assistant side is called.
  /// @unlocked
  void notifyAlexaButtonPress(std::string type, std::chrono::milliseconds duration);

  /// Reports the release of the talk button.
  ///
  /// @ifabsent   Nothing, and no line.
  /// @logs       The signature and " calling xApp API", before the assistant side is called.
  /// @unlocked
  void notifyAlexaButtonReleased();

  /// Pushes one buffer of samples (signed 16 bit; rate and channels are settled with the assistant side).
  ///
  /// The hot path: no copy, no lock, no allocation. Call it from one thread, which ends before the program does,
  /// and hold no lock of your own meanwhile. The assistant-side object is fetched by the first call that finds
  /// one and kept until the program ends, also when the assistant side makes a new one. Works without an
  /// instance of this class.
  ///
  /// @ifabsent   The buffer is dropped; the next call looks again.
  /// @logs       Each search for the assistant side, buffers 1 to 5 and every 10000th. Calls count as buffers from
  ///             1, delivered or not unless they throw; after 2147483647 the number goes on at -2147483648.
  /// @onethread
  void sendAudioData(std::vector<short>& samples);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornAudioIn> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
