#pragma once

/// Calls of operator new, and of pthread_mutex_lock, by this thread: every one of the process passes through here.
extern thread_local long allocations;
extern thread_local long locks;
