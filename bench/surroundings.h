#pragma once

/// Calls of operator new, and of pthread_mutex_lock, by this thread.
extern thread_local long allocations;
extern thread_local long locks;
