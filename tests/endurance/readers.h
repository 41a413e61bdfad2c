#pragma once

#include <string>
#include <vector>

/// A text of others that the tools read. `read` ends the program when a promise is broken: the text is read, or refused
/// with the exception, the place and the harmless words that are promised.
struct Reader {
  const char* name;  ///< Also of its folder in tests/endurance/corpus.
  void (*read)(const std::string&);
  const char* shipped;  ///< A folder of the sources with more of its texts; empty for none.
  const char* suffix;   ///< Of those.
  unsigned bent;        ///< How many bent copies a normal test reads.
};

const std::vector<Reader>& readers();
