#include "DeviceFile.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

// Its assertions ask of a text what the lines behind them refuse with words, in a build for debugging too.
#undef NDEBUG
#define TOML_ASSERT(condition) static_cast<void>(0)
#include <toml++/toml.h>

#include "text/Files.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

[[noreturn]] void refuse(const std::string& path, const toml::source_position& where,
                         const std::string& what) {
  std::ostringstream message;
  message << path << ":" << where.line << ":" << where.column << ": " << oneLine(what);
  throw std::runtime_error(message.str());
}

// Far more than a device has to say. What is nested deeper than toml++ can take apart again stays out too.
constexpr std::size_t kLargest = 1 << 20;
constexpr int kMostDots = 32;

/// Refuses what toml++ does not survive: a letter beyond ASCII outside texts and comments, or after a backslash and
/// blanks, and keys of endless parts.
void refuseDeadly(const std::string& path, const std::string& all) {
  toml::source_position here{1, 1};
  std::string quote;  // What ends the text that we are in; a line feed ends a comment.
  int dots = 0;
  const auto beyond = [&](std::size_t at) {
    return at < all.size() && (static_cast<unsigned char>(all[at]) & 0x80U) != 0;
  };
  for (std::size_t at = all.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0; at < all.size(); ++at) {
    const char c = all[at];
    if (c == '\n') {
      if (quote.size() == 1) quote.clear();
      here = {here.line + 1, 1};
      dots = 0;
      continue;
    }
    std::size_t taken = 1;
    if (quote.empty()) {
      if (beyond(at)) refuse(path, here, "letters beyond ASCII stand in quotes only");
      if (c == '.' && ++dots > kMostDots) refuse(path, here, "a key has at most 33 parts");
      if (c == '#') quote = "\n";
      if (c == '"' || c == '\'') quote.assign(taken = all.compare(at, 3, std::string(3, c)) == 0 ? 3 : 1, c);
    } else if (c == '\\' && quote[0] == '"') {
      if (beyond(all.find_first_not_of(" \t\r\n", at + 1)))
        refuse(path, here, "a letter beyond ASCII must not follow a backslash; write it as \\u00e9");
      taken = at + 1 < all.size() && all[at + 1] != '\n' ? 2 : 1;
    } else if (all.compare(at, quote.size(), quote) == 0) {
      taken = quote.size();
      // A text in three quotes may end with one or two of its own.
      while (quote.size() == 3 && taken < 5 && at + taken < all.size() && all[at + taken] == c) ++taken;
      quote.clear();
    }
    at += taken - 1;
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U)
      here.column += static_cast<toml::source_index>(taken);
  }
}

/// Reads the entries of one table, each of them at most once and of its own kind.
class Table {
 public:
  Table(const std::string& path, const toml::table& table) : m_path(path), m_table(table) {}

  void text(const char* key, std::string& into) {
    if (const toml::node* node = entry(key)) {
      if (!node->is_string()) wrong(key, *node, "a text in quotes");
      into = **node->as_string();
    }
  }

  void flag(const char* key, bool& into) {
    if (const toml::node* node = entry(key)) {
      if (!node->is_boolean()) wrong(key, *node, "true or false");
      into = **node->as_boolean();
    }
  }

  void percent(const char* key, int& into) {
    if (const toml::node* node = entry(key)) {
      const auto* number = node->as_integer();
      if (!number || **number < 0 || **number > 100) wrong(key, *node, "a whole number from 0 to 100");
      into = static_cast<int>(**number);
    }
  }

  void texts(const char* key, std::map<std::string, std::string>& into) {
    const toml::node* node = entry(key);
    if (!node) return;
    if (!node->is_table()) wrong(key, *node, "a table of texts");
    for (const auto& [name, value] : *node->as_table()) {
      if (!value.is_string()) wrong(std::string(name.str()), value, "a text in quotes");
      into[std::string(name.str())] = **value.as_string();
    }
  }

  /// Refuses entries that nobody asked for: most of them are misspelt.
  void finish() const {
    for (const auto& [name, value] : m_table) {
      if (m_known.count(std::string(name.str())) > 0) continue;
      std::string known;
      for (const std::string& key : m_known) known += (known.empty() ? "" : ", ") + key;
      refuse(m_path, value.source().begin,
             "'" + std::string(name.str()) + "' is not known here; known are " + known);
    }
  }

 private:
  const toml::node* entry(const char* key) {
    m_known.insert(key);
    return m_table.get(key);
  }

  [[noreturn]] void wrong(const std::string& key, const toml::node& node, const char* expected) const {
    refuse(m_path, node.source().begin, "'" + key + "' must be " + expected);
  }

  const std::string& m_path;
  const toml::table& m_table;
  std::set<std::string> m_known;
};

}  // namespace

DeviceFile DeviceFile::read(const std::string& path) {
  std::string all = readWhole(path, kLargest);
  // As old editors ended lines.
  if (all.find('\n') == std::string::npos) std::replace(all.begin(), all.end(), '\r', '\n');
  refuseDeadly(path, all);
  toml::table root;
  try {
    root = toml::parse(all, path);
  } catch (const toml::parse_error& error) {
    refuse(path, error.source().begin, std::string(error.description()));
  }
  DeviceFile device;
  Table table(path, root);
  table.text("locale", device.locale);
  table.text("timezone", device.timezone);
  table.text("capabilities", device.capabilities);
  table.percent("volume", device.volume);
  table.flag("muted", device.muted);
  table.flag("networkConnected", device.networkConnected);
  table.flag("microphoneAvailable", device.microphoneAvailable);
  table.texts("information", device.information);
  table.texts("config", device.config);
  table.texts("settings", device.settings);
  table.finish();
  return device;
}

}  // namespace vorn_speaker
