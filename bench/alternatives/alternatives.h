#pragma once

#include <VornDALImplIF.h>

#include <memory>
#include <string>

#include "Peer.h"

// What a team would otherwise reach for, each carrying the same call, isMicrophoneAvailable(), to the same host and its
// answer back. Each registers its benchmarks under alternative/.

constexpr char kOperation[] = "isMicrophoneAvailable";

void timeFunction(VornDeviceAbstractionLayer::VornDALImplIF& host);
void timeSignals(VornDeviceAbstractionLayer::VornDALImplIF& host);
void timeWorker(VornDeviceAbstractionLayer::VornDALImplIF& host);

/// A Unix socket to the host in another process: JSON there, JSON back. Made before there is a second thread.
class Socket {
 public:
  explicit Socket(VornDeviceAbstractionLayer::VornDALImplIF& host);
  ~Socket();
  void time() const;

 private:
  int m_ends[2];
  Peer m_host;
};

/// D-Bus to the host in another process, over a bus of its own. Made before there is a second thread.
class Bus {
 public:
  explicit Bus(VornDeviceAbstractionLayer::VornDALImplIF& host);
  ~Bus();
  void time() const;

 private:
  std::string m_folder;   ///< Holds the bus's configuration and its socket.
  std::string m_address;  ///< Empty when there is no bus.
  std::string m_ready;    ///< Empty when the host is not on it.
  std::unique_ptr<Peer> m_daemon;
  std::unique_ptr<Peer> m_host;
};
