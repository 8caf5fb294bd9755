// The signals that ask a program to end, taken in at its own time.
#pragma once

#include <csignal>
#include <ctime>

namespace k740::sim {

/// SIGINT and SIGTERM, held back from construction on so that they end the program in an orderly way.
class EndSignals {
public:
    EndSignals() {
        ::sigemptyset(&m_signals);
        ::sigaddset(&m_signals, SIGINT);
        ::sigaddset(&m_signals, SIGTERM);
        ::pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    }
    [[nodiscard]] bool HaveCome() const {
        const timespec atOnce{};
        return ::sigtimedwait(&m_signals, nullptr, &atOnce) > 0;
    }

private:
    sigset_t m_signals{};
};

} // namespace k740::sim
