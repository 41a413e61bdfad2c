#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Output.h"

namespace vorn_capture {

/// A file of sound, which nothing is written over.
class WaveFile {
 public:
  bool create(const std::string& path);
  void add(const char* samples, std::size_t bytes);
  void release() { m_file.release(); }

  /// @returns  Whether all of it is there; errno says why not.
  bool finish();

 private:
  bool head();

  OwnFile m_file;
  std::uint32_t m_bytes = 0;
  int m_error = 0;
  bool m_changed = false;
};

}  // namespace vorn_capture
