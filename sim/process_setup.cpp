#include "sim/process_setup.h"

#include "sim/system_error.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace k740::sim {

void PrepareProcess() {
    int lowest = -1;
    while (lowest <= STDERR_FILENO) { lowest = Checked(::open("/dev/null", O_RDWR), "/dev/null"); }
    ::close(lowest);
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
}

rlimit RaiseDescriptorLimit() {
    rlimit before{};
    Checked(::getrlimit(RLIMIT_NOFILE, &before), "RLIMIT_NOFILE");
    const rlimit most{before.rlim_max, before.rlim_max};
    Checked(::setrlimit(RLIMIT_NOFILE, &most), "RLIMIT_NOFILE");
    return before;
}

} // namespace k740::sim
