#include "FileLogger.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <locale>

#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::Lock;

namespace {

constexpr char kPath[] = "/tmp/xAppLog.txt";

// Out of line, so that a logger that writes nothing costs one test and not this function's frame.
[[gnu::noinline]] void append(const std::string& message) {
  // Read and not shown: the line says "Time:" without one, and readers of the trace rely on its form.
  static_cast<void>(std::chrono::system_clock::now());

  std::ofstream file;
  file.imbue(std::locale::classic());  // The bytes must not pass through a locale's conversion.
  file.open(kPath, std::ios::out | std::ios::app);
  if (!file.is_open()) return;
  const std::string line = " Time: " + message + "\n";
  file.write(line.data(), static_cast<std::streamsize>(line.size()));
}

}  // namespace

std::shared_ptr<FileLogger> FileLogger::m_instance;
std::mutex FileLogger::m_mutex;

// Life: getInstance() creates too, a logger that writes nothing, so that callers need no test.

std::shared_ptr<FileLogger> FileLogger::CreateInstance(bool enable) {
  const Lock lock(m_mutex);
  if (!m_instance) {
    try {
      m_instance = std::shared_ptr<FileLogger>(new FileLogger(enable));
    } catch (...) {
      // A trace that cannot be had must not stop the firmware.
      std::cerr << "FileLogger initialization failed due to an exception." << std::endl;
    }
  }
  return m_instance;
}

std::shared_ptr<FileLogger> FileLogger::getInstance() {
  const auto make = [] { return std::shared_ptr<FileLogger>(new FileLogger(false)); };
  return internal::obtain(m_mutex, m_instance, make);
}

void FileLogger::Shutdown() { internal::drop(m_mutex, m_instance); }

FileLogger::FileLogger(bool enable) : m_enabled(enable) {}

// Writing, locked: the mutex keeps lines whole.

void FileLogger::logMessage(std::string message) {
  if (!m_enabled) return;
  const Lock lock(m_mutex);
  append(message);
}

}  // namespace VornDeviceAbstractionLayer
