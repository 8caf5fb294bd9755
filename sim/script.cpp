#include "sim/script.h"

#include "sim/address.h"

#include <exception>

namespace k740::sim {
namespace {

/// Runs the work; what it throws is told with its place.
template <typename Work> auto InPlace(const std::string& place, Work work) {
    try {
        return work();
    } catch (const std::exception& error) { throw UsageError(place + ": " + error.what()); }
}

Command Understand(const CommandText& text, const CommandContext& context) {
    return InPlace(text.place, [&] { return ParseCommand(text.text, context); });
}

/// Whether the address is that of the host; one that is started here has its own.
bool IsHosts(const std::string& address, const SimOptions& options) {
    const std::uint32_t number = AddressNumber(address);
    const bool isPrivateHosts = !options.host.empty() && number == AddressNumber(kStationAddress);
    return isPrivateHosts || number == AddressNumber(options.stationAddress.value_or(kStationAddress));
}

void CheckDevice(const DeviceOption& device, const SimOptions& options, Roster& roster) {
    roster.Add(device.kind, device.id, device.address);
    if (IsHosts(device.address, options)) {
        throw std::invalid_argument("the address " + device.address + " is the host's");
    }
    if (!device.group.empty()) { CheckedGroup(device.group); }
    if (device.kind == DeviceKind::Client && device.id == options.stationNode.value_or(kDefaultStationNode)) {
        throw std::invalid_argument("client " + std::to_string(device.id) + ": the ID is the host's");
    }
}

void CheckStatusPeriod(double seconds) {
    constexpr double kShortest = 0.001; // s
    if (seconds != 0 && seconds < kShortest) { throw UsageError("the status period is below 1 ms"); }
}

Reaction UnderstandReaction(const ReactionText& text, const CommandContext& context) {
    return {InPlace(text.command.place,
                    [&] {
                        if (text.device && !context.roster.KindOf(*text.device)) {
                            throw std::invalid_argument("there is no device " + std::to_string(*text.device));
                        }
                        return MakeTrigger(text.on, text.device);
                    }),
            Seconds(text.after), Understand(text.command, context)};
}

} // namespace

Script MakeScript(const SimOptions& options) {
    Script script;
    InPlace("--station", [&] { CheckedHostAddress(options.stationAddress.value_or(kStationAddress)); });
    CheckStatusPeriod(options.statusPeriod.value_or(0));
    for (const DeviceOption& device : options.devices) {
        InPlace(device.place, [&] { CheckDevice(device, options, script.roster); });
    }
    const CommandContext context{script.roster, options.wavDirectory};
    for (const CommandText& text : options.settings) {
        script.settings.push_back({Understand(text, context), text.place});
    }
    for (const TimelineText& text : options.timeline) {
        const auto seconds = [](double value) { return Seconds(value); };
        TimelineEntry entry;
        entry.at = Seconds(text.at);
        if (text.every) { entry.every = seconds(*text.every); }
        if (text.until) { entry.until = seconds(*text.until); }
        entry.command = Understand(text.command, context);
        script.timeline.push_back(std::move(entry));
    }
    for (const ReactionText& text : options.reactions) {
        script.reactions.push_back(UnderstandReaction(text, context));
    }
    return script;
}

} // namespace k740::sim
