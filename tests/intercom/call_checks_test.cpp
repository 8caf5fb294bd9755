// Packets of calls that are refused, and how the log says so.
#include "sim/raw_sender.h"
#include "tests/intercom/call_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// An invitation or an answer, and how the log calls it.
struct Kind {
    std::uint16_t command;
    const char* name;
};
void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

class CallChecksTest : public CallFixture, public ::testing::WithParamInterface<Kind> {
protected:
    CallChecksTest() { EXPECT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33")); }

    /// Sends the packet, an acceptance where it is an answer.
    void Send(unsigned source, unsigned destination) const {
        const sim::Bytes payload{1, 0, 0, 0, 0, 0, 0, 0, 0};
        m_sender.Send(sim::Pack(sim::MakePacket(source, destination, GetParam().command, payload)), 29001);
    }
    /// @return the line of the log, which marks errors
    static std::string Line(const std::string& station, const std::string& intercom, const std::string& rest) {
        return "*****Receive Q-RPK " + station + " " + GetParam().name + " intercom " + intercom + rest;
    }
    void ExpectNothingDone() {
        PassMarker();
        EXPECT_THAT(Messages(), IsEmpty());
        EXPECT_THAT(CodesAt(), IsEmpty());
        EXPECT_EQ(Idle(0), StateOf());
        EXPECT_EQ(Idle(0), StateOf(kOtherIntercom));
    }

    const sim::RawSender m_sender{Network(), kStationIP};
};

TEST_P(CallChecksTest, WithoutTheCallbackItIsAnError) {
    ASSERT_EQ(0, K740_SetIntercomCallback(nullptr, IntercomHost::OnAudio));
    Send(kStation, kIntercom);
    Send(33, 34); // wrong in every way
    EXPECT_TRUE(WaitForExactLine(Line("5000", "5500", ", but has not set SDK callback PINTERCOMMESSAGE.")));
    EXPECT_TRUE(WaitForExactLine(Line("33", "34", ", but has not set SDK callback PINTERCOMMESSAGE.")));
    ExpectNothingDone();
}

TEST_P(CallChecksTest, WhatIsNoIntercomIsAnError) {
    Send(kStation, kOtherStation);
    Send(kStation, 5998); // not registered
    Send(33, 0xFFFFFFFF); // the intercom is looked at before the station
    EXPECT_TRUE(WaitForExactLine(Line("5000", "5001", ", but intercom device id is invalid.")));
    EXPECT_TRUE(WaitForExactLine(Line("5000", "5998", ", but intercom device id is invalid.")));
    EXPECT_TRUE(WaitForExactLine(Line("33", "-1", ", but intercom device id is invalid.")));
    ExpectNothingDone();
}

TEST_P(CallChecksTest, WhatIsNoStationIsAnError) {
    for (const unsigned source : {33U, 5501U, 5998U, 0U}) {
        Send(source, kIntercom);
        EXPECT_TRUE(WaitForExactLine(Line(std::to_string(source), "5500", ", but Q-RPK device id is invalid.")));
    }
    ExpectNothingDone();
}

TEST_P(CallChecksTest, SenderIsKnownByItsIDWhateverItsAddress) {
    Network().AddFieldAddresses({"192.168.9.9"});
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    const sim::Bytes payload{2};
    const sim::RawSender elsewhere(Network(), "192.168.9.9");
    elsewhere.Send(sim::Pack(sim::MakePacket(kStation, kIntercom, 0x8701, payload)), 29001);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kHungUpByStation}));
    elsewhere.Send(sim::Pack(sim::MakePacket(kStation, kIntercom, 0x0701, payload)), 29001);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kInvited}));
    EXPECT_TRUE(WaitForAnswers(1)) << "where the station is registered";
}

TEST_P(CallChecksTest, PayloadOfAShortPacketIsZeros) {
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    sim::Bytes bytes = sim::Pack(sim::MakePacket(kStation, kIntercom, GetParam().command, sim::Bytes{1}));
    bytes.resize(18);
    m_sender.Send(bytes, 29001);
    PassMarker();
    EXPECT_EQ(Ringing(), StateOf()); // an answer with code 0, or an invitation
    EXPECT_THAT(Messages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Packets, CallChecksTest, ::testing::Values(Kind{0x0701, "invite"}, Kind{0x8701, "response"}),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace
} // namespace k740::test
