#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

/// docs/operations.tsv as tests read it.
namespace reference {

using Fields = std::map<std::string, std::string>;
using Texts = std::vector<std::string>;

inline Texts split(const std::string& text, const std::string& separator) {
  Texts parts;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos;
       begin = end + separator.size())
    parts.push_back(text.substr(begin, end - begin));
  parts.push_back(text.substr(begin));
  return parts;
}

/// The lines of the file in order, field by name; "name" is "adapter::operation".
inline const std::vector<Fields>& lines() {
  static const auto all = [] {
    std::vector<Fields> some;
    std::ifstream file(VORN_SOURCE_DIR "/docs/operations.tsv");
    std::string line;
    std::getline(file, line);
    const Texts names = split(line, "\t");
    while (std::getline(file, line)) {
      const Texts values = split(line, "\t");
      Fields fields;
      for (std::size_t i = 0; i < names.size() && i < values.size(); ++i) fields[names[i]] = values[i];
      EXPECT_EQ(values.size(), names.size()) << line;
      fields["name"] = fields["adapter"] + "::" + fields["operation"];
      some.push_back(fields);
    }
    return some;
  }();
  return all;
}

/// The same by name.
inline const std::map<std::string, Fields>& byName() {
  static const auto all = [] {
    std::map<std::string, Fields> some;
    for (const Fields& fields : lines())
      EXPECT_TRUE(some.emplace(fields.at("name"), fields).second) << fields.at("name");
    return some;
  }();
  return all;
}

}  // namespace reference
