#pragma once

#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "Crossings.h"

namespace vorn_speaker {

/// Writes every call to a file, one JSON object a line; docs/speaker.md tells the format.
class Recording : public Crossings::Listener {
 public:
  static constexpr int kVersion = 1;

  /// Replaces an earlier file. @throws std::runtime_error  It cannot be written.
  explicit Recording(const std::string& path);

  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override;

  /// Reads a file, in the order in which the calls began. @throws std::runtime_error  Names file, line, reason.
  static std::vector<Crossing> read(const std::string& path);

 private:
  std::ofstream m_file;
};

}  // namespace vorn_speaker
