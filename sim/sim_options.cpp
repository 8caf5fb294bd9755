#include "sim/sim_options.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>

namespace k740::sim {
namespace {

constexpr double kLongestTime = 1e9; // s
constexpr std::size_t kMostCloseRequests = 1'000'000'000;
constexpr std::uint32_t kFirstNode = 9500;
constexpr std::uint32_t kLastNode = 9999;

constexpr const char* kFooter = R"(Examples:
  k740-sim --zcu 33@192.168.1.33 --rpk 5000@192.168.8.99 --accept-calls --record heard -- ./my-host
      two devices and a host in a private network; what zones and callers hear becomes WAV files
  k740-sim --scenario scenarios/small-station.yaml -- ./my-host
      an installation from a file
  k740-sim --scenario scenarios/small-station.yaml --commands
      in the network namespace at hand, where the devices' addresses must exist; type "help"

Exit status: 0 as asked, 1 it went wrong, 2 unusable options or scenario, 128 and the signal's number after a signal;
the host's own when the host ended first.)";

struct HelpText : CLI::Formatter {
    std::string make_usage(const CLI::App* /*app*/, std::string name) const override {
        return "Usage: " + name +
               " [OPTION]... [-- HOST [ARGUMENT]...]\n\n"
               "HOST is the program to run as the station's host, with its arguments: devices and host then have a\n"
               "private network of their own, and the simulator ends with the host.\n";
    }
};

/// @return what is wrong with a time, empty when nothing is
std::string CheckTime(const std::string& text) {
    double seconds = 0;
    const bool isTime = CLI::detail::lexical_cast(text, seconds) && seconds >= 0 && seconds <= kLongestTime;
    return isTime ? "" : "a time in seconds is expected, not " + text;
}

DeviceOption ParseDevice(DeviceKind kind, const std::string& name, const std::string& text) {
    DeviceOption device;
    device.kind = kind;
    device.place = name + ' ' + text;
    const std::size_t at = text.find('@');
    if (at == std::string::npos || !CLI::detail::lexical_cast(text.substr(0, at), device.id)) {
        throw CLI::ValidationError(text, "is not ID@ADDRESS");
    }
    const std::size_t slash = text.find('/', at);
    device.address = text.substr(at + 1, slash == std::string::npos ? slash : slash - at - 1);
    if (slash != std::string::npos) { device.group = text.substr(slash + 1); }
    return device;
}

void DeclareDevices(CLI::App& app, const std::string& name, DeviceKind kind, std::vector<DeviceOption>& devices,
                    const std::string& description) {
    const auto parse = [=, &devices](const CLI::results_t& texts) {
        for (const std::string& text : texts) { devices.push_back(ParseDevice(kind, name, text)); }
        return true;
    };
    app.add_option(name, parse, description)
        ->type_name("ID@ADDRESS[/GROUP]")
        ->expected(1, -1)
        ->allow_extra_args()
        ->group("Devices");
}

void DeclareRun(CLI::App& app, SimOptions& options) {
    app.add_option("--scenario", options.scenarioFile,
                   "Devices, their behaviour and what happens when, from a YAML file; options are added to it and go "
                   "before it")
        ->type_name("FILE");
    app.add_option("--station", options.stationAddress, "Address that reports go to [192.168.1.166]")
        ->type_name("ADDRESS");
    app.add_option("--node", options.stationNode, "ID of the station's host [9500]")
        ->type_name("ID")
        ->check(CLI::Range(kFirstNode, kLastNode).description(""));
    app.add_option("--status-period", options.statusPeriod, "Seconds between status reports, 0 for none [2]")
        ->type_name("SECONDS")
        ->check(CheckTime);
    app.add_flag("--accept-calls", options.acceptCalls, "Paging stations accept the calls of intercoms");
    app.add_flag("--commands", options.readCommands,
                 "Take commands from standard input, one in a line; \"help\" lists them. A host then has none");
    app.add_option("--until-close", options.untilClose, "End after this many close-audio requests")
        ->type_name("COUNT")
        ->check(CLI::Range(std::size_t{1}, kMostCloseRequests).description(""));
    app.add_option("--duration", options.duration, "End after this many seconds; 0 for never")
        ->type_name("SECONDS")
        ->check(CheckTime);
}

void DeclareOutput(CLI::App& app, SimOptions& options) {
    const std::map<std::string, PeriodicLines> choices{
        {"all", PeriodicLines::All}, {"changes", PeriodicLines::Changes}, {"none", PeriodicLines::None}};
    app.add_option("--record", options.recordDirectory,
                   "Directory for WAV files of what zones and paging stations hear")
        ->type_name("DIRECTORY")
        ->group("Output");
    app.add_option("--events", options.eventsFile, "File for events as JSON lines, - for standard output")
        ->type_name("FILE")
        ->capture_default_str()
        ->group("Output");
    app.add_option("--periodic", options.periodicLines,
                   "Which heartbeats and status reports are told: all, those that differ from the one before "
                   "(changes), or none [changes]")
        ->type_name("WHICH")
        ->transform(CLI::CheckedTransformer(choices).description(""))
        ->group("Output");
}

} // namespace

int TakeHost(int argc, const char* const* argv, SimOptions& options) {
    const auto* const end = argv + argc;
    const auto* const mark = std::find_if(argv, end, [](const char* word) { return std::string_view(word) == "--"; });
    if (mark == end) { return argc; }
    options.host.assign(mark + 1, end);
    if (options.host.empty()) { throw UsageError("there is no host behind --"); }
    return static_cast<int>(mark - argv);
}

void DeclareOptions(CLI::App& app, SimOptions& options) {
    DeclareDevices(
        app, "--zcu", DeviceKind::ZoneController, options.devices,
        "Zone controllers to play, such as 33@192.168.1.33. With /GROUP the group of zone 1 has a tone on it");
    DeclareDevices(app, "--rpk", DeviceKind::PagingStation, options.devices,
                   "Paging stations to play, such as 5000@192.168.8.99. With /GROUP they talk to it: a tone");
    DeclareDevices(app, "--aux", DeviceKind::AuxInterface, options.devices,
                   "AUX interfaces to play, such as 7000@192.168.3.1. With /GROUP they stream a tone to it");
    DeclareDevices(app, "--client", DeviceKind::Client, options.devices,
                   "Clients of the host's virtual zone controllers, such as 9501@192.168.4.1. With /GROUP they stream "
                   "a tone to it");
    DeclareRun(app, options);
    DeclareOutput(app, options);
    app.formatter(std::make_shared<HelpText>());
    app.footer(kFooter);
}

} // namespace k740::sim
