#include "sim/packet_json.h"
#include "sim/packet_names.h"
#include "sim/paging_records.h"
#include "sim/records.h"

#include <gtest/gtest.h>

namespace k740::sim {
namespace {

using Json = nlohmann::ordered_json;

Event PacketEvent(Event::Kind kind, std::uint32_t device, std::uint32_t source, std::uint32_t destination,
                  std::uint16_t command, ByteView payload) {
    Event event;
    event.kind = kind;
    event.device = device;
    event.packet = MakePacket(source, destination, command, payload);
    return event;
}

Json Received(std::uint16_t command, ByteView payload) {
    return PacketFields(PacketEvent(Event::Kind::Received, 33, 9500, 33, command, payload));
}

Json Sent(std::uint16_t command, ByteView payload) {
    return PacketFields(PacketEvent(Event::Kind::Sent, 33, 33, 9500, command, payload));
}

TEST(PacketJsonTest, PlayRequestIsDecoded) {
    PlayRequest request;
    request.sequence = 7;
    request.priority = 186;
    request.taskId = 1001;
    request.auxPort = 1001;
    request.zoneMask = 5;
    request.recovery = 1;
    request.group = "225.0.0.1";
    request.groupPort = 28100;
    request.origin = 9500;
    const Json json = Received(0x0205, Payload(request));
    EXPECT_EQ("play-request", json.at("name"));
    EXPECT_EQ(7, json.at("sequence"));
    EXPECT_EQ(70, json.at("priority"));
    EXPECT_EQ(1001, json.at("task"));
    EXPECT_EQ(5, json.at("zones"));
    EXPECT_EQ(1, json.at("recovery"));
    EXPECT_EQ("225.0.0.1:28100", json.at("group"));
    EXPECT_EQ(9500, json.at("origin"));
}

TEST(PacketJsonTest, StatusIsDecoded) {
    StatusReport report;
    report.deviceStatus = 1;
    report.zoneStates = {1, 2, 3, 4, 5, 6, 7, 8};
    report.amplifierStates = {11, 12, 13, 14, 15, 16, 17, 18};
    report.deviceFault = 9;
    report.zoneValues[7] = 70000;
    report.zoneFlags = 3;
    const Json json = Sent(0x8126, Payload(report));
    EXPECT_EQ("status", json.at("name"));
    EXPECT_EQ(Json({1, 2, 3, 4, 5, 6, 7, 8}), json.at("zone_states"));
    EXPECT_EQ(Json({11, 12, 13, 14, 15, 16, 17, 18}), json.at("amplifiers"));
    EXPECT_EQ(9, json.at("fault"));
    EXPECT_EQ(70000, json.at("zone_tasks").at(7));
    EXPECT_EQ(3, json.at("zone_faults"));
}

TEST(PacketJsonTest, CallsNameTheIntercomWhoeverSends) {
    const auto answer = CallAnswerPayload(call::kAccepted);
    const Json heard = PacketFields(PacketEvent(Event::Kind::Received, 5000, 5500, 5000, 0x8701, answer));
    EXPECT_EQ("call-answer", heard.at("name"));
    EXPECT_EQ(5500, heard.at("intercom"));
    EXPECT_EQ("accepted", heard.at("answer"));
    const Json said = PacketFields(PacketEvent(Event::Kind::Sent, 5000, 5000, 5500, 0x0701, InvitePayload()));
    EXPECT_EQ("call", said.at("name"));
    EXPECT_EQ(5500, said.at("intercom"));
}

TEST(PacketJsonTest, DirectionTellsHandshakeFromHeartbeat) {
    EXPECT_EQ("paging-heartbeat", Received(0x0700, {}).at("name"));
    EXPECT_EQ("handshake", Sent(0x0700, {}).at("name"));
    EXPECT_EQ("paging-status", Sent(0x8700, {}).at("name"));
    EXPECT_EQ("handshake-answer", Received(0x8700, {}).at("name"));
}

TEST(PacketJsonTest, EmptyAndMeaninglessPayloadsAreNoHarm) {
    for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
        const auto command = static_cast<std::uint16_t>(code);
        for (const Bytes& payload : {Bytes(), Bytes(kPayloadCapacity, 0xEE)}) {
            EXPECT_EQ(1U, Received(command, payload).count("name"));
        }
    }
    EXPECT_EQ("unknown", Received(0x7777, {}).at("name"));
}

TEST(PacketNamesTest, NamesAndCodesAreOneToOne) {
    EXPECT_EQ(0x0205, PacketCode("play-request"));
    EXPECT_FALSE(PacketCode("unknown"));
    EXPECT_EQ("unknown", PacketName(0x0001));
    int known = 0;
    for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
        const std::string name = PacketName(static_cast<std::uint16_t>(code));
        if (name == "unknown") { continue; }
        ++known;
        EXPECT_EQ(code, PacketCode(name));
    }
    EXPECT_EQ(34, known);
}

} // namespace
} // namespace k740::sim
