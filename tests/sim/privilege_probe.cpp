// Program that namespace_privilege_test.cpp starts: takes the right, makes a network, and ends as it is told.
#include "sim/end_signals.h"
#include "sim/namespace_privilege.h"
#include "sim/private_network.h"

#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

void AwaitSignal() {
    const k740::sim::EndSignals held;
    std::puts("waits");
    std::fflush(stdout);
    const sigset_t signals = k740::sim::EndSignalSet();
    std::printf("got %d\n", ::sigwaitinfo(&signals, nullptr));
}

} // namespace

int main(int argc, char** argv) {
    k740::sim::EnsureNamespacePrivilege(argv);
    const k740::sim::PrivateNetwork network;
    if (argc > 1 && std::strcmp(argv[1], "signal") == 0) { std::raise(SIGTERM); }
    if (argc > 1 && std::strcmp(argv[1], "wait") == 0) { AwaitSignal(); }
    return 42;
}
