// Each text that the tools read, bent at random: it is read, or refused as promised.
//
// In the normal tests a bounded number of bent copies of the corpus; scripts/fuzz builds the same readers for
// libFuzzer. What either finds goes into tests/endurance/corpus and is read first ever after.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "readers.h"

#if defined(VORN_FUZZ_TARGET)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const Reader& reader : readers())
    if (std::strcmp(reader.name, VORN_FUZZ_TARGET) == 0)
      reader.read({reinterpret_cast<const char*>(data), size});
  return 0;
}

#else

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <vector>

namespace {

/// What stands in the files of a folder, in the order of their names; of files with another suffix nothing.
std::vector<std::string> files(const std::filesystem::path& folder, const std::string& suffix) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.is_regular_file() && entry.path().extension() == suffix) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> contents;
  for (const auto& path : paths) {
    std::ifstream file(path, std::ios::binary);
    contents.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    contents.back().resize(std::min<std::size_t>(contents.back().size(), 20000));
  }
  return contents;
}

/// A few bytes changed, dropped, doubled or taken from elsewhere.
std::string bent(std::string text, std::mt19937& random) {
  const auto below = [&](std::size_t size) {
    return std::uniform_int_distribution<std::size_t>(0, size)(random);
  };
  for (std::size_t times = 1 + below(3); times > 0; --times) {
    const std::size_t at = below(text.size());
    const std::size_t length = std::min(below(12), text.size() - at);
    switch (below(4)) {
      case 0:
        text.insert(at, 1, static_cast<char>(below(255)));
        break;
      case 1:
        text.erase(at, length);
        break;
      case 2:
        text.insert(below(text.size()), text.substr(at, length));
        break;
      case 3:
        if (at < text.size()) text[at] = static_cast<char>(below(255));
        break;
      default:
        text.resize(at);
    }
  }
  return text;
}

class Fuzz : public testing::TestWithParam<Reader> {};

TEST_P(Fuzz, IsReadOrRefusedAsPromised) {
  const std::string root = VORN_SOURCE_DIR;
  std::vector<std::string> corpus = files(root + "/tests/endurance/corpus/" + GetParam().name, "");
  if (*GetParam().shipped) {
    for (std::string& text : files(root + GetParam().shipped, GetParam().suffix))
      corpus.push_back(std::move(text));
  }
  ASSERT_FALSE(corpus.empty());
  const char* const wanted = std::getenv("VORN_FUZZ");
  const unsigned long times = wanted ? std::strtoul(wanted, nullptr, 10) : GetParam().bent;
  std::mt19937 random(1);
  for (const std::string& text : corpus) GetParam().read(text);
  for (unsigned long i = 0; i < times; ++i) GetParam().read(bent(corpus[i % corpus.size()], random));
  std::cout << "fuzz: " << GetParam().name << ", " << corpus.size() << " files, " << times
            << " bent copies\n";
}

INSTANTIATE_TEST_SUITE_P(Readers, Fuzz, testing::ValuesIn(readers()),
                         [](const auto& reader) { return std::string(reader.param.name); });

}  // namespace

#endif
