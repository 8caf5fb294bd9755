// The signals that ask a program to end, taken in at its own time.
#pragma once

#include <csignal>
#include <ctime>
#include <initializer_list>

namespace k740::sim {

/// SIGINT, SIGTERM, SIGQUIT and SIGHUP; the last not under nohup(1), which has it ignored.
inline sigset_t EndSignalSet() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGQUIT}) { ::sigaddset(&signals, number); }
    struct sigaction hangUp {};
    ::sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN) { ::sigaddset(&signals, SIGHUP); }
    return signals;
}

/// These signals, held back from construction on so that they end the program in an orderly way. One thread only.
class EndSignals {
public:
    EndSignals() { ::pthread_sigmask(SIG_BLOCK, &m_signals, nullptr); }

    [[nodiscard]] bool HaveCome() {
        const timespec atOnce{};
        if (m_first <= 0) { m_first = ::sigtimedwait(&m_signals, nullptr, &atOnce); }
        return m_first > 0;
    }
    /// The number of the first one that has come.
    [[nodiscard]] int First() const { return m_first; }

private:
    const sigset_t m_signals = EndSignalSet();
    int m_first = 0;
};

} // namespace k740::sim
