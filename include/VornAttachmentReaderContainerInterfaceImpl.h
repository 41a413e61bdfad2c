#pragma once

#include <DeviceAbstractionLayer/AttachmentReaderContainerInterface.h>
#include <cstddef>
#include <functional>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

/// An attachment reader container: what the assistant client pushes in reaches the one subscriber.
///
/// Made by VornAttachmentReaderContainerFactory; it lives as long as any pointer to it. Unsubscribed
/// (as it begins) it drops what arrives. It has no lock: subscribe and unsubscribe while no data flows,
/// push from one thread. The order of base and fields is part of the binary contract.
class VORN_DAL_API VornAttachmentReaderContainerInterfaceImpl
    : public DeviceAbstractionLayer::AttachmentReaderContainerInterface {
 public:
  /// Keeps a copy of `onClose`, which may be empty and is never called by the container.
  explicit VornAttachmentReaderContainerInterfaceImpl(std::function<void(std::string)> onClose);

  /// Destroys the end-of-stream callback, then the data callback, then the on-close callback.
  ~VornAttachmentReaderContainerInterfaceImpl() override;

  VornAttachmentReaderContainerInterfaceImpl(const VornAttachmentReaderContainerInterfaceImpl&) = delete;
  VornAttachmentReaderContainerInterfaceImpl& operator=(const VornAttachmentReaderContainerInterfaceImpl&) =
      delete;

  /// Sets both callbacks, in place of an earlier subscriber's. Either may be empty: its signals are
  /// then dropped.
  ///
  /// @throws  What copying a callback throws. The data callback is replaced first.
  /// @onethread
  void Subscribe(std::function<void(void*, std::size_t)> onData, std::function<void()> onEndOfStream);

  /// Destroys and empties both callbacks. The on-close callback stays.
  ///
  /// @onethread
  void Unsubscribe();

  /// Calls the data callback with the caller's own buffer: `size` bytes at `data`, neither copied nor kept.
  /// Without a subscriber the data is dropped.
  ///
  /// @throws  What the callback throws.
  /// @onethread
  void sendData(void* data, std::size_t size) override;

  /// Calls the end-of-stream callback.
  /// Without a subscriber nothing happens.
  ///
  /// @throws  What the callback throws.
  /// @onethread
  void notifyEndOfStream() override;

  /// Hands out a copy of the creator's on-close callback; who calls it, with what text, is the
  /// caller's choice.
  ///
  /// @unlocked
  std::function<void(std::string)> GetOnCloseCallbackFunction();

 private:
  std::function<void(void*, std::size_t)> m_onData;
  std::function<void()> m_onEndOfStream;
};

}  // namespace VornDeviceAbstractionLayer
