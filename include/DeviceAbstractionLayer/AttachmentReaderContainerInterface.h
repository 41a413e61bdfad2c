#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// A pipe through which the assistant client hands attachment data to whoever plays it.
///
/// The one assistant-side interface that the library implements, as
/// VornAttachmentReaderContainerInterfaceImpl. Slots and the place of its field are fixed.
class VORN_DAL_API AttachmentReaderContainerInterface {
 public:
  /// Slots 1 and 2. Destroys the on-close callback.
  virtual ~AttachmentReaderContainerInterface() = default;

  /// Slot 3. Hands over `size` bytes at `data`, which stay the caller's and are valid during the call only.
  virtual void sendData(void* data, std::size_t size) = 0;

  /// Slot 4. Tells that no more data follows.
  virtual void notifyEndOfStream() = 0;

 protected:
  /// Keeps a copy of `onClose`, which may be empty.
  explicit AttachmentReaderContainerInterface(const std::function<void(std::string)>& onClose)
      : m_onClose(onClose) {}

  /// Given at construction; never called by a container itself.
  std::function<void(std::string)> m_onClose;
};

}  // namespace DeviceAbstractionLayer
