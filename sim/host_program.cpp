#include "sim/host_program.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <system_error>

namespace k740::sim {
namespace {

constexpr int kSignalStatus = 128; // as shells count

int StatusOf(int waitStatus) {
    return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : kSignalStatus + WTERMSIG(waitStatus);
}

/// The simulator holds some signals back; the program shall not.
class DefaultSignals {
public:
    DefaultSignals() {
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK);
    }
    ~DefaultSignals() { posix_spawnattr_destroy(&m_attributes); }
    DefaultSignals(const DefaultSignals&) = delete;
    DefaultSignals& operator=(const DefaultSignals&) = delete;
    [[nodiscard]] const posix_spawnattr_t* Get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

} // namespace

HostProgram::HostProgram(std::vector<std::string> command) {
    std::vector<char*> arguments(command.size() + 1, nullptr);
    std::transform(command.begin(), command.end(), arguments.begin(), [](std::string& word) { return word.data(); });
    const DefaultSignals signals;
    const int error = posix_spawnp(&m_process, arguments[0], nullptr, signals.Get(), arguments.data(), environ);
    if (error != 0) { throw std::system_error(error, std::generic_category(), "cannot start " + command.at(0)); }
}

HostProgram::~HostProgram() {
    if (ExitStatus()) { return; }
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

std::optional<int> HostProgram::ExitStatus() {
    int waitStatus = 0;
    if (!m_status && waitpid(m_process, &waitStatus, WNOHANG) == m_process) { m_status = StatusOf(waitStatus); }
    return m_status;
}

} // namespace k740::sim
