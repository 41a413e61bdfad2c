#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "Host.h"

namespace hosts {

inline std::string folder() {
  const char* const given = std::getenv("VORN_KIT_FOLDER");
  return given ? given : "/tmp";
}

/// A store in one file, which is written aside and renamed; every text with its length before it.
struct Filed : Device {
  const std::string path = folder() + "/store";
  Filed() { load(); }

  virtual void load() {
    std::ifstream in(path, std::ios::binary);
    for (std::string key, value; take(in, key) && take(in, value);) store[key] = value;
  }
  virtual bool save() { return replace(); }

  static constexpr std::uint32_t kLongest = 1U << 26;  // what a host of another form wrote is no length
  static bool take(std::istream& in, std::string& text) {
    std::uint32_t size = 0;
    if (!in.read(reinterpret_cast<char*>(&size), sizeof size) || size > kLongest) return false;
    text.resize(size);
    return static_cast<bool>(in.read(&text[0], size));
  }
  static void put(std::ostream& out, const std::string& text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    out.write(reinterpret_cast<const char*>(&size), sizeof size);
    out.write(text.data(), size);
  }
  bool writeTo(const std::string& file) const {
    std::ofstream out(file, std::ios::binary);
    for (const auto& entry : store) {
      put(out, entry.first);
      put(out, entry.second);
    }
    return static_cast<bool>(out.flush());
  }
  bool replace() const { return writeTo(path + "~") && std::rename((path + "~").c_str(), path.c_str()) == 0; }

  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    return save();
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) store.erase(key);
    return save();
  }
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    return save();
  }
};

}  // namespace hosts
