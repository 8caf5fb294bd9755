// Commands about calls between paging stations and the host's intercoms.
#include "sim/command_table.h"

namespace k740::sim {
namespace {

constexpr std::uint32_t kFirstIntercom = 5000;
constexpr std::uint32_t kLastIntercom = 5999;

/// A station and an intercom of the host.
struct Line {
    Line(Arguments& arguments, const CommandContext& context)
        : station(NextDevice(arguments, context, {DeviceKind::PagingStation})),
          intercom(arguments.NextNumber("the intercom", kFirstIntercom, kLastIntercom)) {}

    std::uint32_t station;
    std::uint32_t intercom;
};

Action Call(Arguments& arguments, const CommandContext& context) {
    return [line = Line(arguments, context)](Stage& stage) {
        Acting<PagingStation>(stage, line.station).Invite(line.intercom);
    };
}

Action Handshake(Arguments& arguments, const CommandContext& context) {
    return [line = Line(arguments, context)](Stage& stage) {
        Acting<PagingStation>(stage, line.station).Handshake(line.intercom);
    };
}

template <std::uint8_t kCode> Action AnswerCall(Arguments& arguments, const CommandContext& context) {
    return [line = Line(arguments, context)](Stage& stage) {
        Acting<PagingStation>(stage, line.station).AnswerCall(line.intercom, kCode);
    };
}

Action HangUp(Arguments& arguments, const CommandContext& context) {
    return [line = Line(arguments, context)](Stage& stage) {
        auto& station = Acting<PagingStation>(stage, line.station);
        station.StopIntercomAudio();
        station.AnswerCall(line.intercom, call::kHungUp);
    };
}

} // namespace

CommandTable CallCommands() {
    return {{"call", "STATION INTERCOM", "the station calls an intercom of the host", Call},
            {"ring", "STATION INTERCOM", "the station tells the intercom that it rings", AnswerCall<call::kRinging>},
            {"accept", "STATION INTERCOM", "the station accepts the intercom's call", AnswerCall<call::kAccepted>},
            {"refuse", "STATION INTERCOM", "the station refuses the intercom's call", AnswerCall<call::kHungUp>},
            {"hang-up", "STATION INTERCOM", "the station ends the call, and what it says in it", HangUp},
            {"handshake", "STATION INTERCOM", "the station asks how the intercom is", Handshake}};
}

} // namespace k740::sim
