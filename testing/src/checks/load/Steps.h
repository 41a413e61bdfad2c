#pragma once

namespace vorn_testing::checks {

/// From now on `act` is told of every instruction of this thread's calls, right before it, by a handler of signals: until
/// it answers false, or until null takes its place. Only where canStep().
void onEveryStep(bool (*act)(const void* context));
bool canStep();

/// Holds this thread up, also in a handler of signals, until what another one does meanwhile() is done, or goes on no more.
void pauseHere();

/// Whether this program gives blocks of memory pages of their own.
bool interposesMemory();

}  // namespace vorn_testing::checks
