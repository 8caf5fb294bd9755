// k740-sim: plays zone controllers, paging stations, AUX interfaces and clients, alone or with a host in a private
// network.
#include "sim/end_signals.h"
#include "sim/host_program.h"
#include "sim/namespace_privilege.h"
#include "sim/private_network.h"
#include "sim/scenario.h"
#include "sim/script.h"
#include "sim/sim_options.h"
#include "sim/simulator.h"

#include <exception>
#include <iostream>
#include <memory>
#include <utility>

namespace k740::sim {
namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

bool Simulate(const SimOptions& options, Script script) {
    const EndSignals signals;
    if (Simulator(options, std::move(script), signals).Run()) { return true; }
    std::cerr << "k740-sim: the time is over, but fewer than " << options.untilClose << " close-audio requests came\n";
    return false;
}

/// Plays the devices in one half of a private network and runs the host in the other. @return the host's exit status
int SimulateWithHost(const SimOptions& options, Script script) {
    PrivateNetwork::Options addresses;
    for (const DeviceOption& device : options.devices) { addresses.fieldAddresses.push_back(device.address); }
    const PrivateNetwork network(addresses);
    const EndSignals signals;
    std::unique_ptr<Simulator> simulator;
    network.RunInField([&] { simulator = std::make_unique<Simulator>(options, std::move(script), signals); });
    HostProgram host(options.host, options.readCommands ? HostProgram::Input::None : HostProgram::Input::Same);
    simulator->RunUntil([&host] { return host.ExitStatus().has_value(); });
    return host.ExitStatus().value_or(simulator->EndedByCommand() ? 0 : kExitFailure);
}

int Run(SimOptions& options, char** argv) {
    if (!options.scenarioFile.empty()) { LoadScenario(options.scenarioFile, options); }
    Script script = MakeScript(options);
    if (options.host.empty()) { return Simulate(options, std::move(script)) ? 0 : kExitFailure; }
    EnsureNamespacePrivilege(argv);
    return SimulateWithHost(options, std::move(script));
}

} // namespace
} // namespace k740::sim

int main(int argc, char** argv) {
    using namespace k740::sim;
    try {
        CLI::App app("Plays the devices of a public-address and voice-alarm installation in the network namespace in "
                     "which it is started, or in a private network together with a host");
        SimOptions options;
        app.set_version_flag("--version", std::string("k740-sim ") + K740_VERSION);
        DeclareOptions(app, options);
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& error) { return app.exit(error) == 0 ? 0 : kExitUsage; }
        return Run(options, argv);
    } catch (const UsageError& error) {
        std::cerr << "k740-sim: " << error.what() << '\n';
        return kExitUsage;
    } catch (const std::exception& error) {
        std::cerr << "k740-sim: " << error.what() << '\n';
        return kExitFailure;
    }
}
