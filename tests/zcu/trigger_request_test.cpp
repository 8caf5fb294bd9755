// What a trigger asks of a controller, and what comes of each of its replies.
#include "tests/zcu/trigger_fixture.h"

#include <functional>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using sim::PlayReply;
using sim::command::kCloseAudio;
using sim::command::kPlay;

using TriggerRequestTest = TriggerTest;
using Change = std::function<void(tagZCU_PARAM&)>;

constexpr const char* kInvalid = "0 trigger -3 join -3 tokens -- follows 0";
constexpr const char* kJoined = "1 trigger 0 join 0 tokens AB follows 1";

Bytes PayloadOf(const sim::Packet& packet) {
    return {packet.payload.begin(), packet.payload.begin() + packet.length};
}

TEST_F(TriggerRequestTest, AStreamRequestCarriesEveryField) {
    EXPECT_EQ(kJoined, Summary(TriggerStream()));
    const sim::Packet packet = WaitForPacket(kPlay);
    EXPECT_EQ(3, packet.version);
    EXPECT_EQ(9500U, packet.source);
    EXPECT_EQ(33U, packet.destination);
    const Bytes expected{0x01, 0x00, 0x00, 0x00, 0xBA, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xE9,
                         0x03, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00,
                         0x00, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00,
                         0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x20, 0x00, 0x00, 0x00, 0x01, 0x00,
                         0x00, 0xE1, 0xC4, 0x6D, 0x00, 0x00, 0x1C, 0x25, 0x00, 0x00};
    EXPECT_EQ(expected, PayloadOf(packet));
}

TEST_F(TriggerRequestTest, AnAUXRequestNamesPortAndDevice) {
    m_param.taskID = 2002;
    m_param.taskIDAgain = 2002;
    EXPECT_EQ(kJoined, Summary(TriggerAUX()));
    const Bytes payload = PayloadOf(WaitForPacket(kPlay));
    EXPECT_EQ((Bytes{0x04, 0x00, 0x00, 0x00, 0xD2, 0x07, 0x00, 0x00}),
              Bytes(payload.begin() + 13, payload.begin() + 21));
    EXPECT_EQ((Bytes{0x59, 0x1B, 0x00, 0x00}), Bytes(payload.begin() + 62, payload.end()));
}

TEST_F(TriggerRequestTest, ANegativeAUXPortIsExtendedWithItsSign) {
    m_param.auxPort = -2;
    TriggerAUX();
    const Bytes payload = PayloadOf(WaitForPacket(kPlay));
    EXPECT_EQ((Bytes{0xFE, 0xFF, 0xFF, 0xFF}), Bytes(payload.begin() + 13, payload.begin() + 17));
}

TEST_F(TriggerRequestTest, TheHeaderOfAStreamRequestNamesTheRecordsNodeAndThatOfAnAUXRequestOurs) {
    m_param.sourceNodeID = 9777;
    TriggerStream();
    EXPECT_EQ(9777U, WaitForPacket(kPlay).source);
    TriggerAUX();
    const auto second = Field().Events().WaitFor(sim::Received(kController, kPlay), kSoon, 2);
    ASSERT_TRUE(second);
    EXPECT_EQ(9500U, second->packet->source);
}

TEST_F(TriggerRequestTest, DryContactOutputSwitchesTheZonesContacts) {
    m_param.dryContactOutput = 1;
    m_param.zoneMask = 0xA5;
    TriggerStream();
    const Bytes payload = PayloadOf(WaitForPacket(kPlay));
    EXPECT_EQ((Bytes{1, 1, 0xA5}), Bytes(payload.begin() + 6, payload.begin() + 9));
    EXPECT_EQ(0xA5, payload[38]);
}

TEST_F(TriggerRequestTest, OnlyDryContactOutputOneSwitches) {
    m_param.dryContactOutput = 2;
    TriggerStream();
    const Bytes payload = PayloadOf(WaitForPacket(kPlay));
    EXPECT_EQ((Bytes{0, 0, 0}), Bytes(payload.begin() + 6, payload.begin() + 9));
}

TEST_F(TriggerRequestTest, PriorityIsSentAs256LessItself) {
    EXPECT_EQ(256, ConvertPriority(0));
    EXPECT_EQ(1, ConvertPriority(255));
    EXPECT_EQ(0, ConvertPriority(256));
    m_param.priority = 0;
    TriggerStream();
    EXPECT_EQ(256, sim::ReadPlayRequest(WaitForPacket(kPlay)).priority);
}

TEST_F(TriggerRequestTest, InvalidRequestsAreMinus3AndSendNothing) {
    const tagZCU_PARAM good = m_param;
    const std::vector<Change> changes{
        [](tagZCU_PARAM& param) { param.zcuID = 0; },      [](tagZCU_PARAM& param) { param.zcuID = 1000; },
        [](tagZCU_PARAM& param) { param.zcuID = -1; },     [](tagZCU_PARAM& param) { param.zoneMask = 0; },
        [](tagZCU_PARAM& param) { param.zoneMask = 256; }, [](tagZCU_PARAM& param) { param.priority = 256; }};
    for (const Change& change : changes) {
        m_param = good;
        change(m_param);
        EXPECT_EQ(kInvalid, Summary(TriggerStream()));
        EXPECT_EQ(kInvalid, Summary(TriggerAUX()));
    }
    m_param = good;
    TriggerStream();
    EXPECT_EQ(1U, Requests());
}

TEST_F(TriggerRequestTest, NoRequestIsMinus3) {
    TriggerResult result;
    result.success = g_app->ZCU().ZCU_Request_TriggerNetTask(nullptr, result.outcome);
    EXPECT_EQ(kInvalid, Summary(result));
    result.success = g_app->ZCU().ZCU_Request_TriggerLBXTask_V2(nullptr, result.outcome);
    EXPECT_EQ(kInvalid, Summary(result));
}

TEST_F(TriggerRequestTest, TheBoundsAreValid) {
    m_param.zoneMask = 255;
    m_param.priority = 255;
    EXPECT_EQ(kJoined, Summary(TriggerStream()));
    m_param.zoneMask = 1;
    m_param.priority = 0;
    m_param.sequence = 2;
    EXPECT_EQ(kJoined, Summary(TriggerStream()));
}

TEST_F(TriggerRequestTest, AStreamRequestWithRecoveryAboveOneIsSentWithZeroAndChangesTheRecord) {
    m_param.recovery = 5;
    EXPECT_EQ(kJoined, Summary(TriggerStream()));
    EXPECT_EQ(0, uint16_t{m_param.recovery});
    EXPECT_EQ(0, sim::ReadPlayRequest(WaitForPacket(kPlay)).recovery);
}

TEST_F(TriggerRequestTest, AnAUXRequestWithRecoveryAboveOneIsRefused) {
    for (const int recovery : {2, 5}) {
        m_param.recovery = static_cast<uint16_t>(recovery);
        EXPECT_EQ(kInvalid, Summary(TriggerAUX()));
        EXPECT_EQ(recovery, uint16_t{m_param.recovery});
    }
    EXPECT_EQ(0U, Requests());
}

TEST_F(TriggerRequestTest, AControllerThatIsNotRegisteredGivesZeroWithoutATrace) {
    m_param.zcuID = 999;
    EXPECT_EQ("0 trigger 0 join 0 tokens -- follows 0", Summary(TriggerStream()));
    EXPECT_EQ("0 trigger 0 join 0 tokens -- follows 0", Summary(TriggerAUX()));
    m_param.zcuID = kController;
    TriggerStream();
    EXPECT_TRUE(WaitForExactLine("Success to trigger task, ZCU 33, task ID 1001"));
    EXPECT_EQ(0, CountLogLines("ZCU 999"));
}

TEST_F(TriggerRequestTest, AJoinIsASuccessAndLogged) {
    EXPECT_EQ(kJoined, Summary(TriggerStream()));
    m_param.sequence = 2;
    EXPECT_EQ(kJoined, Summary(TriggerAUX()));
    EXPECT_TRUE(WaitForExactLine("Success to trigger task, ZCU 33, task ID 1001", 2));
}

TEST_F(TriggerRequestTest, Result255IsASuccessWithoutAJoinAndWithoutALine) {
    Reply(PlayReply::Accept255);
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 0 no join", Summary(TriggerStream()));
    m_param.sequence = 2;
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 0 no join", Summary(TriggerAUX()));
    EXPECT_EQ(0, CountLogLines("task ID 1001"));
}

TEST_F(TriggerRequestTest, AnAcceptanceWithoutJoinFlagIsASuccess) {
    Reply(PlayReply::AcceptWithoutJoin);
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 0", Summary(TriggerStream()));
    m_param.sequence = 2;
    EXPECT_EQ("1 trigger 0 join 0 tokens AB follows 0", Summary(TriggerAUX()));
}

TEST_F(TriggerRequestTest, EveryOtherResultIsARefusal) {
    sim::PlayBehaviour behaviour;
    behaviour.reply = PlayReply::Refuse;
    for (const int refusal : {0, 2, 254, 256, 65535}) {
        behaviour.refusal = static_cast<std::uint16_t>(refusal);
        m_controller.SetBehaviour(behaviour);
        EXPECT_EQ("0 trigger -1 join 0 tokens AB follows 0", Summary(TriggerStream())) << refusal;
        ++m_param.sequence;
    }
    EXPECT_EQ("0 trigger -1 join 0 tokens AB follows 0", Summary(TriggerAUX()));
    EXPECT_TRUE(WaitForExactLine("*****Failed to trigger ZCU 33, task ID 1001", 6));
}

TEST_F(TriggerRequestTest, ARefusedJoinIsAFailure) {
    sim::PlayBehaviour behaviour;
    behaviour.reply = PlayReply::JoinRefused;
    for (const int status : {0, 2, 65535}) {
        behaviour.joinRefusal = static_cast<std::uint16_t>(status);
        m_controller.SetBehaviour(behaviour);
        EXPECT_EQ("0 trigger 0 join -1 tokens AB follows 1", Summary(TriggerStream())) << status;
        ++m_param.sequence;
    }
    EXPECT_EQ("0 trigger 0 join -1 tokens AB follows 1", Summary(TriggerAUX()));
    EXPECT_TRUE(WaitForExactLine("*****Failed to join multicast, ZCU 33, task ID 1001", 4));
    EXPECT_EQ(0U, Field().Events().Count(sim::Received(kController, kCloseAudio)));
}

TEST_F(TriggerRequestTest, AControllerThatNeverAnswersIsGivenUpAfterFiveSeconds) {
    Reply(PlayReply::Silent);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("0 trigger -9 join 0 tokens -- follows 0", Summary(TriggerStream()));
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, 4990ms);
    EXPECT_LT(took, 9500ms); // one wait, not two
    EXPECT_TRUE(WaitForExactLine("*****Trigger ZCU 33 timeout, task ID 1001"));
    EXPECT_EQ(1U, Requests()); // never sent again
    EXPECT_EQ(0U, Field().Events().Count(sim::Received(kController, kCloseAudio)));
}

TEST_F(TriggerRequestTest, AnAUXSourceThatNeverAnswersIsClosed) {
    Reply(PlayReply::Silent);
    EXPECT_EQ("0 trigger -9 join 0 tokens -- follows 0", Summary(TriggerAUX()));
    EXPECT_EQ(static_cast<std::uint32_t>(kTask), sim::ReadCloseAudioTask(WaitForPacket(kCloseAudio)));
    EXPECT_TRUE(WaitForExactLine("*****Trigger ZCU task timeout."));
    EXPECT_EQ(0, CountLogLines("Trigger ZCU 33 timeout"));
}

TEST_F(TriggerRequestTest, AJoinThatNeverComesIsGivenUpAfterFiveSeconds) {
    Reply(PlayReply::JoinNever);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("0 trigger 0 join -9 tokens AB follows 1", Summary(TriggerStream()));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 4990ms);
    EXPECT_TRUE(WaitForExactLine("*****ZCU 33 join multicast timeout, task ID 1001"));
    EXPECT_EQ(0U, Field().Events().Count(sim::Received(kController, kCloseAudio)));
}

TEST_F(TriggerRequestTest, AnAUXJoinThatNeverComesIsClosed) {
    Reply(PlayReply::JoinNever);
    EXPECT_EQ("0 trigger 0 join -9 tokens AB follows 1", Summary(TriggerAUX()));
    EXPECT_EQ(static_cast<std::uint32_t>(kTask), sim::ReadCloseAudioTask(WaitForPacket(kCloseAudio)));
    EXPECT_TRUE(WaitForExactLine("*****ZCU join multicast timeout."));
}

TEST_F(TriggerRequestTest, ALateAnswerIsTakenWithinTheFiveSeconds) {
    sim::PlayBehaviour late;
    late.answerDelay = 300ms;
    late.joinDelay = 200ms;
    m_controller.SetBehaviour(late);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(kJoined, Summary(TriggerStream()));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 500ms);
}

} // namespace
} // namespace k740::test
