#include "sim/host_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

namespace k740::sim {
namespace {

constexpr int kSignalStatus = 128; // as shells count
constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::milliseconds kPoll{5};

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

/// The files that the program begins with.
class Files {
public:
    explicit Files(HostProgram::Input input) {
        posix_spawn_file_actions_init(&m_actions);
        if (input == HostProgram::Input::Same) { return; }
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    ~Files() { posix_spawn_file_actions_destroy(&m_actions); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    [[nodiscard]] const posix_spawn_file_actions_t* Get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

} // namespace

HostProgram::HostProgram(std::vector<std::string> command, Input input) {
    std::vector<char*> arguments(command.size() + 1, nullptr);
    std::transform(command.begin(), command.end(), arguments.begin(), [](std::string& word) { return word.data(); });
    const DefaultSignals signals;
    const Files files(input);
    const int error = posix_spawnp(&m_process, arguments[0], files.Get(), signals.Get(), arguments.data(), environ);
    if (error != 0) { throw std::system_error(error, std::generic_category(), "cannot start " + command.at(0)); }
}

HostProgram::~HostProgram() {
    if (ExitStatus()) { return; }
    kill(m_process, SIGTERM);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!ExitStatus() && std::chrono::steady_clock::now() < end) { std::this_thread::sleep_for(kPoll); }
    if (m_status) { return; }
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

std::optional<int> HostProgram::ExitStatus() {
    int waitStatus = 0;
    if (!m_status && waitpid(m_process, &waitStatus, WNOHANG) == m_process) { m_status = StatusOf(waitStatus); }
    return m_status;
}

} // namespace k740::sim
