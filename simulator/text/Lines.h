#pragma once

#include <vorn_testing/Text.h>

#include <string>
#include <vector>

namespace vorn_speaker {

/// The lines of a text, which end with a line feed, a carriage return or both; without a byte order mark.
std::vector<std::string> lines(const std::string& text);

using vorn_testing::oneLine;

/// A text in one line, cut to what a message can hold; two quotes for no text at all.
std::string excerpt(const std::string& text);

}  // namespace vorn_speaker
