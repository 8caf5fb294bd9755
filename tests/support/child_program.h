// A program that a test runs and reads.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace k740::test {

/// Runs a program in the network namespace of the thread that makes the object, without an input, its output and errors
/// on a pipe; kills it, and what it has started in its process group, when the object goes while it still runs.
class ChildProgram {
public:
    /// @param command  program and arguments, as for a shell
    explicit ChildProgram(const std::string& command) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) { throw std::runtime_error("no pipe for " + command); }
        m_output = ::fdopen(ends[0], "r");
        const int error = Start("exec " + command, ends[1]);
        ::close(ends[1]);
        if (error != 0) { throw std::runtime_error("no process for " + command); }
    }
    ~ChildProgram() {
        if (m_output == nullptr) { return; }
        ::kill(-m_process, SIGKILL);
        Wait();
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    /// To the program alone; of a pipeline to the shell.
    void Signal(int number) const { ::kill(m_process, number); }
    /// Whether it has ended, though its output may not have been read.
    [[nodiscard]] bool HasEnded() const {
        siginfo_t state{};
        return ::waitid(P_PID, static_cast<id_t>(m_process), &state, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               state.si_pid == m_process;
    }

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
        const int status = Wait();
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    /// @return 0 or the error number
    int Start(const std::string& command, int output) {
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
        posix_spawnattr_t group;
        ::posix_spawnattr_init(&group);
        ::posix_spawnattr_setflags(&group, POSIX_SPAWN_SETPGROUP); // a group of its own
        std::array<std::string, 3> words{"sh", "-c", command};
        const std::array<char*, 4> arguments{words[0].data(), words[1].data(), words[2].data(), nullptr};
        const int error = ::posix_spawn(&m_process, "/bin/sh", &files, &group, arguments.data(), environ);
        ::posix_spawnattr_destroy(&group);
        ::posix_spawn_file_actions_destroy(&files);
        return error;
    }
    int Wait() {
        std::fclose(std::exchange(m_output, nullptr));
        int status = 0;
        ::waitpid(m_process, &status, 0);
        return status;
    }

    FILE* m_output = nullptr;
    pid_t m_process = 0;
};

} // namespace k740::test
