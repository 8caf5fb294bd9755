// How the library starts its threads, and the one loop that its periodic threads run.
#pragma once

#include "common/lifetime.h"
#include "common/thread.h"

#include <functional>
#include <memory>
#include <utility>

/// Calls a function and keeps what it throws: an exception that left a thread would end the host.
/// @return false when something was thrown
template <typename Function> bool ContainExceptions(Function function) noexcept {
    try {
        function();
        return true;
    } catch (...) { return false; }
}

/// Runs work() on a detached thread of its own. What work owns is freed when it ends, or when no thread could be made.
/// @param name  of the thread, at most 15 characters; a literal
/// @return      false when no thread could be made, also for want of memory
template <typename Work> bool StartThread(const char* name, Work work) {
    struct Job {
        const char* name;
        Work work;
    };
    std::unique_ptr<Job> job;
    if (!ContainExceptions([&] { job = std::make_unique<Job>(Job{name, std::move(work)}); })) { return false; }
    const auto run = [](void* param) -> void* {
        const std::unique_ptr<Job> owned(static_cast<Job*>(param));
        const CThreadScope scope(owned->name);
        ContainExceptions(std::ref(owned->work));
        return nullptr;
    };
    pthread_t thread{};
    if (createThread(thread, run, job.get(), 1) != 0) { return false; }
    static_cast<void>(job.release()); // the thread's from now on
    return true;
}

/// The loop of a periodic thread: step, then a pause on the lifetime, again and again until the exit flag is set.
/// @param pauseMs  milliseconds between two steps
template <typename Step> void RunWorker(CLifetime& lifetime, unsigned pauseMs, Step step) {
    while (!lifetime.IsExiting()) {
        ContainExceptions(std::ref(step));
        lifetime.Pause(pauseMs);
    }
}
