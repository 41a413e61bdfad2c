// A team's host as a library: good in parts, and bad in every way that the speaker must tell.

#include <VornDeviceInfo.h>
#include <vorn_testing/HostEntry.h>
#include <vorn_testing/NullHost.h>

#include <clocale>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

class OwnHost : public vorn_testing::NullHost {
 public:
  OwnHost() { std::setlocale(LC_NUMERIC, "comma"); }
  ~OwnHost() override {
    if (m_news.joinable()) m_news.join();
    std::puts("the own host is destroyed");
  }

  int getVolume() override { return 7; }
  std::pair<bool, std::string> onSetRangeValue(double value) override { return {value == 2.5, ""}; }
  std::string getTimezone() override { throw std::runtime_error("no clock"); }
  std::string getDeviceLocale() override { throw 42; }
  bool getMuteStatus() override { std::abort(); }
  bool open() override {
    std::mutex mutex;
    std::unique_lock<std::mutex> lock(mutex);
    std::condition_variable().wait(lock, [] { return false; });
    return true;
  }
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return nullptr; }

  /// Tells of the new locale later, from a thread of its own.
  void changeAlexaLocale(std::string locale) override {
    m_news = std::thread([locale] {
      if (const auto adapter = VornDeviceAbstractionLayer::VornDeviceInfo::getInstance())
        adapter->notifyLocaleChange(locale);
    });
  }

  /// Answers when four callers are inside.
  std::map<std::string, std::string> readKeyValue(const std::string&) override {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (++m_callers == 4) m_all.notify_all();
    m_all.wait(lock, [this] { return m_callers >= 4; });
    return {{"together", std::to_string(m_callers)}};
  }

 private:
  std::thread m_news;
  std::mutex m_mutex;
  std::condition_variable m_all;
  int m_callers = 0;
};

/// Says at once whom it was asked for.
class OwnPlayer : public VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl {
  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    callback("own player for " + settings.name);
  }
};

}  // namespace

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return new OwnHost; }

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }

vorn_testing::MediaPlayers* vornMediaPlayers(VornDeviceAbstractionLayer::VornDALImplIF*) {
  static vorn_testing::MediaPlayers players{{"Radio", std::make_shared<OwnPlayer>()}};
  return &players;
}
