// Program that namespace_privilege_test.cpp starts: takes the right, makes a network, and ends as it is told.
#include "sim/namespace_privilege.h"
#include "sim/private_network.h"

#include <csignal>
#include <cstring>

int main(int argc, char** argv) {
    k740::sim::EnsureNamespacePrivilege(argv);
    const k740::sim::PrivateNetwork network;
    if (argc > 1 && std::strcmp(argv[1], "signal") == 0) { std::raise(SIGTERM); }
    return 42;
}
