#include "sim/event_json.h"

#include "sim/packet_json.h"
#include "sim/triggers.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>

namespace k740::sim {
namespace {

using Json = nlohmann::ordered_json;

std::string Hexadecimal(std::uint16_t command) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(command));
    return text.data();
}

double SecondsFrom(Clock::time_point start, Clock::time_point time) {
    constexpr double kMicroseconds = 1e6;
    return std::round(std::chrono::duration<double>(time - start).count() * kMicroseconds) / kMicroseconds;
}

std::string Text(const Endpoint& endpoint) {
    return endpoint.ip + ':' + std::to_string(endpoint.port);
}

/// Coordinated universal time with milliseconds.
std::string DateOf(Clock::time_point time) {
    const auto date = std::chrono::system_clock::now() -
                      std::chrono::duration_cast<std::chrono::system_clock::duration>(Clock::now() - time);
    const std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count() % 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::ostringstream text;
    text << std::put_time(&parts, "%Y-%m-%dT%H:%M:%S.") << std::setw(3) << std::setfill('0') << milliseconds << 'Z';
    return text.str();
}

Json CommandJson(const Event& event, Clock::time_point start) {
    const CommandOutcome& outcome = *event.command;
    Json json{{"time", SecondsFrom(start, event.time)},
              {"event", EventName(event.kind)},
              {"origin", outcome.origin},
              {"text", outcome.text}};
    if (outcome.error.empty()) {
        json["result"] = "done";
    } else {
        json["error"] = outcome.error;
    }
    if (!outcome.lines.empty()) { json["lines"] = outcome.lines; }
    return json;
}

Json AudioFields(const Event& event, Clock::time_point start) {
    using enum Event::Kind;
    Json json = Json::object();
    if (event.kind == AudioBegins || event.kind == AudioEnds) {
        json["task"] = event.audio->task;
        json["group"] = Text(event.peer);
    }
    if (event.kind == IntercomBegins || event.kind == IntercomEnds) { json["intercom"] = event.audio->intercom; }
    if (event.kind == AudioBegins || event.kind == IntercomBegins || event.kind == StreamBegins) { return json; }
    json["datagrams"] = event.audio->datagrams;
    if (event.kind != StreamEnds) { json["gaps"] = event.audio->gaps; }
    if (event.audio->last) { json["last"] = SecondsFrom(start, *event.audio->last); }
    return json;
}

} // namespace

Json ReadyJson(Clock::time_point start) {
    return {{"time", 0.0}, {"event", "ready"}, {"date", DateOf(start)}};
}

Json ToJson(const Event& event, Clock::time_point start) {
    if (event.command) { return CommandJson(event, start); }
    Json json{{"time", SecondsFrom(start, event.time)},
              {"device", event.device},
              {"event", EventName(event.kind)},
              {"peer", Text(event.peer)}};
    if (event.packet) {
        json["command"] = Hexadecimal(event.packet->command);
        json["source"] = event.packet->source;
        json["destination"] = event.packet->destination;
        json["length"] = event.packet->length;
        json.update(PacketFields(event));
    }
    if (event.audio) { json.update(AudioFields(event, start)); }
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
              {"samples", recording.samplesHeard},
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
            {"samples", recording.samplesHeard}};
}

Json CableJson(const Endpoint& receiver, std::size_t datagrams, std::size_t missed) {
    return {{"event", "cable"}, {"receiver", Text(receiver)}, {"datagrams", datagrams}, {"missed", missed}};
}

Json StreamJson(std::uint32_t device, const Endpoint& group, std::size_t datagrams) {
    return {{"event", "streamed"}, {"device", device}, {"group", Text(group)}, {"datagrams", datagrams}};
}

} // namespace k740::sim
