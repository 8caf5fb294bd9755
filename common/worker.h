// The one loop that the library's periodic threads run.
#pragma once

#include "common/lifetime.h"
#include "common/thread.h"

/// Calls a function and keeps what it throws: an exception that left a thread would end the host.
/// @return false when something was thrown
template <typename Function> bool ContainExceptions(Function function) noexcept {
    try {
        function();
        return true;
    } catch (...) { return false; }
}

/// Runs a worker thread: step, then a pause on the lifetime, again and again until the exit flag is set.
/// @param name     name of the thread, at most 15 characters
/// @param pauseMs  milliseconds between two steps
template <typename Step> void RunWorker(CLifetime& lifetime, const char* name, unsigned pauseMs, Step step) {
    const CThreadScope scope(name);
    while (!lifetime.IsExiting()) {
        ContainExceptions(step);
        lifetime.Pause(pauseMs);
    }
}
