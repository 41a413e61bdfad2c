#pragma once

#include <string>
#include <vector>

namespace vorn_testing::checks {

/// The texts of one call for each word that the headers name for the operation: hosts act on these and pass over others.
const std::vector<std::vector<std::string>>& wordsOf(const std::string& operation);

}  // namespace vorn_testing::checks
