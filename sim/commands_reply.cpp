// Commands about how devices meet requests.
#include "sim/command_table.h"
#include "sim/packet_names.h"

namespace k740::sim {
namespace {

constexpr std::uint32_t kMostResult = 0xFFFF;
constexpr std::uint32_t kMostDelayMs = 3'600'000;
constexpr std::uint32_t kMostEvery = 1'000'000;
constexpr std::uint32_t kLastDevice = 0xFFFFFFFF;
constexpr std::uint16_t kFirstAnswerCode = 0x8000;

const std::vector<std::string> kPlayReplies{"accept", "accept-without-join", "accept-255", "refuse",
                                            "silent", "join-refused",        "join-never"};
const std::vector<std::string> kCallReplies{"nothing", "ring", "accept", "refuse"}; // in the order of CallReply

PlayReply ReplyAt(std::size_t place) {
    using enum PlayReply;
    const std::vector<PlayReply> replies{AcceptWithJoin, AcceptWithoutJoin, Accept255, Refuse,
                                         Silent,         JoinRefused,       JoinNever};
    return replies.at(place);
}

Action Reply(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::ZoneController});
    PlayBehaviour behaviour;
    behaviour.reply = ReplyAt(arguments.NextOf("the reply", kPlayReplies));
    if (!arguments.AtEnd() && arguments.Peek() != "twice") {
        behaviour.answerDelay = std::chrono::milliseconds(arguments.NextNumber("the delay", 0, kMostDelayMs));
    }
    behaviour.answerTwice = arguments.Skip("twice");
    return [=](Stage& stage) { stage.installation.Find<ZoneController>(id)->SetBehaviour(behaviour); };
}

/// Reads results up to "delay" or the end; none for "silent".
template <typename Result> std::vector<Result> NextResults(Arguments& arguments) {
    std::vector<Result> results;
    if (arguments.Skip("silent")) { return results; }
    do {
        results.push_back(static_cast<Result>(arguments.NextNumber("the result", 0, kMostResult)));
    } while (!arguments.AtEnd() && arguments.Peek() != "delay");
    return results;
}

Action AnswerCalls(std::uint32_t id, Arguments& arguments) {
    CallBehaviour behaviour;
    behaviour.reply = static_cast<CallReply>(arguments.NextOf("the answer", kCallReplies));
    behaviour.delay = NextDelay(arguments);
    return [=](Stage& stage) { stage.installation.Find<PagingStation>(id)->SetCallBehaviour(behaviour); };
}

Action AnswerTasks(std::uint32_t id, Arguments& arguments) {
    TaskBehaviour behaviour;
    behaviour.results = NextResults<std::uint16_t>(arguments);
    behaviour.delay = NextDelay(arguments);
    return [=](Stage& stage) { stage.installation.Find<PagingStation>(id)->SetBehaviour(behaviour); };
}

Action AnswerMonitors(std::uint32_t id, Arguments& arguments) {
    MonitorBehaviour behaviour;
    behaviour.results = NextResults<std::int16_t>(arguments);
    behaviour.delay = NextDelay(arguments);
    return [=](Stage& stage) { stage.installation.Find<PagingStation>(id)->SetMonitorBehaviour(behaviour); };
}

Action Answer(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(arguments, context, {DeviceKind::PagingStation});
    switch (arguments.NextOf("the request", {"calls", "tasks", "monitors"})) {
    case 0:
        return AnswerCalls(id, arguments);
    case 1:
        return AnswerTasks(id, arguments);
    default:
        return AnswerMonitors(id, arguments);
    }
}

/// Reads the name of a request, if there is one.
std::optional<std::uint16_t> NextRequest(Arguments& arguments) {
    const auto code = PacketCode(arguments.Peek());
    if (!code || *code >= kFirstAnswerCode) { return std::nullopt; }
    arguments.Next("the request");
    return code;
}

AnswerFault NextFault(Arguments& arguments) {
    AnswerFault fault;
    do {
        switch (arguments.NextOf("the fault", {"none", "silent", "twice", "delay", "source", "lose"})) {
        case 1:
            fault.silent = true;
            break;
        case 2:
            fault.twice = true;
            break;
        case 3:
            fault.delay = std::chrono::milliseconds(arguments.NextNumber("the delay", 0, kMostDelayMs));
            break;
        case 4:
            fault.source = arguments.NextNumber("the source", 0, kLastDevice);
            break;
        case 5:
            fault.loseEvery = arguments.NextNumber("the number", 1, kMostEvery);
            break;
        default:
            break;
        }
    } while (!arguments.AtEnd());
    return fault;
}

Action SetFault(Arguments& arguments, const CommandContext& context) {
    const std::uint32_t id = NextDevice(
        arguments, context,
        {DeviceKind::ZoneController, DeviceKind::PagingStation, DeviceKind::AuxInterface, DeviceKind::Client});
    const auto request = NextRequest(arguments);
    return [=, fault = NextFault(arguments)](Stage& stage) {
        auto* device = stage.installation.Find<Device>(id);
        request ? device->SetAnswerFault(*request, fault) : device->SetAnswerFault(fault);
    };
}

} // namespace

CommandTable ReplyCommands() {
    return {
        {"reply",
         "CONTROLLER accept|accept-without-join|accept-255|refuse|silent|join-refused|join-never [DELAY_MS] [twice]",
         "how the controller meets play requests", Reply},
        {"answer",
         "STATION calls accept|ring|refuse|nothing [delay MS] | STATION tasks|monitors RESULT...|silent [delay MS]",
         "how the station meets calls, task requests and monitor requests; result 1 is success", Answer},
        {"fault", "DEVICE [REQUEST] none|silent|twice|delay MS|source ID|lose N ...",
         "what goes wrong with answers, to one kind of request or to all; lose N: every N-th request is lost",
         SetFault}};
}

} // namespace k740::sim
