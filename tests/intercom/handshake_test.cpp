// How an intercom answers a paging station's handshake.
#include "sim/raw_sender.h"
#include "tests/intercom/call_fixture.h"

#include <memory>

namespace k740::test {
namespace {

using ::testing::IsEmpty;

class HandshakeTest : public CallFixture {
protected:
    /// @return the payload of the answer to a handshake of the station
    sim::Bytes Answer() {
        const auto filter = sim::Received(kStation, 0x8700);
        const std::size_t before = Field().Events().Count(filter);
        m_station.Handshake(kIntercom);
        const auto event = Field().Events().WaitFor(filter, kSoon, before + 1);
        EXPECT_TRUE(event);
        if (!event) { return {}; }
        EXPECT_EQ(29001, event->port);
        EXPECT_EQ(9, event->packet->length);
        return event->bytes;
    }
    static sim::Bytes Expected(std::uint8_t status) {
        return PacketBytes(kIntercom, kStation, 0x8700, {0, status, 0, 0, 0, 0, 0, 0, 0});
    }
};

TEST_F(HandshakeTest, IntercomWithoutACallIsIdle) {
    EXPECT_EQ(Expected(2), Answer());
}

TEST_F(HandshakeTest, AnswerTellsRingingTalkingAndIdle) {
    RingFromStation();
    EXPECT_EQ(Expected(0), Answer());
    EXPECT_EQ(0, K740_Accept(kIntercom, kStation));
    EXPECT_EQ(Expected(1), Answer());
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_EQ(Expected(2), Answer());
}

TEST_F(HandshakeTest, NeedsNoCallbackAndLogsNothing) {
    ASSERT_EQ(0, K740_SetIntercomCallback(nullptr, nullptr));
    K740_SetNodeID(9998);
    EXPECT_EQ(Expected(2), Answer());
    K740_SetNodeID(9999);
    ASSERT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
    const auto texts = LogTexts();
    EXPECT_EQ("K740_SetNodeID(9998)", texts[texts.size() - 2]);
}

TEST_F(HandshakeTest, MayComeToTheRequestPort) {
    m_station.SendToStation(0x0700, kIntercom, sim::Bytes(4), 28001);
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x8700), kSoon));
}

TEST_F(HandshakeTest, OnlyStationsAreAnsweredAndOnlyByIntercoms) {
    ASSERT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    m_station.Handshake(33);
    m_station.Handshake(kOtherStation);
    m_station.Handshake(9500);
    m_station.Handshake(5998); // not registered
    const sim::RawSender sender(Network(), kStationIP);
    for (const unsigned source : {33U, 5500U, 5998U, 9500U, 0U}) {
        sender.Send(sim::Pack(sim::MakePacket(source, kIntercom, 0x0700, sim::Bytes(4))), 29001);
    }
    PassMarker();
    EXPECT_THAT(ReceivedBy(kStation, 0x8700), IsEmpty());
}

TEST_F(HandshakeTest, AnswerGoesToTheSendingAddress) {
    constexpr const char* kElsewhere = "192.168.9.9"; // not where the station is registered
    Network().AddFieldAddresses({kElsewhere});
    std::unique_ptr<sim::UdpSocket> ear;
    Network().RunInField([&] { ear = std::make_unique<sim::UdpSocket>(sim::UdpSocket::BoundTo({kElsewhere, 29001})); });
    sim::RawSender(Network(), kElsewhere)
        .Send(sim::Pack(sim::MakePacket(kStation, kIntercom, 0x0700, sim::Bytes(4))), 29001);
    std::optional<sim::Datagram> answer;
    ASSERT_TRUE(WaitUntil([&] { return (answer = ear->Receive()).has_value(); }));
    EXPECT_EQ(Expected(2), answer->bytes);
}

} // namespace
} // namespace k740::test
