#pragma once

namespace vorn_testing {

/// What a program that stands before functions of the C library tells the checks, and asks them. vorn-conformance does; in
/// other programs the checks see less.
///
/// None of these asks for memory or takes a mutex.
namespace interposed {

/// Before memory is asked for or given back, after a mutex was taken and before it is left: a load holds a call up there.
void place();

/// Before pthread_mutex_lock() waits for a mutex: mutexes that are taken in two orders are made to meet here.
void locks(const void* mutex);

/// When pthread_mutex_lock() has to wait.
void waits();

/// After pthread_mutex_lock() took it. Holds the thread up for a moment when it is in a call of
/// a load, so that others come in between.
void locked(const void* mutex);

/// Before pthread_mutex_unlock().
void unlocked(const void* mutex);

/// Before a function of the C library is called that keeps something in static memory.
void staticPlace(const char* function);

/// Whether blocks of memory get pages of their own now, which nobody can reach when they were given back.
bool guardsMemory();

/// Says that this program does so: whether an address is in such a block.
void guardedBy(bool (*owns)(const void*));

}  // namespace interposed
}  // namespace vorn_testing
