// What the library answers when it plays a zone controller: play requests and queries, byte by byte.
#include "sim/raw_sender.h"
#include "tests/zcu/virtual_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using ::testing::ElementsAre;

const Bytes kAcceptance{0x01,                    // a join report follows
                        0x01, 0x00,              // accepted
                        0x22, 0x11,              // request bytes 0-1
                        0x80, 0x25, 0x00, 0x00,  // token A: the requester
                        0xE9, 0x03, 0x00, 0x00,  // token B: the task
                        0x66, 0x55, 0x44, 0x33,  // request bytes 9-12
                        0xAA, 0x99, 0x88, 0x77,  // request bytes 13-16
                        0xE9, 0x03, 0x00, 0x00,  // the task
                        0xEE, 0xDD, 0xCC, 0xBB}; // request bytes 21-24
const Bytes kJoinReport{0x01, 0x00,              // joined
                        0x80, 0x25, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00, 0x66, 0x55, 0x44, 0x33,
                        0xAA, 0x99, 0x88, 0x77, 0xE9, 0x03, 0x00, 0x00, 0xEE, 0xDD, 0xCC, 0xBB};

using VirtualRequestTest = VirtualTest;

TEST_F(VirtualRequestTest, APlayRequestIsAcceptedAndTheJoinReportedOnPort29001) {
    m_client.RequestPlay(kVirtual, PlayRequestOf());
    const auto acceptance = WaitForAnswer(0x8205);
    const auto report = WaitForAnswer(0x8206);
    ASSERT_TRUE(acceptance && report);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8205, kAcceptance), acceptance->bytes);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8206, kJoinReport), report->bytes);
    EXPECT_EQ(29001, acceptance->port);
    EXPECT_EQ(29001, report->port);
}

TEST_F(VirtualRequestTest, TheJoinReportComes2MsAfterTheAcceptance) {
    m_client.RequestPlay(kVirtual, PlayRequestOf());
    const auto report = WaitForAnswer(0x8206);
    const auto acceptance = WaitForAnswer(0x8205);
    ASSERT_TRUE(acceptance && report);
    EXPECT_GE(report->time - acceptance->time, 1900us); // the network may hold up the first a little
    EXPECT_LT(report->time - acceptance->time, 80ms);
}

TEST_F(VirtualRequestTest, TheHostIsToldWhen80MsMoreHavePassed) {
    const auto sent = std::chrono::steady_clock::now();
    Play();
    const auto messages = RecordingHost::Get().trainMessages.All();
    EXPECT_THAT(messages, ElementsAre(TrainMessageCall{kClient, kVirtual, 1}));
    EXPECT_GE(messages.at(0).time - sent, 82ms);
}

TEST_F(VirtualRequestTest, RequestsAreTakenOnEitherPort) {
    m_client.RequestPlay(kVirtual, PlayRequestOf(), sim::kRequestPort);
    EXPECT_TRUE(WaitForMessage(1));
    m_client.RequestPlay(kVirtual, PlayRequestOf(), sim::kReplyPort);
    EXPECT_TRUE(WaitForMessage(1, 2));
}

TEST_F(VirtualRequestTest, AnswersGoToPort29001WhereverTheRequestComesFrom) {
    const sim::RawSender sender(Network(), kClientIP); // a port that the system chose
    sender.Send(sim::Pack(sim::MakePacket(kClient, kVirtual, 0x0205, sim::Payload(PlayRequestOf()))), 28001);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8205, kAcceptance), WaitForAnswer(0x8205)->bytes);
    sender.Send(sim::Pack(sim::MakePacket(kClient, kVirtual, 0x0132, {})), 28001);
    EXPECT_EQ(29001, WaitForAnswer(0x8132)->port);
}

TEST_F(VirtualRequestTest, RequestsToAnythingElseAreIgnored) {
    ASSERT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    ASSERT_EQ(0, K740_AddDevice(5500, 10, ""));
    for (const std::uint32_t id : {33U, 5500U, 902U, 0U, 9500U, 0xFFFFFFFFU}) {
        m_client.RequestPlay(id, PlayRequestOf());
        m_client.QueryVersion(id);
        m_client.QueryZoneGroups(id);
        m_client.CloseAudio(id, kTask);
        m_client.CloseZones(id, 1);
    }
    m_client.RequestPlay(kVirtual, PlayRequestOf()); // after all these
    m_client.QueryVersion(kVirtual);
    m_client.QueryZoneGroups(kVirtual);
    EXPECT_TRUE(WaitForMessage(1));
    for (const std::uint16_t command : std::initializer_list<std::uint16_t>{0x8205, 0x8206, 0x8132, 0x8303}) {
        EXPECT_EQ(kVirtual, static_cast<int>(WaitForAnswer(command)->packet->source)) << command;
        EXPECT_EQ(1U, CountAnswers(command)) << command;
    }
    EXPECT_TRUE(WaitForLogLine("receive a play request"));
    EXPECT_EQ(1, CountLogLines("Virutla"));
    EXPECT_EQ(1U, RecordingHost::Get().trainMessages.All().size());
}

TEST_F(VirtualRequestTest, ItAcceptsWithoutCallbacksToo) {
    K740_SetTrainCallback(nullptr, nullptr);
    m_client.RequestPlay(kVirtual, PlayRequestOf());
    EXPECT_TRUE(WaitForAnswer(0x8206));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 1; }));
    m_client.CloseZones(kVirtual, 0xFF);
    EXPECT_TRUE(WaitForExactLine("Exit player for ZCU has none task, virtual ZCU 900"));
}

TEST_F(VirtualRequestTest, ThePlayRequestIsLogged) {
    Play();
    EXPECT_TRUE(WaitForExactLine(
        "=====Virutla ZCU receive a play request, ZCU 900, source device 9600, task 1001, 192.168.4.1"));
}

TEST_F(VirtualRequestTest, TheMessagesAreInTheCallbackLogWhileItIsOn) {
    K740_EnableCallbackLog(1);
    Play();
    m_client.CloseZones(kVirtual, 0xFF);
    EXPECT_TRUE(WaitForCallbackLogLine("PTRAINMESSAGE", "900, 2"));
    EXPECT_THAT(LogTexts("PTRAINMESSAGE"), ElementsAre("PTRAINMESSAGE(9600, 900, 1)", "PTRAINMESSAGE(9600, 900, 2)"));
}

TEST_F(VirtualRequestTest, AVersionQueryIsAnsweredWithTheVersionOfTheLibrary) {
    m_client.QueryVersion(kVirtual);
    Bytes payload(118);
    std::ranges::copy(std::string("1.0.4"), payload.begin() + 36);
    payload[116] = 0x84; // 900
    payload[117] = 0x03;
    const auto answer = WaitForAnswer(0x8132);
    ASSERT_TRUE(answer);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8132, payload), answer->bytes);
    EXPECT_EQ(29001, answer->port);
}

TEST_F(VirtualRequestTest, WhileIdleItHasNoGroup) {
    m_client.QueryZoneGroups(kVirtual);
    Bytes payload(65);
    payload[0] = 1;
    const auto answer = WaitForAnswer(0x8303);
    ASSERT_TRUE(answer);
    EXPECT_EQ(PacketBytes(kVirtual, 0x8303, payload), answer->bytes);
    EXPECT_EQ(29001, answer->port);
}

TEST_F(VirtualRequestTest, WhilePlayingItTellsTheGroupAndThePort) {
    Play();
    m_client.QueryZoneGroups(kVirtual);
    Bytes payload(65);
    std::ranges::copy(Bytes{1, 3, 2, 1, 225, 0xC4, 0x6D, 0, 0}, payload.begin());
    EXPECT_EQ(PacketBytes(kVirtual, 0x8303, payload), WaitForAnswer(0x8303)->bytes);
    m_client.QueryZoneGroups(kOtherVirtual); // which plays nothing
    std::fill(payload.begin() + 1, payload.end(), std::uint8_t{0});
    EXPECT_EQ(PacketBytes(kOtherVirtual, 0x8303, payload), WaitForAnswer(0x8303, 2)->bytes);
}

} // namespace
} // namespace k740::test
