// One thread that waits for all sockets and timers of an installation.
#pragma once

#include "sim/file_descriptor.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace k740::sim {

/// Runs handlers on its own thread, one after the other, so that what they share needs no lock. The thread is in the
/// network namespace of the thread that made the reactor, takes no signals, and sleeps in epoll_wait otherwise.
class Reactor {
public:
    using Work = std::function<void()>;

    Reactor();
    ~Reactor();
    Reactor(const Reactor&) = delete;
    Reactor& operator=(const Reactor&) = delete;

    /// Ends the thread after the work at hand; afterwards no handler runs any more, and Run works on the
    /// caller's thread. Nobody else may be calling at that time.
    void Stop();

    /// Any thread. From now on what a handler or timer throws ends it alone, and not the process.
    void CatchFailures() { m_catching = true; }
    /// Any thread. Whether a handler or timer has thrown since the last RethrowFailure.
    [[nodiscard]] bool HasFailed();
    /// Any thread. Throws what a handler or timer has thrown since the last time, the first of it; otherwise nothing.
    void RethrowFailure();

    /// Any thread. Runs the work on the reactor's thread and waits for its end; throws what it throws.
    void Run(const Work& work);

    /// Any thread but the reactor's. Blocks until the condition holds; it is examined on the reactor's thread, after
    /// each round of handlers.
    /// @return whether it came to hold in time
    bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

    /// Reactor's thread only. Runs the handler whenever the descriptor is readable, until Forget.
    void Watch(int file, Work onReadable);
    void Forget(int file);

    /// Reactor's thread only. Runs the work once, after the delay (after this round of handlers, for 0).
    void After(std::chrono::milliseconds delay, Work work);
    /// The same, once the time has come; up to 1 ms late.
    void At(std::chrono::steady_clock::time_point time, Work work);

private:
    using Clock = std::chrono::steady_clock;
    struct Waiter;

    void Loop();
    void Wake() const;
    void Post(Work work);
    void TakePosted();
    void RunTimers();
    void TellWaiters();
    void Dispatch(int file);
    void Guard(const Work& work);
    [[nodiscard]] int MillisecondsToNextTimer() const;

    FileDescriptor m_epoll;
    FileDescriptor m_wake; // eventfd: there is posted work
    std::mutex m_lock;
    std::vector<Work> m_posted;   // guarded by m_lock
    std::exception_ptr m_failure; // guarded by m_lock
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_catching = false;

    // Of the reactor's thread alone.
    std::unordered_map<int, Work> m_handlers;
    std::multimap<Clock::time_point, Work> m_timers;
    std::vector<std::shared_ptr<Waiter>> m_waiters;

    std::thread m_thread; // last, so that it finds everything else made
};

} // namespace k740::sim
