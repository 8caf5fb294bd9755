#include "sim/namespace_privilege.h"

#include "sim/end_signals.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace k740::sim {
namespace {

constexpr int kExitRefused = 1;

[[noreturn]] void Refuse(const char* call) {
    // NB: also called between clone and exec; nothing here takes a lock that another thread may hold.
    ::dprintf(STDERR_FILENO,
              "This machine refuses private network namespaces (%s: %s); run as root or allow user "
              "namespaces.\n",
              call, ::strerrordesc_np(errno));
    ::_exit(kExitRefused);
}

void WriteFile(const char* path, const std::string& text) {
    const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0 || ::write(fd, text.data(), text.size()) < 0) { Refuse(path); }
    ::close(fd);
}

std::string MapToRoot(unsigned id) {
    return "0 " + std::to_string(id) + " 1";
}

[[noreturn]] void EndLike(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        static_cast<void>(std::signal(number, SIG_DFL));
        static_cast<void>(std::raise(number));
        sigset_t own;
        ::sigemptyset(&own);
        ::sigaddset(&own, number);
        ::pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    }
    ::_exit(WEXITSTATUS(status));
}

/// Passes the signals that ask for the end on to the second self, and waits for it.
[[noreturn]] void StandInFor(pid_t child, const sigset_t& signals) {
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        const int number = ::sigwaitinfo(&signals, nullptr);
        if (number > 0 && number != SIGCHLD) { ::kill(child, number); }
    }
    EndLike(status);
}

[[noreturn]] void RunAgain(char** argv, const std::string& users, const std::string& groups, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) { ::_exit(kExitRefused); } // it was gone before
    WriteFile("/proc/self/setgroups", "deny");            // required before an unprivileged gid_map, user_namespaces(7)
    WriteFile("/proc/self/uid_map", users);
    WriteFile("/proc/self/gid_map", groups);
    ::execv("/proc/self/exe", argv);
    Refuse("execv");
}

[[noreturn]] void RunAgainAsRootOfUserNamespace(char** argv) {
    const std::string users = MapToRoot(::geteuid());
    const std::string groups = MapToRoot(::getegid());
    const pid_t parent = ::getpid();
    sigset_t signals = EndSignalSet();
    ::sigaddset(&signals, SIGCHLD);
    sigset_t before;
    ::pthread_sigmask(SIG_BLOCK, &signals, &before); // none may be lost between the clone and the wait
    // unshare(CLONE_NEWUSER) fails in a process with threads, and the thread sanitizer starts one; clone does not.
    const long child = ::syscall(SYS_clone, CLONE_NEWUSER | CLONE_NEWNET | SIGCHLD, 0, 0, 0, 0);
    if (child < 0) { Refuse("clone"); }
    if (child > 0) { StandInFor(static_cast<pid_t>(child), signals); }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    RunAgain(argv, users, groups, parent);
}

} // namespace

void EnsureNamespacePrivilege(char** argv) {
    if (::unshare(CLONE_NEWNET) == 0) { return; }
    if (errno != EPERM) { Refuse("unshare"); }
    RunAgainAsRootOfUserNamespace(argv);
}

} // namespace k740::sim
