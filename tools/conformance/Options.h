#pragma once

#include <vorn_testing/HostChecks.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorn_conformance {

extern const char kHelp[];

/// Why nothing can be checked: what is wrong, and what to do.
struct Problem : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Options {
  std::string library, junit, json;
  std::string all;  ///< What is asked of the host, in whatever file it is reported.
  std::vector<std::string> only;
  std::size_t shard = 0, shards = 1;
  bool list = false, help = false, version = false, resume = false, strict = false;
  vorn_testing::HostDemands demands;
};

/// @throws Problem
Options parse(int count, char** arguments);

}  // namespace vorn_conformance
