#include "sim/reactor.h"

#include "sim/system_error.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <exception>
#include <future>
#include <utility>

namespace k740::sim {
namespace {

/// Threads started while this lives take no signals: those are the host's.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_before{};
};

/// Work that one thread does while another waits for it.
class Errand {
public:
    explicit Errand(const std::function<void()>& work) : m_work(work) {}

    void Do() {
        std::exception_ptr thrown;
        try {
            m_work();
        } catch (...) { thrown = std::current_exception(); }
        // Told under the lock: the waiting thread destroys this object as soon as it can take it.
        const std::lock_guard lock(m_lock);
        m_thrown = std::move(thrown);
        m_done = true;
        m_end.notify_one();
    }

    void AwaitEnd() {
        std::unique_lock lock(m_lock);
        m_end.wait(lock, [this] { return m_done; });
        if (m_thrown) { std::rethrow_exception(m_thrown); }
    }

private:
    const std::function<void()>& m_work;
    std::mutex m_lock;
    std::condition_variable m_end;
    bool m_done = false;         // guarded by m_lock
    std::exception_ptr m_thrown; // guarded by m_lock
};

} // namespace

struct Reactor::Waiter {
    std::function<bool()> condition;
    std::promise<void> holds;
};

Reactor::Reactor()
    : m_epoll(Checked(::epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
      m_wake(Checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
    Watch(m_wake.Get(), [this] { TakePosted(); });
    const SignalsBlocked blocked;
    m_thread = std::thread([this] { Loop(); });
}

Reactor::~Reactor() {
    Stop();
}

void Reactor::Stop() {
    if (!m_thread.joinable()) { return; }
    m_stopping = true;
    Wake();
    m_thread.join();
}

void Reactor::Wake() const {
    const std::uint64_t one = 1;
    // Fails only when the count is full, that is, when the thread is about to wake.
    static_cast<void>(!::write(m_wake.Get(), &one, sizeof(one)));
}

void Reactor::Run(const Work& work) {
    if (!m_thread.joinable() || std::this_thread::get_id() == m_thread.get_id()) { return work(); }
    Errand errand(work);
    Post([&errand] { errand.Do(); });
    errand.AwaitEnd();
}

bool Reactor::WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    const auto waiter = std::make_shared<Waiter>(Waiter{condition, {}});
    std::future<void> holds = waiter->holds.get_future();
    Run([&] { m_waiters.push_back(waiter); });
    const bool inTime = holds.wait_for(timeout) == std::future_status::ready;
    if (!inTime) {
        Run([&] { std::erase(m_waiters, waiter); });
    }
    return inTime;
}

void Reactor::Watch(int file, Work onReadable) {
    m_handlers[file] = std::move(onReadable);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = file;
    Checked(::epoll_ctl(m_epoll.Get(), EPOLL_CTL_ADD, file, &event), "epoll_ctl");
}

void Reactor::Forget(int file) {
    ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_DEL, file, nullptr);
    m_handlers.erase(file);
}

void Reactor::After(std::chrono::milliseconds delay, Work work) {
    At(Clock::now() + delay, std::move(work));
}

void Reactor::At(Clock::time_point time, Work work) {
    m_timers.emplace(time, std::move(work));
}

void Reactor::Loop() {
    std::array<epoll_event, 64> events;
    while (!m_stopping) {
        const int count =
            ::epoll_wait(m_epoll.Get(), events.data(), static_cast<int>(events.size()), MillisecondsToNextTimer());
        for (int i = 0; i < count; ++i) { Dispatch(events[static_cast<std::size_t>(i)].data.fd); }
        RunTimers();
        TellWaiters();
    }
}

void Reactor::Dispatch(int file) {
    const auto found = m_handlers.find(file);
    if (found == m_handlers.end()) { return; } // forgotten by a handler of this round
    Guard(Work(found->second));                // a copy: the handler may forget itself
}

void Reactor::Guard(const Work& work) {
    if (!m_catching) { return work(); }
    try {
        work();
    } catch (...) {
        const std::lock_guard lock(m_lock);
        if (!m_failure) { m_failure = std::current_exception(); }
    }
}

bool Reactor::HasFailed() {
    const std::lock_guard lock(m_lock);
    return m_failure != nullptr;
}

void Reactor::RethrowFailure() {
    std::exception_ptr failure;
    {
        const std::lock_guard lock(m_lock);
        std::swap(failure, m_failure);
    }
    if (failure) { std::rethrow_exception(failure); }
}

void Reactor::Post(Work work) {
    {
        const std::lock_guard lock(m_lock);
        m_posted.push_back(std::move(work));
    }
    Wake();
}

void Reactor::TakePosted() {
    std::uint64_t count = 0;
    Checked(::read(m_wake.Get(), &count, sizeof(count)), "eventfd");
    std::vector<Work> posted;
    {
        const std::lock_guard lock(m_lock);
        posted.swap(m_posted);
    }
    for (const Work& work : posted) { work(); }
}

void Reactor::RunTimers() {
    const Clock::time_point now = Clock::now();
    while (!m_timers.empty() && m_timers.begin()->first <= now) {
        const auto due = m_timers.extract(m_timers.begin());
        Guard(due.mapped());
    }
}

void Reactor::TellWaiters() {
    std::erase_if(m_waiters, [](const std::shared_ptr<Waiter>& waiter) {
        if (!waiter->condition()) { return false; }
        waiter->holds.set_value();
        return true;
    });
}

int Reactor::MillisecondsToNextTimer() const {
    if (m_timers.empty()) { return -1; }
    constexpr std::int64_t kLongestMs = 3'600'000; // a timer may be further away than epoll_wait can count
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_timers.begin()->first - Clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, kLongestMs));
}

} // namespace k740::sim
