#pragma once

#include <string>
#include <vector>

namespace vorn_speaker {

/// The lines of a text, which end with a line feed, a carriage return or both; without a byte order mark.
std::vector<std::string> lines(const std::string& text);

/// A text in one line that cannot steer a terminal.
std::string oneLine(const std::string& text);

/// The same, cut to what a message can hold; two quotes for no text at all.
std::string excerpt(const std::string& text);

}  // namespace vorn_speaker
