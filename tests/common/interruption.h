// Signals that interrupt a sleeping thread, for tests of waits that must survive them.
#pragma once

#include "tests/support/wait_until.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>

namespace k740::test {

inline std::atomic<int> g_handledSignals{0};

/// Makes SIGUSR1 a signal whose handler only counts.
/// @param flags  of sigaction(2): 0, or SA_RESTART
inline void CountSignals(int flags) {
    struct sigaction action {};
    action.sa_handler = [](int) { ++g_handledSignals; };
    action.sa_flags = flags;
    sigaction(SIGUSR1, &action, nullptr);
}

/// A thread that does one thing, and that can be seen sleeping in it.
class SleepingThread {
public:
    template <typename Work>
    explicit SleepingThread(Work work)
        : m_thread([this, work = std::move(work)] {
              m_id = static_cast<pid_t>(syscall(SYS_gettid));
              work();
              m_ended = true;
          }) {}
    ~SleepingThread() { Join(); }
    SleepingThread(const SleepingThread&) = delete;
    SleepingThread& operator=(const SleepingThread&) = delete;

    void Join() {
        if (m_thread.joinable()) { m_thread.join(); }
    }
    [[nodiscard]] bool HasEnded() const { return m_ended; }
    /// @return whether it came to sleep in time
    bool WaitUntilAsleep() {
        return WaitUntil([this] { return IsAsleep(); });
    }
    /// Waits until it sleeps, sends SIGUSR1 and waits until that is handled. @return whether all that came to pass
    bool Interrupt() {
        if (!WaitUntilAsleep()) { return false; }
        const int before = g_handledSignals;
        pthread_kill(m_thread.native_handle(), SIGUSR1);
        return WaitUntil([before] { return g_handledSignals > before; });
    }

private:
    // proc(5): the state is the letter behind the parenthesis that ends the name.
    [[nodiscard]] bool IsAsleep() const {
        if (m_id == 0) { return false; }
        std::ifstream file("/proc/self/task/" + std::to_string(m_id) + "/stat");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t name = text.rfind(") ");
        return name != std::string::npos && text[name + 2] == 'S';
    }

    std::atomic<pid_t> m_id{0};
    std::atomic<bool> m_ended{false};
    std::thread m_thread; // last, so that it finds the rest made
};

} // namespace k740::test
