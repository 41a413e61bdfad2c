#include "vorn_testing/HostLibrary.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "checks/Trial.h"

namespace vorn_testing {

namespace {

constexpr char kDestroys[] = "vornDestroyHost()";

template <class Function>
void find(Function*& function, void* library, const char* name) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
}

template <class Function>
void find(Function*& function, void* library, const std::string& path, const char* name) {
  find(function, library, name);
  if (!function)
    throw std::runtime_error(path + " does not define " + name + "(); see vorn_testing/HostEntry.h");
}

/// How a library's host ends, and what it brings.
struct Ending {
  void (*destroy)(VornDeviceAbstractionLayer::VornDALImplIF*);
  MediaPlayers* (*ask)(
      VornDeviceAbstractionLayer::VornDALImplIF*);  ///< Null when nobody is to be asked, or was.
  MediaPlayers* players;
  void operator()(VornDeviceAbstractionLayer::VornDALImplIF* host) const { destroy(host); }
};

// An initialiser that throws ends the process, whatever the compiler: the loader is no place to leave by an exception.
// Through a pointer, since dlopen() is declared as if none could come.
void* opened(const std::string& place) noexcept {
  void* (*const volatile open)(const char*, int) = dlopen;
  return open(place.c_str(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

HostLibrary::HostLibrary(const std::string& path) {
  const std::string place = path.find('/') == std::string::npos ? "./" + path : path;
  void* const library = opened(place);
  if (!library) {
    std::string why = dlerror();
    if (why.compare(0, place.size() + 2, place + ": ") == 0) why.erase(0, place.size() + 2);
    throw std::runtime_error(path + " cannot be loaded: " + why +
                             "\nWhat it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.");
  }
  find(m_create, library, path, "vornCreateHost");
  find(m_destroy, library, path, "vornDestroyHost");
  find(m_players, library, "vornMediaPlayers");
}

std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF> HostLibrary::makeHost() const {
  VornDeviceAbstractionLayer::VornDALImplIF* const host = m_create();
  if (!host) return nullptr;
  return {host, Ending{m_destroy, m_players, nullptr}};
}

MediaPlayers* HostLibrary::playersOf(const std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF>& host) {
  Ending* const ending = std::get_deleter<Ending>(host);
  if (!ending) return nullptr;
  if (const auto ask = std::exchange(ending->ask, nullptr)) ending->players = ask(host.get());
  return ending->players;
}

LibraryTrial tryHostLibrary(const std::string& path, std::chrono::milliseconds bound) {
  const auto run = [path](checks::Trial& trial) {
    std::unique_ptr<HostLibrary> library;
    trial.explain("while " + path + " was loaded");
    trial.ask("the library", [&] {
      try {
        library = std::make_unique<HostLibrary>(path);
      } catch (const std::runtime_error& problem) {
        trial.broken(problem.what());
      }
    });
    trial.explain("while it made a host");
    std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF> host;
    trial.ask("vornCreateHost()", [&] { host = library->makeHost(); });
    if (!host) trial.broken("vornCreateHost() answers null");
    trial.ask("vornMediaPlayers()", [&] { HostLibrary::playersOf(host); });
    trial.explain("while it destroyed a host that was never called");
    trial.ask(kDestroys, [&] { host.reset(); });
    trial.explain("while its process ended");
    trial.ask("the library", [] { std::exit(checks::kOrderly); });
  };
  HostDemands demands;
  demands.bound = bound;
  const checks::Check check{HostCheck{"", "", 0, "", ""}, run};
  const HostVerdict verdict = checks::runWatched(check, nullptr, demands, checks::Known());
  if (verdict.kind == HostVerdict::kKept) return {"", true};
  std::string failure = verdict.detail;
  for (const std::string& frame : verdict.stack) failure += "\n    " + frame;
  return {failure, verdict.detail.compare(0, std::strlen(kDestroys), kDestroys) == 0};
}

}  // namespace vorn_testing
