#include "sim/records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace k740::sim {
namespace {

// Task 1001, sequence 1, zones 1 and 2, priority 70, recovery, group 225.0.0.1:28100, node 9500.
const Bytes kPlayPayload{
    0x01, 0x00, 0x00, 0x00, 0xBA, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 0: sequence, priority at 4
    0xE9, 0x03, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00,       // 13: task twice, 3
    0x01, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 25: recovery
    0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,       // 38: zone mask
    0x20, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0xE1, 0xC4, 0x6D, 0x00, 0x00,       // 50: 32, group, port
    0x1C, 0x25, 0x00, 0x00};                                                      // 62: origin

Packet PagingTask(const std::string& zones, std::uint16_t length) {
    ByteWriter payload;
    payload.Put<std::uint32_t>(7).Put<std::uint8_t>(1).Put<std::uint8_t>(255).Fill(20, 0).PutAll(zones);
    Packet packet = MakePacket(9500, 5000, 0x0702, payload.Get());
    packet.length = length;
    return packet;
}

TEST(RecordsTest, PlayRequestIsReadFieldByField) {
    ASSERT_EQ(66U, kPlayPayload.size());
    const PlayRequest request = ReadPlayRequest(MakePacket(9500, 33, 0x0205, kPlayPayload));
    EXPECT_EQ(1, request.sequence);
    EXPECT_EQ(256 - 70, request.priority);
    EXPECT_EQ(0, request.dryContactMask);
    EXPECT_EQ(1001U, request.auxPort);
    EXPECT_EQ(1001U, request.taskId);
    EXPECT_EQ(1, request.recovery);
    EXPECT_EQ(3U, request.zoneMask);
    EXPECT_EQ("225.0.0.1", request.group);
    EXPECT_EQ(28100, request.groupPort);
    EXPECT_EQ(9500U, request.origin);
}

TEST(RecordsTest, PlayRequestIsWrittenAsItIsRead) {
    EXPECT_EQ(kPlayPayload, Payload(ReadPlayRequest(MakePacket(9500, 33, 0x0205, kPlayPayload))));
    Bytes others(66, 0); // the fields that are zero above, or constant
    others[9] = 0x99;
    others[16] = 0x16;
    others[21] = 0x21;
    const PlayRequest request = ReadPlayRequest(MakePacket(9500, 33, 0x0205, others));
    EXPECT_EQ(0x99U, request.word9);
    EXPECT_EQ(0x16000000U, request.auxPort);
    EXPECT_EQ(0x21U, request.word21);
    const Bytes written = Payload(request);
    EXPECT_TRUE(std::equal(others.begin(), others.begin() + 29, written.begin()));
}

TEST(RecordsTest, DryContactMaskOfAPlayRequestHasItsTwoFlags) {
    PlayRequest request;
    request.dryContactMask = 5;
    const Bytes payload = Payload(request);
    EXPECT_EQ((Bytes{1, 1, 5}), Bytes(payload.begin() + 6, payload.begin() + 9));
}

TEST(RecordsTest, PlayAnswerHas29Bytes) {
    const Bytes expected{0x01, 0xFF, 0x00, 0x02, 0x01,                    // join flag, result, sequence
                         0x04, 0x03, 0x02, 0x01, 0x08, 0x07, 0x06, 0x05,  // tokens A and B
                         0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE,  // not interpreted
                         0xE9, 0x03, 0x00, 0x00, 0xEE, 0xEE, 0xEE, 0xEE}; // task
    EXPECT_EQ(expected, Payload(PlayAnswer{true, 255, 0x0102, 0x01020304, 0x05060708, 1001}));
}

TEST(RecordsTest, JoinReportHas26Bytes) {
    const Bytes expected{0x01, 0x00,                                                                   // status
                         0x04, 0x03, 0x02, 0x01, 0x08, 0x07, 0x06, 0x05,                               // tokens
                         0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, // not
                         0xEE, 0xEE, 0xEE};                                                            // interpreted
    EXPECT_EQ(expected, Payload(JoinReport{1, 0x01020304, 0x05060708}));
}

TEST(RecordsTest, CloseRequestsBeginWithTaskAndMask) {
    const Bytes payload{0xE9, 0x03, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00};
    EXPECT_EQ(1001U, ReadCloseAudioTask(MakePacket(9500, 33, 0x0101, payload)));
    EXPECT_EQ(1001U, ReadCloseZonesMask(MakePacket(9500, 33, 0x0102, payload)));
}

TEST(RecordsTest, StatusReportHas85BytesEachFieldAtItsPlace) {
    StatusReport report;
    report.deviceStatus = 1;
    report.zoneStates = {2, 3, 4, 5, 6, 7, 8, 9};
    report.amplifierStates = {10, 11, 12, 13, 61, 62, 63, 64};
    report.deviceIdEcho = 0x11100F0E; // bytes 13 to 16 are 14 to 17
    report.deviceFault = 18;
    report.zoneValues = {0x16151413, 0x1A191817, 0x1E1D1C1B, 0x2221201F,
                         0x26252423, 0x2A292827, 0x2E2D2C2B, 0x3231302F};
    report.bytes50To56 = {51, 52, 53, 54, 55, 56, 57};
    report.zoneFlags = 58;
    report.extraA = 59;
    report.extraB = 60;
    report.bytes64To79 = {65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79, 80};
    report.trailingWord = 0x54535251;
    report.trailingByte = 85;

    Bytes countingFromOne(85);
    std::iota(countingFromOne.begin(), countingFromOne.end(), std::uint8_t{1});
    EXPECT_EQ(countingFromOne, Payload(report));
}

TEST(RecordsTest, PagingStatusHasNineBytes) {
    EXPECT_EQ((Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9}), Payload(PagingStatus{1, 2, {3, 4}, 0x0605, 0x0807, 9}));
}

TEST(RecordsTest, PagingTaskRequestIsReadFieldByField) {
    const PagingTaskRequest request = ReadPagingTaskRequest(PagingTask("0010A0020B", 36));
    EXPECT_EQ(9500U, request.source);
    EXPECT_EQ(36, request.length);
    EXPECT_EQ(7U, request.taskId);
    EXPECT_TRUE(request.start);
    EXPECT_EQ(255, request.priority);
    EXPECT_EQ("0010A0020B", request.zones);
}

TEST(RecordsTest, PagingZoneTextEndsWhereTheLengthSaysButWithinThePacket) {
    EXPECT_EQ("0010A", ReadPagingTaskRequest(PagingTask("0010A0020B", 31)).zones);
    EXPECT_EQ("", ReadPagingTaskRequest(PagingTask("0010A0020B", 0)).zones);
    EXPECT_EQ(488U, ReadPagingTaskRequest(PagingTask("0010A0020B", 65535)).zones.size());
}

TEST(RecordsTest, PagingTaskAnswerIsEchoAndResult) {
    EXPECT_EQ((Bytes{7, 0, 0, 0, 1, 0}), Payload(PagingTaskAnswer{7, 1}));
}

} // namespace
} // namespace k740::sim
