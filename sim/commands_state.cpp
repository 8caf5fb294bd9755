// Commands about what devices are and report, and about the run.
#include "sim/command_table.h"

namespace k740::sim {
namespace {

constexpr std::uint32_t kMostByte = 0xFF;
constexpr std::uint32_t kMostWord = 0xFFFF;
constexpr std::uint32_t kMostNumber = 0xFFFFFFFF;
constexpr std::size_t kLevelsV2 = 4;
constexpr std::size_t kLevelsV3 = 10;

template <typename Report> using Change = std::function<void(Report&)>;

std::uint8_t NextByte(Arguments& arguments) {
    return static_cast<std::uint8_t>(arguments.NextNumber("the value", 0, kMostByte));
}

std::uint16_t NextWord(Arguments& arguments) {
    return static_cast<std::uint16_t>(arguments.NextNumber("the value", 0, kMostWord));
}

std::size_t NextIndex(Arguments& arguments) {
    return arguments.NextNumber("the number", 1, kZones) - 1;
}

Change<StatusReport> NextControllerField(Arguments& arguments) {
    const std::vector<std::string> fields{"device",  "fault",     "zone-faults", "extra-a",
                                          "extra-b", "amplifier", "zone",        "task"};
    const std::size_t field = arguments.NextOf("the field", fields);
    if (field <= 4) {
        constexpr std::array kBytes{&StatusReport::deviceStatus, &StatusReport::deviceFault, &StatusReport::zoneFlags,
                                    &StatusReport::extraA, &StatusReport::extraB};
        return
            [member = kBytes.at(field), value = NextByte(arguments)](StatusReport& report) { report.*member = value; };
    }
    const std::size_t index = NextIndex(arguments);
    if (field == 7) {
        return [index, value = arguments.NextNumber("the value", 0, kMostNumber)](StatusReport& report) {
            report.zoneValues.at(index) = value;
        };
    }
    const auto member = field == 5 ? &StatusReport::amplifierStates : &StatusReport::zoneStates;
    return [=, value = NextByte(arguments)](StatusReport& report) { (report.*member).at(index) = value; };
}

Change<PagingStatus> NextStationField(Arguments& arguments) {
    switch (arguments.NextOf("the field", {"state", "activity", "word-a", "word-b", "extra"})) {
    case 0:
        return [value = NextByte(arguments)](PagingStatus& status) { status.state = value; };
    case 1:
        return [value = NextByte(arguments)](PagingStatus& status) { status.status1 = value; };
    case 2:
        return [value = NextWord(arguments)](PagingStatus& status) { status.wordA = value; };
    case 3:
        return [value = NextWord(arguments)](PagingStatus& status) { status.wordB = value; };
    default:
        return [value = NextByte(arguments)](PagingStatus& status) { status.status8 = value; };
    }
}

/// Reads fields up to the end, at least one; the change makes them all.
template <typename Report>
Change<Report> NextFields(Arguments& arguments, Change<Report> (*nextField)(Arguments& arguments)) {
    std::vector<Change<Report>> changes;
    do { changes.push_back(nextField(arguments)); } while (!arguments.AtEnd());
    return [changes](Report& report) {
        for (const auto& change : changes) { change(report); }
    };
}

Action Status(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::ZoneController, DeviceKind::PagingStation});
    if (context.roster.KindOf(id) == DeviceKind::ZoneController) {
        return [id, change = NextFields<StatusReport>(arguments, NextControllerField)](Stage& stage) {
            stage.installation.Find<ZoneController>(id)->ChangeStatus(change);
        };
    }
    return [id, change = NextFields<PagingStatus>(arguments, NextStationField)](Stage& stage) {
        stage.installation.Find<PagingStation>(id)->ChangeStatus(change);
    };
}

std::vector<std::uint8_t> NextAttenuations(Arguments& arguments) {
    std::vector<std::uint8_t> levels;
    while (!arguments.AtEnd()) { levels.push_back(NextByte(arguments)); }
    if (levels.size() != kLevelsV2 && levels.size() != kLevelsV3) {
        throw std::invalid_argument("there must be 4 attenuations (generation 2) or 10 (generation 3)");
    }
    return levels;
}

Action SetVolumes(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::ZoneController});
    return [id, levels = NextAttenuations(arguments)](Stage& stage) {
        stage.installation.Find<ZoneController>(id)->SetVolumes(levels);
    };
}

Action TurnVolumes(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::ZoneController});
    return [id, levels = NextAttenuations(arguments)](Stage& stage) {
        auto* controller = stage.installation.Find<ZoneController>(id);
        controller->SetVolumes(levels);
        const bool isV2 = levels.size() == kLevelsV2;
        controller->SendToStation(isV2 ? command::kSetVolumeV2Answer : command::kSetVolumeV3Answer, levels);
    };
}

Action SetGeneration(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::ZoneController});
    const auto generation = arguments.NextNumber("the generation", 2, 3) == 2 ? Generation::V2 : Generation::V3;
    return [=](Stage& stage) { stage.installation.Find<ZoneController>(id)->SetGeneration(generation); };
}

std::uint32_t NextAnyDevice(Arguments& arguments, const CommandContext& context) {
    return NextDevice(
        arguments, context,
        {DeviceKind::ZoneController, DeviceKind::PagingStation, DeviceKind::AuxInterface, DeviceKind::Client});
}

Action SetDeviceVersion(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextAnyDevice(arguments, context);
    Version version;
    do {
        constexpr std::array kTexts{&Version::application, &Version::kernel, &Version::mcu};
        const auto text = kTexts.at(arguments.NextOf("the part", {"application", "kernel", "mcu"}));
        version.*text = arguments.Next("the version");
    } while (!arguments.AtEnd());
    return [=](Stage& stage) { stage.installation.Find<Device>(id)->SetVersion(version); };
}

template <bool kOn> Action SetPower(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextAnyDevice(arguments, context);
    return [id](Stage& stage) { stage.installation.Find<Device>(id)->SetPower(kOn); };
}

Action Help(Arguments&, const CommandContext&) {
    return [](Stage& stage) {
        for (const CommandForm& form : Commands()) {
            stage.said.push_back(form.name + (form.syntax.empty() ? "" : ' ' + form.syntax) + ": " + form.help);
        }
    };
}

Action End(Arguments&, const CommandContext&) {
    return [](Stage& stage) { stage.ended = true; };
}

} // namespace

CommandTable StateCommands() {
    return {
        {"status",
         "CONTROLLER device|fault|zone-faults|extra-a|extra-b VALUE | amplifier|zone|task NUMBER VALUE ...; STATION "
         "state|activity|word-a|word-b|extra VALUE ...",
         "changes the report, sends it at once and from then on", Status},
        {"volumes", "CONTROLLER ATTENUATION...", "4 (generation 2) or 10 values, 0 loud to 19 quiet, 255: no channel",
         SetVolumes},
        {"turn", "CONTROLLER ATTENUATION...",
         "the same, by somebody at the controller: it says that volumes were set, on which the host may read them",
         TurnVolumes},
        {"generation", "CONTROLLER 2|3", "of the zone controller; sets its volumes to 0", SetGeneration},
        {"version", "DEVICE application|kernel|mcu TEXT ...", "what the device tells of its version", SetDeviceVersion},
        {"remove", "DEVICE", "takes the device's power: it hears, answers and reports nothing", SetPower<false>},
        {"restore", "DEVICE", "gives its power back", SetPower<true>},
        {"help", "", "lists the commands", Help},
        {"end", "", "ends the run", End}};
}

} // namespace k740::sim
