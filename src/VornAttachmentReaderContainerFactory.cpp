#include "VornAttachmentReaderContainerFactory.h"

#include "internal/HotPath.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

std::shared_ptr<VornAttachmentReaderContainerFactory> VornAttachmentReaderContainerFactory::m_instance;
std::mutex VornAttachmentReaderContainerFactory::m_mutex;

// Life: without a host to wait for, the first use creates it.

std::shared_ptr<VornAttachmentReaderContainerFactory> VornAttachmentReaderContainerFactory::getInstance() {
  const auto make = [] {
    return std::shared_ptr<VornAttachmentReaderContainerFactory>(new VornAttachmentReaderContainerFactory);
  };
  return internal::obtain(m_mutex, m_instance, make);
}

// Making containers, unlocked.

std::shared_ptr<VornAttachmentReaderContainerInterfaceImpl>
VornAttachmentReaderContainerFactory::createAttachmentReaderContainer(
    std::function<void(std::string)> onClose) {
  return std::make_shared<VornAttachmentReaderContainerInterfaceImpl>(onClose);
}

// The container.

VornAttachmentReaderContainerInterfaceImpl::VornAttachmentReaderContainerInterfaceImpl(
    std::function<void(std::string)> onClose)
    : AttachmentReaderContainerInterface(onClose) {}

VornAttachmentReaderContainerInterfaceImpl::~VornAttachmentReaderContainerInterfaceImpl() = default;

void VornAttachmentReaderContainerInterfaceImpl::Subscribe(std::function<void(void*, std::size_t)> onData,
                                                           std::function<void()> onEndOfStream) {
  // Copied, then swapped: each old callback dies after its successor is in place.
  m_onData = onData;
  m_onEndOfStream = onEndOfStream;
}

void VornAttachmentReaderContainerInterfaceImpl::Unsubscribe() {
  m_onData = nullptr;
  m_onEndOfStream = nullptr;
}

VORN_NO_STACK_GUARD void VornAttachmentReaderContainerInterfaceImpl::sendData(void* data, std::size_t size) {
  if (m_onData) m_onData(data, size);
}

void VornAttachmentReaderContainerInterfaceImpl::notifyEndOfStream() {
  if (m_onEndOfStream) m_onEndOfStream();
}

std::function<void(std::string)> VornAttachmentReaderContainerInterfaceImpl::GetOnCloseCallbackFunction() {
  return m_onClose;
}

}  // namespace VornDeviceAbstractionLayer
