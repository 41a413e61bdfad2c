#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "VornAttachmentReaderContainerInterfaceImpl.h"
#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

/// Makes attachment reader containers. Needs no host: it comes into being on first use and lives until
/// the library is unloaded.
class VORN_DAL_API VornAttachmentReaderContainerFactory {
 public:
  /// Finds the factory, creating it on first use.
  ///
  /// @returns Never empty.
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornAttachmentReaderContainerFactory> getInstance();

  /// Makes a container, in one allocation with its reference count, and keeps no record of it.
  ///
  /// @param onClose  Kept by the container as a copy; may be empty.
  /// @returns        A new container, the caller's.
  /// @throws         std::bad_alloc, or what copying `onClose` throws.
  /// @unlocked
  std::shared_ptr<VornAttachmentReaderContainerInterfaceImpl> createAttachmentReaderContainer(
      std::function<void(std::string)> onClose);

 private:
  static std::shared_ptr<VornAttachmentReaderContainerFactory> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
