#pragma once

#include "../Operations.h"

namespace vorn_testing::checks {

/// A call of a load: which operation, and with what.
struct Round {
  const Operation* operation;
  Prepared prepared;
};

/// Calls of each: those of a good day, of a load, and the words of the headers.
std::vector<Round> rounds(const std::vector<const Operation*>& which);

std::vector<const Operation*> everything();

/// Makes the call as a device sees it; one that is known to fail is passed over.
void make(Trial& trial, const Round& round);

/// All adapters, as firmware creates them: what the host sends upward arrives, and what it asks is answered.
void createAdapters(Host& host);
/// As firmware does it before the host goes.
void shutDownAdapters();

/// Calls that touch the same memory without a common mutex are made to be there at once.
void races(Trial& trial);

/// Functions of the C library that keep something in static memory are called one at a time.
void staticPlaces(Trial& trial);

/// Told when one is called.
void noteStaticPlace(const char* function);

/// The same as races() of the first calls of a host.
void firstCalls(Trial& trial);

}  // namespace vorn_testing::checks
