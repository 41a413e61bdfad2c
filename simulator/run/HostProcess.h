#pragma once

#include <signal.h>
#include <vorn_testing/HostEntry.h>

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "calls/Crossings.h"

namespace vorn_speaker {

/// Asks the process of the host to tell where it is, and to end.
constexpr int kOverdue = SIGALRM;

/// Does `work`, which loads a host of somebody else, in a process of its own, so that whatever the host does to it, from
/// being loaded to being unloaded, is noticed and told: a crash, an end of the process, no return within `limit` (0 for
/// ever). What the host prints to standard output goes to standard error when `apart`; `work` gets a stream for its own.
/// What the host started ends with it. Call it before any thread is started.
/// @returns  What `work` returned, or kHostFailed.
int inHostProcess(std::chrono::seconds limit, bool apart, const std::function<int(std::ostream&)>& work);

/// A host of the user's, destroyed with its last owner, and the media players that it brings or null.
struct OwnHost {
  std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF> host;
  vorn_testing::MediaPlayers* players = nullptr;
};

/// Loads one; the process above knows meanwhile what is being done, and when it is destroyed.
/// @throws std::runtime_error  Names the library, what is wrong with it, and the remedy.
OwnHost ownHost(const std::string& path);

/// Keeps the open calls where the process above sees them.
class OpenCalls : public Crossings::Listener {
 public:
  void began(const Crossing& crossing) override;
  void ended(const Crossing& crossing) override;
};

/// For signal handlers: what is being done with the host, " while it is loaded"; empty for what is called.
const char* hostPhase();

/// For signal handlers: has the process above tell it when this one has ended, with the names of functions in words.
/// Returns whether there is one.
bool tellAbove(const char* text);

/// For signal handlers: the process above has nothing to tell but that.
void hostTold();

}  // namespace vorn_speaker
