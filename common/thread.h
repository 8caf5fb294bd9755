// Threads: creation, release of handles, and the count of running worker threads.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <vector>

/// Stack of threads that come in large numbers and do little, in bytes.
inline constexpr std::size_t kSmallStackBytes = std::size_t{256} * 1024;

/// Starts a thread.
///
/// @param id      receives the handle; untouched on failure
/// @param arg     handed to start; stays the caller's when the thread could not be made
/// @param detach  1: the thread releases itself at its end; else it must be joined or given to CloseThreadHandle
/// @param stack   bytes of stack, 0 for the system's default, which also serves when these do not suffice
/// @return        0, or -1 when no thread could be made (pthread_create(3))
int createThread(pthread_t& id, void* (*start)(void*), void* arg, int detach, std::size_t stack = 0);

/// Detaches the thread: its resources are freed when it ends.
void CloseThreadHandle(pthread_t thread);
/// Detaches every thread of the list.
void CloseThreadHandle(const std::vector<pthread_t>& threads);

/// Adds 1 to the process-wide count of running worker threads.
void INTHREAD();
/// Takes 1 from it.
void DETHREAD();
/// @return the count: how many worker threads of the library run at this moment
int RunningThreads();

/// What every worker thread holds while it runs: INTHREAD now, DETHREAD on every way out; names the thread.
class CThreadScope {
public:
    /// @param name  at most 15 characters, shown by ps and debuggers (pthread_setname_np(3))
    explicit CThreadScope(const char* name);
    ~CThreadScope();
    CThreadScope(const CThreadScope&) = delete;
    CThreadScope& operator=(const CThreadScope&) = delete;
};
