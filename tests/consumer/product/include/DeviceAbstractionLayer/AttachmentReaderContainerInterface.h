#ifndef PRODUCT_DAL_ATTACHMENTREADERCONTAINERINTERFACE
#define PRODUCT_DAL_ATTACHMENTREADERCONTAINERINTERFACE

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace DeviceAbstractionLayer {

// Where attachment data is pushed.
class AttachmentReaderContainerInterface {
 public:
  explicit AttachmentReaderContainerInterface(std::function<void(std::string)> onClose)
      : m_onClose(std::move(onClose)) {}
  virtual ~AttachmentReaderContainerInterface() {}
  virtual void sendData(void* data, std::size_t size) = 0;
  virtual void notifyEndOfStream() = 0;

 protected:
  std::function<void(std::string)> m_onClose;
};

}  // namespace DeviceAbstractionLayer

#endif
