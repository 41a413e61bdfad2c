#pragma once

#include <functional>

#include "../Trial.h"

namespace vorn_testing::checks {

/// What a host says of its volume, mute, locale and settings, to be set again when checks have changed it. Hosts are made
/// in processes of their own, and leave what they said in a file that only these processes have.
class Values {
 public:
  Values();
  ~Values();
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;

  /// Asks a host. What it does not answer is not noted.
  void note(const HostMaker& maker, const HostDemands& demands, const Known& known) const;

  /// Sets on another host what differs from what was noted.
  void putBack(const HostMaker& maker, const HostDemands& demands, const Known& known) const;

 private:
  const int m_file;
};

}  // namespace vorn_testing::checks
