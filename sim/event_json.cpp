#include "sim/event_json.h"

#include <array>
#include <cstdio>
#include <string>

namespace k740::sim {
namespace {

using Json = nlohmann::ordered_json;

const char* Name(Event::Kind kind) {
    switch (kind) {
    case Event::Kind::Received:
        return "received";
    case Event::Kind::Sent:
        return "sent";
    case Event::Kind::Lost:
        return "lost";
    case Event::Kind::JoinedGroup:
        return "joined";
    case Event::Kind::LeftGroup:
        return "left";
    case Event::Kind::EndOfStream:
        return "end-of-stream";
    }
    return "";
}

std::string Hexadecimal(std::uint16_t command) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(command));
    return text.data();
}

double SecondsFrom(Clock::time_point start, Clock::time_point time) {
    return std::chrono::duration<double>(time - start).count();
}

std::string Text(const Endpoint& endpoint) {
    return endpoint.ip + ':' + std::to_string(endpoint.port);
}

} // namespace

Json ToJson(const Event& event, Clock::time_point start) {
    Json json{{"time", SecondsFrom(start, event.time)},
              {"device", event.device},
              {"event", Name(event.kind)},
              {"peer", Text(event.peer)}};
    if (event.packet) {
        json["command"] = Hexadecimal(event.packet->command);
        json["source"] = event.packet->source;
        json["destination"] = event.packet->destination;
        json["length"] = event.packet->length;
    }
    return json;
}

Json ToJson(const Recording& recording, std::uint32_t device, Clock::time_point start) {
    Json json{{"event", "recording"},
              {"device", device},
              {"task", recording.request.taskId},
              {"zones", recording.request.zoneMask},
              {"group", Text({recording.request.group, recording.request.groupPort})},
              {"node", recording.node},
              {"datagrams", recording.datagrams},
              {"repeats", recording.repeats},
              {"gaps", recording.gaps},
              {"after_end", recording.afterEnd},
              {"foreign", recording.foreign},
              {"ends_of_others", recording.endsOfOthers},
              {"samples", recording.samples.size()},
              {"joined", SecondsFrom(start, recording.joined)},
              {"ends_of_stream", Json::array()}};
    for (const Clock::time_point end : recording.endsOfStream) {
        json["ends_of_stream"].push_back(SecondsFrom(start, end));
    }
    if (recording.left) { json["left"] = SecondsFrom(start, *recording.left); }
    return json;
}

Json ToJson(const IntercomRecording& recording, std::uint32_t device) {
    return {{"event", "intercom"},
            {"device", device},
            {"node", recording.node},
            {"datagrams", recording.datagrams},
            {"gaps", recording.gaps},
            {"foreign", recording.foreign},
            {"samples", recording.samples.size()}};
}

Json StreamJson(std::uint32_t device, const Endpoint& group, std::size_t datagrams) {
    return {{"event", "streamed"}, {"device", device}, {"group", Text(group)}, {"datagrams", datagrams}};
}

} // namespace k740::sim
