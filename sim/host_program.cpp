#include "sim/host_program.h"

#include "sim/file_descriptor.h"
#include "sim/system_error.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

namespace k740::sim {
namespace {

constexpr int kSignalStatus = 128; // as shells count
constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::milliseconds kPoll{5};

int StatusOf(int waitStatus) {
    return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : kSignalStatus + WTERMSIG(waitStatus);
}

bool TakeEmptyInput() {
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    return nothing >= 0 && ::dup2(nothing, STDIN_FILENO) >= 0;
}

/// Gives the program what it is to have, and what it would have had without the simulator.
bool Prepare(const HostStart& start, pid_t parent) {
    sigset_t none;
    ::sigemptyset(&none);
    static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
    if (start.endsWithThread && (::prctl(PR_SET_PDEATHSIG, SIGTERM) != 0 || ::getppid() != parent)) { return false; }
    if (start.descriptors && ::setrlimit(RLIMIT_NOFILE, &*start.descriptors) != 0) { return false; }
    return !start.emptyInput || TakeEmptyInput();
}

/// Waits until the program has begun. @return 0, or the error number when it could not
int ReadError(const FileDescriptor& report) {
    int error = 0;
    while (::read(report.Get(), &error, sizeof error) < 0 && errno == EINTR) {}
    return error;
}

} // namespace

HostProgram::HostProgram(std::vector<std::string> command, const HostStart& start) {
    std::vector<char*> arguments(command.size() + 1, nullptr);
    std::transform(command.begin(), command.end(), arguments.begin(), [](std::string& word) { return word.data(); });
    std::array<int, 2> ends{};
    Checked(::pipe2(ends.data(), O_CLOEXEC), "pipe2");
    const FileDescriptor report(ends[0]);
    FileDescriptor toReport(ends[1]);
    const pid_t parent = ::getpid();
    m_process = Checked(::fork(), "fork"); // posix_spawn cannot make it end with a thread
    if (m_process == 0) {                  // NB: nothing here takes a lock that another thread may hold
        if (Prepare(start, parent)) { ::execvp(arguments[0], arguments.data()); }
        const int error = errno;
        static_cast<void>(!::write(toReport.Get(), &error, sizeof error));
        ::_exit(kSignalStatus);
    }
    toReport = FileDescriptor();
    const int error = ReadError(report);
    if (error == 0) { return; }
    ::waitpid(m_process, nullptr, 0);
    throw std::system_error(error, std::generic_category(), "cannot start " + command.at(0));
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
