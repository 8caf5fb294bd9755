// Commands about audio that devices send.
#include "sim/command_table.h"
#include "sim/tone.h"
#include "sim/wav_file.h"

namespace k740::sim {
namespace {

constexpr double kToneHertz = 441;                // whole periods in a second of samples
constexpr std::size_t kSamplesPerDatagram = 2048; // of the type that is streamed
constexpr const char* kAudioHelp = "a tone until it is quiet, or a WAV file once or over and over";
constexpr std::uint32_t kLastDevice = 0xFFFF;

/// Reads an optional WAV file and how it is played.
AudioStream NextAudio(Arguments& arguments, const CommandContext& context) {
    AudioStream stream;
    if (arguments.AtEnd()) {
        stream.pcm = Tone(kToneHertz, kSampleRate);
        return stream;
    }
    const std::string file = context.directory / arguments.Next("the WAV file");
    stream.pcm = ReadWav(file);
    if (stream.pcm.empty()) { throw std::runtime_error(file + " holds no samples"); }
    if (arguments.Skip("loop")) { return stream; }
    stream.count = (stream.pcm.size() + kSamplesPerDatagram - 1) / kSamplesPerDatagram;
    stream.pcm.resize(*stream.count * kSamplesPerDatagram); // ends with silence
    return stream;
}

Action Talk(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(
        arguments, context,
        {DeviceKind::PagingStation, DeviceKind::AuxInterface, DeviceKind::Client, DeviceKind::ZoneController});
    const Endpoint group{arguments.NextGroup(), kAudioPort};
    return [=, audio = NextAudio(arguments, context)](Stage& stage) { Acting<Device>(stage, id).Stream(group, audio); };
}

Action Speak(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::PagingStation});
    const std::uint32_t intercom = arguments.NextNumber("the intercom", 1, kLastDevice);
    AudioStream audio = NextAudio(arguments, context);
    audio.stream = intercom;
    return [=](Stage& stage) { Acting<PagingStation>(stage, id).SendIntercomAudio(audio); };
}

Action Quiet(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(
        arguments, context,
        {DeviceKind::PagingStation, DeviceKind::AuxInterface, DeviceKind::Client, DeviceKind::ZoneController});
    return [id](Stage& stage) { stage.installation.Find<Device>(id)->StopStreams(); };
}

Action PlayZone(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::ZoneController});
    const auto zone = static_cast<int>(arguments.NextNumber("the zone", 1, kZones));
    const std::string group = arguments.NextGroup();
    return [=, audio = NextAudio(arguments, context)](Stage& stage) {
        auto& controller = Acting<ZoneController>(stage, id);
        controller.SetZoneGroup(zone, group);
        controller.StreamZone(zone, audio);
    };
}

/// Reads a zone and its group, or none.
struct ZoneAndGroup {
    ZoneAndGroup(Arguments& arguments, const CommandContext& context)
        : id(NextDevice(arguments, context, {DeviceKind::ZoneController})),
          zone(static_cast<int>(arguments.NextNumber("the zone", 1, kZones))),
          group(arguments.Skip("none") ? std::string() : arguments.NextGroup()) {}

    std::uint32_t id;
    int zone;
    std::string group;
};

Action Circulate(Arguments& arguments, const CommandContext& context) {
    return [words = ZoneAndGroup(arguments, context)](Stage& stage) {
        stage.installation.Find<ZoneController>(words.id)->Circulate(words.zone, words.group);
    };
}

Action SetZoneGroup(Arguments& arguments, const CommandContext& context) {
    return [words = ZoneAndGroup(arguments, context)](Stage& stage) {
        stage.installation.Find<ZoneController>(words.id)->SetZoneGroup(words.zone, words.group);
    };
}

} // namespace

CommandTable AudioCommands() {
    return {
        {"talk", "DEVICE GROUP [WAV [loop]]",
         std::string("a paging station's push-to-talk audio, an AUX interface's input: ") + kAudioHelp, Talk},
        {"speak", "STATION INTERCOM [WAV [loop]]", std::string("intercom audio: ") + kAudioHelp, Speak},
        {"quiet", "DEVICE", "ends what the device streams", Quiet},
        {"play-zone", "CONTROLLER ZONE GROUP [WAV [loop]]",
         std::string("what a zone plays, on its group: ") + kAudioHelp, PlayZone},
        {"circulate", "CONTROLLER ZONE GROUP|none", "sends what the zone hears of broadcasts on to its group",
         Circulate},
        {"zone-group", "CONTROLLER ZONE GROUP|none", "the group that the controller tells for the zone", SetZoneGroup}};
}

} // namespace k740::sim
