// A host under test: a program that is started beside the simulated devices.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace k740::sim {

/// How a host begins. Whatever this process holds back or ignores, its signals are those of any new program.
struct HostStart {
    bool emptyInput = false;           // or that of this process
    std::optional<rlimit> descriptors; // RLIMIT_NOFILE; as this process without
    bool endsWithThread = false;       // SIGTERM comes when the thread that starts it is gone, killed with its process
};

/// A running program. It starts in the network namespace of the thread that makes the object, and ends with it: asked
/// with SIGTERM, and killed when it takes longer than 2 s.
class HostProgram {
public:
    /// @param command  program, looked for in PATH, and its arguments
    /// @throws std::system_error when it cannot be started
    explicit HostProgram(std::vector<std::string> command, const HostStart& start = {});
    ~HostProgram();
    HostProgram(const HostProgram&) = delete;
    HostProgram& operator=(const HostProgram&) = delete;

    /// @return its exit status once it has ended, 128 and the signal's number when a signal has ended it
    [[nodiscard]] std::optional<int> ExitStatus();

private:
    pid_t m_process = -1;
    std::optional<int> m_status;
};

} // namespace k740::sim
