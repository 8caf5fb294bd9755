// k740-sim: plays zone controllers, paging stations and AUX interfaces, alone or with a host in a private network.
#include "sim/end_signals.h"
#include "sim/host_program.h"
#include "sim/namespace_privilege.h"
#include "sim/private_network.h"
#include "sim/sim_options.h"
#include "sim/simulator.h"

#include <exception>
#include <iostream>
#include <memory>

namespace k740::sim {
namespace {

bool Simulate(const SimOptions& options) {
    const EndSignals signals;
    if (Simulator(options, signals).Run()) { return true; }
    std::cerr << "k740-sim: the time is over, but fewer than " << options.untilClose << " close-audio requests came\n";
    return false;
}

/// Plays the devices in one half of a private network and runs the host in the other. @return the host's exit status
int SimulateWithHost(const SimOptions& options) {
    PrivateNetwork::Options addresses;
    for (const auto* devices : {&options.zoneControllers, &options.pagingStations, &options.auxInterfaces}) {
        for (const DeviceOption& device : *devices) { addresses.fieldAddresses.push_back(device.address); }
    }
    const PrivateNetwork network(addresses);
    const EndSignals signals;
    std::unique_ptr<Simulator> simulator;
    network.RunInField([&] { simulator = std::make_unique<Simulator>(options, signals); });
    HostProgram host(options.host);
    simulator->RunUntil([&host] { return host.ExitStatus().has_value(); });
    return host.ExitStatus().value_or(1);
}

} // namespace
} // namespace k740::sim

int main(int argc, char** argv) {
    try {
        CLI::App app(
            "Plays zone controllers, paging stations and AUX interfaces in the network namespace in which it is "
            "started, or in a private network together with a host");
        k740::sim::SimOptions options;
        k740::sim::DeclareOptions(app, options);
        CLI11_PARSE(app, argc, argv);
        if (options.host.empty()) { return k740::sim::Simulate(options) ? 0 : 1; }
        k740::sim::EnsureNamespacePrivilege(argv);
        return k740::sim::SimulateWithHost(options);
    } catch (const std::exception& error) {
        std::cerr << "k740-sim: " << error.what() << '\n';
        return 1;
    }
}
