// A program that a test runs and reads.
#pragma once

#include <sys/types.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace k740::test {

/// Runs a program in the network namespace of the thread that makes the object, its output and errors on a pipe; kills
/// it when the object goes while it still runs.
class ChildProgram {
public:
    /// @param command  program and arguments, as for a shell
    explicit ChildProgram(const std::string& command) {
        m_output = ::popen(("exec 2>&1; echo $$; exec " + command).c_str(), "re");
        if (m_output == nullptr) { throw std::runtime_error("no process for " + command); }
        m_process = static_cast<pid_t>(std::stol(Line()));
    }
    ~ChildProgram() {
        if (m_output == nullptr) { return; }
        Signal(SIGKILL);
        ::pclose(m_output);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    void Signal(int number) const { ::kill(m_process, number); }

    /// @return the next line with its end, empty at the end of the output
    [[nodiscard]] std::string Line() {
        std::string line;
        std::array<char, 4096> part{};
        while (!line.ends_with('\n') && std::fgets(part.data(), static_cast<int>(part.size()), m_output) != nullptr) {
            line += part.data();
        }
        return line;
    }
    /// Reads until a line has this text. @return the line, empty when none has
    [[nodiscard]] std::string LineWith(const std::string& text) {
        std::string line = Line();
        while (!line.empty() && line.find(text) == std::string::npos) { line = Line(); }
        return line;
    }
    /// Waits for the end. @return what has been printed and not been read yet
    [[nodiscard]] std::string Rest() {
        std::string rest;
        for (std::string line = Line(); !line.empty(); line = Line()) { rest += line; }
        return rest;
    }
    /// Waits for the end. @return the exit status, 128 and the signal for a program that a signal ended
    int End() {
        static_cast<void>(Rest());
        const int status = ::pclose(std::exchange(m_output, nullptr));
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    FILE* m_output = nullptr;
    pid_t m_process = 0;
};

} // namespace k740::test
