#include "sim/packet_json.h"

#include "sim/address.h"
#include "sim/packet_names.h"
#include "sim/paging_records.h"
#include "sim/query_records.h"
#include "sim/records.h"

#include <functional>
#include <map>

namespace k740::sim {
namespace {

using Json = nlohmann::ordered_json;
using Fields = std::function<Json(const Event&)>;

constexpr std::size_t kPriorityBase = 256; // requests carry this less the priority
constexpr std::size_t kLevelsV2 = 4;
constexpr std::size_t kLevelsV3 = 10;
constexpr std::size_t kSettableV3 = 8;

template <typename Value> Value At(const Event& event, std::size_t offset) {
    return ReadAt<Value>(event.packet->payload, offset);
}

std::uint8_t ByteAt(const Event& event, std::size_t offset) {
    return event.packet->payload.at(offset);
}

std::uint32_t Priority(std::uint16_t word) {
    return static_cast<std::uint32_t>(kPriorityBase - word) & 0xFFFF;
}

/// Elements of one size, one behind the other.
template <typename Value> Json List(const Event& event, std::size_t offset, std::size_t count) {
    Json list = Json::array();
    for (std::size_t i = 0; i < count; ++i) { list.push_back(At<Value>(event, offset + i * sizeof(Value))); }
    return list;
}

std::string TextAt(const Event& event, std::size_t offset) {
    std::string text;
    for (; At<std::uint8_t>(event, offset) != 0; ++offset) { text += At<char>(event, offset); } // zero beyond the end
    return text;
}

/// The other side of a call: whichever of the packet's IDs is not the device's own.
std::uint32_t OtherSide(const Event& event) {
    return event.packet->source == event.device ? event.packet->destination : event.packet->source;
}

Json PlayRequestFields(const Event& event) {
    const PlayRequest request = ReadPlayRequest(*event.packet);
    return {{"sequence", request.sequence},
            {"task", request.taskId},
            {"zones", request.zoneMask},
            {"group", request.group + ':' + std::to_string(request.groupPort)},
            {"priority", Priority(request.priority)},
            {"recovery", request.recovery},
            {"contacts", request.dryContactMask},
            {"aux_port", request.auxPort},
            {"origin", request.origin}};
}

Json PlayAnswerFields(const Event& event) {
    return {{"join_follows", ByteAt(event, 0)},
            {"result", At<std::uint16_t>(event, 1)},
            {"sequence", At<std::uint16_t>(event, 3)},
            {"task", At<std::uint32_t>(event, 21)}};
}

Json StatusFields(const Event& event) {
    Json amplifiers = List<std::uint8_t>(event, 9, 4);
    for (const auto& more : List<std::uint8_t>(event, 60, 4)) { amplifiers.push_back(more); }
    return {{"state", ByteAt(event, 0)},
            {"zone_states", List<std::uint8_t>(event, 1, 8)},
            {"amplifiers", amplifiers},
            {"fault", ByteAt(event, 17)},
            {"zone_tasks", List<std::uint32_t>(event, 18, 8)},
            {"zone_faults", ByteAt(event, 57)},
            {"extra_a", ByteAt(event, 58)},
            {"extra_b", ByteAt(event, 59)}};
}

/// Of a station, or of an intercom that was asked with a handshake.
Json PagingStatusFields(const Event& event) {
    if (event.kind != Event::Kind::Sent) { return {{"intercom", event.packet->source}, {"state", ByteAt(event, 1)}}; }
    return {{"state", ByteAt(event, 0)},
            {"activity", ByteAt(event, 1)},
            {"word_a", At<std::uint16_t>(event, 4)},
            {"word_b", At<std::uint16_t>(event, 6)},
            {"extra", ByteAt(event, 8)}};
}

Json CallAnswerFields(const Event& event) {
    const std::map<std::uint8_t, const char*> answers{
        {call::kRinging, "ringing"}, {call::kAccepted, "accepted"}, {call::kHungUp, "hung-up"}};
    const auto found = answers.find(ByteAt(event, 0));
    return {{"intercom", OtherSide(event)}, {"answer", found == answers.end() ? "unknown" : found->second}};
}

Json TaskRequestFields(const Event& event) {
    const PagingTaskRequest request = ReadPagingTaskRequest(*event.packet);
    return {{"task", request.taskId},
            {"start", request.start},
            {"priority", request.priority},
            {"zone_text", request.zones.c_str()}};
}

Json MonitorRequestFields(const Event& event) {
    const MonitorRequest request = ReadMonitorRequest(*event.packet);
    return {{"controller", request.controller}, {"zone", request.zoneIndex + 1}, {"start", request.start == 1}};
}

Json EmergencyFields(const Event& event) {
    return {{"priority", Priority(ReadEmergencyPriority(*event.packet))}};
}

Json VersionFields(const Event& event) {
    return {{"kernel", TextAt(event, 24)}, {"application", TextAt(event, 36)}, {"mcu", TextAt(event, 84)}};
}

/// Those that hardware tells; a virtual controller puts a byte before its one.
Json ZoneGroupsFields(const Event& event) {
    constexpr std::size_t kEntry = 8; // bytes
    const bool sent = event.kind == Event::Kind::Sent;
    Json groups = Json::array();
    for (std::size_t zone = 0; zone < (sent ? kZones : 1); ++zone) {
        groups.push_back(AddressText(At<std::uint32_t>(event, zone * kEntry + (sent ? 0 : 1))));
    }
    return {{"groups", groups}};
}

Json IntercomField(const Event& event) {
    return {{"intercom", OtherSide(event)}};
}

const std::map<std::uint16_t, Fields>& Decoders() {
    static const std::map<std::uint16_t, Fields> decoders{
        {command::kCloseAudio,
         [](const Event& event) {
             return Json{{"task", ReadCloseAudioTask(*event.packet)}};
         }},
        {command::kCloseZones,
         [](const Event& event) {
             return Json{{"zones", ReadCloseZonesMask(*event.packet)}};
         }},
        {command::kSetVolumeV2,
         [](const Event& event) {
             return Json{{"channel", ByteAt(event, 0)}, {"volume", ByteAt(event, 1)}};
         }},
        {command::kEnterEmergency, EmergencyFields},
        {command::kExitEmergency, EmergencyFields},
        {command::kStatusReport, StatusFields},
        {command::kGetVolumeV2Answer,
         [](const Event& event) {
             return Json{{"volumes", List<std::uint8_t>(event, 1, kLevelsV2)}};
         }},
        {command::kVersionAnswer, VersionFields},
        {command::kPlay, PlayRequestFields},
        {command::kPlayAnswer, PlayAnswerFields},
        {command::kJoinReport,
         [](const Event& event) {
             return Json{{"result", At<std::uint16_t>(event, 0)}};
         }},
        {command::kSetVolumeV3,
         [](const Event& event) {
             return Json{{"volumes", List<std::uint8_t>(event, 0, kSettableV3)}};
         }},
        {command::kGetVolumeV3Answer,
         [](const Event& event) {
             return Json{{"volumes", List<std::uint8_t>(event, 1, kLevelsV3)}};
         }},
        {command::kZoneGroupsAnswer, ZoneGroupsFields},
        {command::kPagingMonitor, MonitorRequestFields},
        {command::kPagingMonitorAnswer,
         [](const Event& event) {
             return Json{{"result", At<std::int16_t>(event, 0)}};
         }},
        {command::kAddTaskZonesAnswer,
         [](const Event& event) {
             return Json{{"result", ByteAt(event, 0)}};
         }},
        {command::kRemoveTaskZonesAnswer,
         [](const Event& event) {
             return Json{{"result", ByteAt(event, 0)}};
         }},
        {command::kPagingStatus, PagingStatusFields},
        {command::kCallInvite, IntercomField},
        {command::kCallAnswer, CallAnswerFields},
        {command::kPagingTask, TaskRequestFields},
        {command::kPagingTaskAnswer, [](const Event& event) {
             return Json{{"echo", At<std::uint32_t>(event, 0)}, {"result", At<std::uint16_t>(event, 4)}};
         }}};
    return decoders;
}

/// Two codes mean another thing in the other direction.
std::string NameOf(const Event& event) {
    const std::uint16_t code = event.packet->command;
    const bool sent = event.kind == Event::Kind::Sent;
    if (code == command::kPagingHeartbeat && sent) { return "handshake"; }
    if (code == command::kPagingStatus && !sent) { return "handshake-answer"; }
    return PacketName(code);
}

} // namespace

Json PacketFields(const Event& event) {
    Json json{{"name", NameOf(event)}};
    const auto found = Decoders().find(event.packet->command);
    if (found != Decoders().end()) { json.update(found->second(event)); }
    return json;
}

} // namespace k740::sim
