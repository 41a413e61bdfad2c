#pragma once

#include <iosfwd>

#include "Recording.h"

namespace vorn_speaker {

/// Prints a recording for people: who called whom, how long it took, waited for locks, which calls overlapped, what is
/// missing.
void report(const Recorded& recording, std::ostream& out);

/// Prints what differs between two recordings, in the calls of each thread, their order and their answers, and how long
/// operations took in both. Returns whether calls and answers are the same.
///
/// Compared is what crossed to the other side; the question for the external player, which only some writers see, is
/// not, nor sound that one of them sums up. Threads are told apart by their names.
bool compare(const Recorded& left, const Recorded& right, std::ostream& out);

}  // namespace vorn_speaker
