// Asking a zone controller for the groups of its zones.
#include "common/answer_wait.h"
#include "tests/zcu/controller_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;

class ZoneMulticastQueryTest : public ControllerTest {
protected:
    /// Asks a controller. @return the 65 bytes of the answer, nothing without one
    Bytes Ask(int id) {
        m_error = 1;
        tagQUERY_ZONE_MCAST_IP_RSP answer{};
        if (!g_app->ZCU().ZCU_Request_GetZoneMCastIP(id, &answer, m_error)) { return {}; }
        EXPECT_EQ(static_cast<std::uint32_t>(id), answer.zcuID + 0);
        EXPECT_LE(answer.receivedAt + 0, time(nullptr));
        Bytes bytes(std::begin(answer.table), std::end(answer.table));
        bytes.push_back(answer.trailing);
        return bytes;
    }
    /// Makes the library take an answer of 65 equal bytes.
    static void TakeAnswer(std::uint32_t sender, std::uint8_t fill) {
        std::array<std::uint8_t, 65> payload;
        payload.fill(fill);
        const _vxa_cmd_packet_t packet = MakePacket(sender, 9500, 0x8303, payload);
        g_app->ZCU().ZCU_Response_GetZoneMCastIP(&packet);
    }
    void Silence() { m_v3.SetAnswerFault(Silent()); }

    int m_error = 0;
};

TEST_F(ZoneMulticastQueryTest, TheRequestHasNoPayloadAndTheAnswerIsHandedOutAsItIs) {
    m_v3.SetZoneGroup(1, "225.1.2.3");
    m_v3.SetZoneGroup(8, "239.8.7.6", 0x01020304);
    Bytes expected(65);
    std::ranges::copy(Bytes{3, 2, 1, 225, 0xC4, 0x6D, 0, 0}, expected.begin());
    std::ranges::copy(Bytes{6, 7, 8, 239, 4, 3, 2, 1}, expected.begin() + 56);
    EXPECT_EQ(expected, Ask(kV3));
    EXPECT_EQ(0, m_error);
    EXPECT_EQ(RequestBytes(kV3, 0x0303), WaitForRequest(kV3, 0x0303)->bytes);
}

TEST_F(ZoneMulticastQueryTest, TheLastByteIsHandedOutToo) {
    Silence();
    TakeAnswer(kV3, 7);
    EXPECT_EQ(Bytes(65, 7), Ask(kV3));
}

TEST_F(ZoneMulticastQueryTest, WithoutAnOutputItIsMinus3AndNothingIsSent) {
    int error = 0;
    EXPECT_FALSE(g_app->ZCU().ZCU_Request_GetZoneMCastIP(kV3, nullptr, error));
    EXPECT_EQ(-3, error);
    EXPECT_TRUE(RequestsUntilNow(kV3, 0x0303).empty());
}

TEST_F(ZoneMulticastQueryTest, ADeviceWithoutASocketFailsWithoutAnError) {
    EXPECT_TRUE(Ask(999).empty());
    EXPECT_EQ(0, m_error);
}

TEST_F(ZoneMulticastQueryTest, AControllerThatIsSilentForFourSecondsIsMinus9) {
    Silence();
    CQBTime watch;
    watch.TimeStart();
    EXPECT_TRUE(Ask(kV3).empty());
    EXPECT_EQ(-9, m_error);
    EXPECT_GE(watch.TimeEnd(), 3999U);
    EXPECT_LT(watch.TimeEnd(), 4500U);
    EXPECT_EQ(1U, RequestsUntilNow(kV3, 0x0303).size()) << "no second try";
}

TEST_F(ZoneMulticastQueryTest, AnswersInTheNameOfAnotherControllerAreLeftToItsQueries) {
    m_v3.SetAnswerFault(InTheNameOf(kV2));
    m_v2.SetAnswerFault(Silent());
    EXPECT_TRUE(Ask(kV3).empty());
    EXPECT_EQ(-9, m_error);
    EXPECT_EQ(65U, Ask(kV2).size());
}

TEST_F(ZoneMulticastQueryTest, ASlowAnswerCountsAndEachAnswerServesOnce) {
    sim::AnswerFault fault = Twice();
    fault.delay = 300ms;
    m_v3.SetAnswerFault(fault);
    EXPECT_EQ(65U, Ask(kV3).size());
    m_v3.SetZoneGroup(1, "225.1.2.3"); // from the next answer on
    m_v3.SetAnswerFault(Late(300ms));
    EXPECT_EQ(Bytes(65, 0), Ask(kV3));
    EXPECT_TRUE(WaitForRequest(kV3, 0x0303, 2));
    EXPECT_NE(Bytes(65, 0), Ask(kV3));
}

TEST_F(ZoneMulticastQueryTest, OnlyAnswersOfControllersAreTaken) {
    Silence();
    TakeAnswer(kV3, 1);
    for (std::uint32_t i = 0; i < 2048; ++i) { TakeAnswer(i % 2 == 0 ? 0 : 1000, 2); }
    EXPECT_EQ(Bytes(65, 1), Ask(kV3)) << "they took no room";
}

TEST_F(ZoneMulticastQueryTest, AnswersWaitUpTo2048AndTheOldestGoFirst) {
    Silence();
    TakeAnswer(kV3, 1);
    for (int i = 0; i < 2047; ++i) { TakeAnswer(kV2, 2); }
    EXPECT_EQ(Bytes(65, 1), Ask(kV3));
    TakeAnswer(kV3, 1);
    for (int i = 0; i < 2048; ++i) { TakeAnswer(kV2, 2); }
    m_v3.SetAnswerFault(Late(200ms));
    EXPECT_EQ(Bytes(65, 0), Ask(kV3)) << "none was there before the controller's own";
}

} // namespace
} // namespace k740::test
