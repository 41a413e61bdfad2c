#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>

/// Makes the locale "comma", whose numbers have a decimal comma, for this program and those that it starts. False where
/// the package locales is not installed.
inline bool makeCommaLocale() {
  std::filesystem::create_directories("/tmp/locales");
  std::ofstream("/tmp/locales/source")
      << "LC_CTYPE\ncopy \"POSIX\"\nEND LC_CTYPE\nLC_COLLATE\ncopy \"POSIX\"\n"
         "END LC_COLLATE\nLC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
         "grouping 3;3\nEND LC_NUMERIC\n";
  setenv("LOCPATH", "/tmp/locales", 1);
  // It complains of the categories that nobody needs here, and writes the locale.
  const int status =
      std::system("localedef -c -i /tmp/locales/source -f ANSI_X3.4-1968 /tmp/locales/comma 2>/dev/null");
  return status != -1 && std::filesystem::exists("/tmp/locales/comma/LC_NUMERIC");
}
