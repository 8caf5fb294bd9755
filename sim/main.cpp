// k740-sim: plays zone controllers, paging stations, AUX interfaces and clients, alone or with a host in a private
// network.
#include "sim/command_input.h"
#include "sim/end_signals.h"
#include "sim/event_writer.h"
#include "sim/host_program.h"
#include "sim/namespace_privilege.h"
#include "sim/private_network.h"
#include "sim/process_setup.h"
#include "sim/record_directory.h"
#include "sim/scenario.h"
#include "sim/script.h"
#include "sim/sim_options.h"
#include "sim/simulator.h"

#include <unistd.h>

#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

namespace k740::sim {
namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr int kSignalStatus = 128; // and the signal's number, as shells count

/// @return the exit status of a run whose host, if there is one, has ended or shall end
int StatusOf(RunEnd end, const SimOptions& options, const EndSignals& signals, std::optional<int> hostStatus) {
    switch (end) {
    case RunEnd::Signal:
        return kSignalStatus + signals.First();
    case RunEnd::HostEnded:
        return hostStatus.value_or(kExitFailure);
    case RunEnd::TimeOver:
        std::cerr << "k740-sim: the time is over, but fewer than " << options.untilClose
                  << " close-audio requests came\n";
        return kExitFailure;
    case RunEnd::Asked:
        break;
    }
    return 0;
}

int Simulate(const SimOptions& options, Script script) {
    FileDescriptor events = OpenEvents(options.eventsFile); // first: it may wait for a reader
    RaiseDescriptorLimit();
    EndSignals signals;
    Simulator simulator(options, std::move(script), std::move(events), signals);
    return StatusOf(simulator.Run(), options, signals, {});
}

/// Plays the devices in one half of a private network and runs the host in the other.
int SimulateWithHost(const SimOptions& options, Script script) {
    FileDescriptor events = OpenEvents(options.eventsFile);
    const HostStart start{options.readCommands, RaiseDescriptorLimit(), true};
    PrivateNetwork::Options addresses;
    for (const DeviceOption& device : options.devices) { addresses.fieldAddresses.push_back(device.address); }
    const PrivateNetwork network(addresses);
    EndSignals signals;
    std::unique_ptr<Simulator> simulator;
    network.RunInField(
        [&] { simulator = std::make_unique<Simulator>(options, std::move(script), std::move(events), signals); });
    HostProgram host(options.host, start);
    const RunEnd end = simulator->Run([&host] { return host.ExitStatus().has_value(); });
    return StatusOf(end, options, signals, host.ExitStatus());
}

int Run(SimOptions& options, char** argv) {
    if (!options.scenarioFile.empty()) { LoadScenario(options.scenarioFile, options); }
    Script script = MakeScript(options);
    if (options.readCommands) { CommandInput::Check(STDIN_FILENO); }
    if (options.recordDirectory) { MakeRecordDirectory(*options.recordDirectory); }
    if (options.host.empty()) { return Simulate(options, std::move(script)); }
    EnsureNamespacePrivilege(argv);
    return SimulateWithHost(options, std::move(script));
}

} // namespace
} // namespace k740::sim

int main(int argc, char** argv) {
    using namespace k740::sim;
    try {
        PrepareProcess();
        CLI::App app("Plays the devices of a public-address and voice-alarm installation in the network namespace in "
                     "which it is started, or in a private network together with a host");
        SimOptions options;
        app.set_version_flag("--version", std::string("k740-sim ") + K740_VERSION);
        DeclareOptions(app, options);
        const int own = TakeHost(argc, argv, options);
        try {
            app.parse(own, argv);
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
