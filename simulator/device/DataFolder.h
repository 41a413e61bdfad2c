#pragma once

#include <string>

namespace vorn_speaker {

/// The path of a file that ships with the speaker.
std::string shipped(const std::string& name);

/// A folder of this user's for what the speaker keeps.
std::string userStateFolder();

}  // namespace vorn_speaker
