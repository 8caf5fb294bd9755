// Commands about clients, which make requests of the host's virtual zone controllers.
#include "sim/command_table.h"

namespace k740::sim {
namespace {

constexpr std::uint32_t kLastController = 999;
constexpr std::uint32_t kMostTask = 0xFFFFFFFF;
constexpr std::uint32_t kLongestPeriodMs = 3'600'000;
constexpr std::uint32_t kHighestPriority = 255;
constexpr std::uint32_t kUsualPriority = 70;
constexpr std::uint32_t kPriorityComplement = 256; // requests carry this less the priority
constexpr std::size_t kExtensionSize = 28;         // bytes

/// A client and a virtual zone controller of the host.
struct Pair {
    Pair(Arguments& arguments, const CommandContext& context)
        : client(NextDevice(arguments, context, {DeviceKind::Client})),
          controller(arguments.NextNumber("the virtual controller", 1, kLastController)) {}

    std::uint32_t client;
    std::uint32_t controller;
};

Action Heartbeat(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    if (!arguments.Skip("every")) {
        return [=](Stage& stage) { Acting<Client>(stage, pair.client).SendHeartbeat(pair.controller); };
    }
    const std::chrono::milliseconds period(arguments.NextNumber("the period", 0, kLongestPeriodMs));
    return [=](Stage& stage) { Acting<Client>(stage, pair.client).RepeatHeartbeat(pair.controller, period); };
}

Action Play(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    PlayRequest request;
    request.sequence = 1;
    request.taskId = arguments.NextNumber("the task", 1, kMostTask);
    request.auxPort = request.taskId;
    request.zoneMask = arguments.NextZones();
    request.group = arguments.NextGroup();
    request.groupPort = kAudioPort;
    request.origin = pair.client;
    const std::uint32_t priority =
        arguments.Skip("priority") ? arguments.NextNumber("the priority", 1, kHighestPriority) : kUsualPriority;
    request.priority = static_cast<std::uint16_t>(kPriorityComplement - priority);
    return [=](Stage& stage) { Acting<Client>(stage, pair.client).RequestPlay(pair.controller, request); };
}

Action CloseAudio(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    const std::uint32_t task = arguments.NextNumber("the task", 1, kMostTask);
    return [=](Stage& stage) { Acting<Client>(stage, pair.client).CloseAudio(pair.controller, task); };
}

Action CloseZones(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    const std::uint32_t zones = arguments.NextZones();
    return [=](Stage& stage) { Acting<Client>(stage, pair.client).CloseZones(pair.controller, zones); };
}

Action EndOfAudio(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    const Endpoint group{arguments.NextGroup(), kAudioPort};
    return [=](Stage& stage) { Acting<Client>(stage, pair.client).SendEndOfStream(group, pair.controller); };
}

Action Ask(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    const bool version = arguments.NextOf("the question", {"version", "groups"}) == 0;
    return [=](Stage& stage) {
        auto& client = Acting<Client>(stage, pair.client);
        version ? client.QueryVersion(pair.controller) : client.QueryZoneGroups(pair.controller);
    };
}

template <bool kAdd> Action ExtendTask(Arguments& arguments, const CommandContext& context) {
    const Pair pair(arguments, context);
    ByteWriter writer;
    writer.Put(arguments.NextNumber("the number", 0, kMostTask));
    const Bytes extension = writer.Fill(kExtensionSize - writer.Get().size(), 0).Get();
    return [=](Stage& stage) {
        auto& client = Acting<Client>(stage, pair.client);
        kAdd ? client.AddTaskZones(pair.controller, extension) : client.RemoveTaskZones(pair.controller, extension);
    };
}

} // namespace

CommandTable ClientCommands() {
    return {{"heartbeat", "CLIENT CONTROLLER [every MS]",
             "one heartbeat, or one now and then every MS until every 0; the host then reports the status", Heartbeat},
            {"play", "CLIENT CONTROLLER TASK ZONES GROUP [priority N]",
             "asks a virtual controller to play a group; ZONES such as 1,3 or all; the audio is sent with talk", Play},
            {"end-of-audio", "CLIENT CONTROLLER GROUP", "tells in the group that the controller shall leave it",
             EndOfAudio},
            {"close-audio", "CLIENT CONTROLLER TASK", "asks a virtual controller to end a task", CloseAudio},
            {"close-zones", "CLIENT CONTROLLER ZONES", "asks a virtual controller to silence zones", CloseZones},
            {"ask", "CLIENT CONTROLLER version|groups", "asks a virtual controller", Ask},
            {"add-zones", "CLIENT CONTROLLER NUMBER", "zones join a task: 28 bytes, which begin with the number",
             ExtendTask<true>},
            {"remove-zones", "CLIENT CONTROLLER NUMBER", "zones leave a task", ExtendTask<false>}};
}

} // namespace k740::sim
