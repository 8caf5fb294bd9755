#include "sim/sim_options.h"

namespace k740::sim {
namespace {

std::vector<DeviceOption> ParseDevices(const CLI::results_t& texts) {
    std::vector<DeviceOption> devices;
    for (const std::string& text : texts) {
        DeviceOption device;
        const std::size_t at = text.find('@');
        if (at == std::string::npos || !CLI::detail::lexical_cast(text.substr(0, at), device.id)) {
            throw CLI::ValidationError(text, "is not ID@ADDRESS");
        }
        const std::size_t slash = text.find('/', at);
        device.address = text.substr(at + 1, slash == std::string::npos ? slash : slash - at - 1);
        if (slash != std::string::npos) { device.group = text.substr(slash + 1); }
        devices.push_back(device);
    }
    return devices;
}

void DeclareDevices(CLI::App& app, const std::string& name, std::vector<DeviceOption>& devices,
                    const std::string& description) {
    const auto parse = [&devices](const CLI::results_t& texts) {
        devices = ParseDevices(texts);
        return true;
    };
    app.add_option(name, parse, description)->type_name("ID@ADDRESS[/GROUP]")->expected(1, -1);
}

} // namespace

void DeclareOptions(CLI::App& app, SimOptions& options) {
    DeclareDevices(
        app, "--zcu", options.zoneControllers,
        "Zone controllers to play, such as 33@192.168.1.33. With /GROUP the group of zone 1 has a tone on it");
    DeclareDevices(app, "--rpk", options.pagingStations,
                   "Paging stations to play, such as 5000@192.168.8.99. With /GROUP they talk to it: a tone");
    DeclareDevices(app, "--aux", options.auxInterfaces,
                   "AUX interfaces to play, such as 7000@192.168.3.1. With /GROUP they stream a tone to it");
    app.add_flag("--accept-calls", options.acceptCalls, "Paging stations accept the calls of intercoms");
    app.add_option("--station", options.stationAddress, "Address that reports go to")->capture_default_str();
    app.add_option("--record", options.recordDirectory, "Directory for a WAV file per zone that heard anything");
    app.add_option("--events", options.eventsFile, "File for events as JSON lines, - for standard output")
        ->capture_default_str();
    app.add_option("--status-period", options.statusPeriod, "Seconds between status reports, 0 for none")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    app.add_option("--until-close", options.untilClose, "End after this many close-audio requests");
    app.add_option("host", options.host,
                   "Program to run as the station's host, with its arguments, behind --: devices and host then have a "
                   "private network of their own, and the simulator ends with the host and with its exit status");
    app.add_option("--duration", options.duration, "End after this many seconds")->check(CLI::NonNegativeNumber);
}

} // namespace k740::sim
