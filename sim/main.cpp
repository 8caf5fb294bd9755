// k740-sim: plays zone controllers and paging stations, alone or with a host in a private network.
#include "sim/event_json.h"
#include "sim/host_program.h"
#include "sim/installation.h"
#include "sim/namespace_privilege.h"
#include "sim/private_network.h"
#include "sim/sim_options.h"

#include <csignal>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <vector>

namespace k740::sim {
namespace {

constexpr std::chrono::milliseconds kLongestWait{100}; // between looks at signals and the time

/// SIGINT and SIGTERM, held back so that they end the program in an orderly way.
class EndSignals {
public:
    EndSignals() {
        ::sigemptyset(&m_signals);
        ::sigaddset(&m_signals, SIGINT);
        ::sigaddset(&m_signals, SIGTERM);
        ::pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    }
    [[nodiscard]] bool HaveCome() const {
        const timespec atOnce{};
        return ::sigtimedwait(&m_signals, nullptr, &atOnce) > 0;
    }

private:
    sigset_t m_signals{};
};

class Simulator {
public:
    Simulator(const SimOptions& options, const EndSignals& signals)
        : m_options(options), m_signals(signals), m_installation({options.stationAddress, kDefaultStationNode}) {
        OpenEvents();
        const std::chrono::milliseconds period(static_cast<std::int64_t>(options.statusPeriod * 1000));
        for (const DeviceOption& device : options.zoneControllers) { AddZoneController(device, period); }
        for (const DeviceOption& device : options.pagingStations) {
            m_installation.AddPagingStation(device.id, device.address).RepeatStatus({}, period);
        }
    }

    /// Runs until enough close-audio requests have come, a signal comes or the time is over.
    /// @return whether it ended as asked, not because the time was over before
    bool Run() {
        return RunUntil([this] { return EnoughClosed(); }) || m_options.untilClose == 0;
    }

    /// Runs until the condition holds, which is looked at ten times a second at least, or a signal or the time ends it.
    /// @return whether the condition came to hold
    bool RunUntil(const std::function<bool()>& condition) {
        Write({{"time", 0.0}, {"event", "ready"}});
        bool holds = false;
        while (!holds && !m_signals.HaveCome() && !TimeIsOver()) {
            WriteNewEvents(kLongestWait);
            holds = condition();
        }
        m_installation.WaitUntil([] { return true; }, kLongestWait); // the devices are through with what they received
        WriteNewEvents(std::chrono::milliseconds(0));
        WriteSummary();
        return holds;
    }

private:
    void OpenEvents() {
        if (m_options.eventsFile == "-") { return; }
        m_file.exceptions(std::ios::failbit | std::ios::badbit);
        m_file.open(m_options.eventsFile);
    }

    void AddZoneController(const DeviceOption& device, std::chrono::milliseconds period) {
        ZoneController& controller = m_installation.AddZoneController(device.id, device.address);
        controller.RepeatStatus(controller.QuietStatus(), period);
        m_zoneControllers.push_back(&controller);
    }

    void Write(const nlohmann::ordered_json& line) {
        (m_file.is_open() ? m_file : std::cout) << line << std::endl; // flushed: scripts wait for lines
    }

    void WriteNewEvents(std::chrono::milliseconds timeout) {
        const std::vector<Event> events = m_installation.Events().WaitForMore(m_written, timeout);
        for (const Event& event : events) { Write(ToJson(event, m_start)); }
        m_written += events.size();
    }

    [[nodiscard]] bool TimeIsOver() const {
        return m_options.duration > 0 && Clock::now() - m_start >= std::chrono::duration<double>(m_options.duration);
    }

    [[nodiscard]] bool EnoughClosed() const {
        return m_options.untilClose > 0 &&
               m_installation.Events().Count(Received(command::kCloseAudio)) >= m_options.untilClose;
    }

    void WriteSummary() {
        for (const ZoneController* controller : m_zoneControllers) {
            for (const Recording& recording : controller->Recordings()) {
                Write(ToJson(recording, controller->Id(), m_start));
            }
            if (!m_options.recordDirectory.empty()) { WriteWavs(*controller); }
        }
    }

    void WriteWavs(const ZoneController& controller) {
        std::filesystem::create_directories(m_options.recordDirectory);
        const std::uint32_t served = controller.ZonesServed();
        for (int zone = 1; zone <= kZones; ++zone) {
            if ((served & (1U << (zone - 1))) == 0) { continue; }
            const std::string path = m_options.recordDirectory + "/zcu" + std::to_string(controller.Id()) + "-zone" +
                                     std::to_string(zone) + ".wav";
            controller.WriteWav(zone, path);
            Write({{"event", "wav"}, {"device", controller.Id()}, {"zone", zone}, {"file", path}});
        }
    }

    const SimOptions m_options;
    const EndSignals& m_signals;
    const Clock::time_point m_start = Clock::now();
    std::ofstream m_file;
    Installation m_installation;
    std::vector<const ZoneController*> m_zoneControllers;
    std::size_t m_written = 0; // events
};

bool Simulate(const SimOptions& options) {
    const EndSignals signals;
    if (Simulator(options, signals).Run()) { return true; }
    std::cerr << "k740-sim: the time is over, but fewer than " << options.untilClose << " close-audio requests came\n";
    return false;
}

/// Plays the devices in one half of a private network and runs the host in the other. @return the host's exit status
int SimulateWithHost(const SimOptions& options) {
    PrivateNetwork::Options addresses;
    for (const auto* devices : {&options.zoneControllers, &options.pagingStations}) {
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
            "Plays zone controllers and paging stations in the network namespace in which it is started, or in "
            "a private network together with a host");
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
