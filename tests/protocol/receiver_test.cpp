#include "tests/protocol/hub_fixture.h"
#include "tests/protocol/unspecified_sender.h"

#include <chrono>
#include <cstring>
#include <memory>
#include <random>

namespace k740::test {
namespace {

using sim::Bytes;
using sim::ByteView;

class ReceiverTest : public HubFixture, public ::testing::WithParamInterface<int> {
protected:
    /// The port that the test is about.
    static std::uint16_t Port() { return static_cast<std::uint16_t>(GetParam()); }

    /// A socket at the sender's address.
    std::unique_ptr<sim::UdpSocket> ListenInField(std::uint16_t port) const {
        std::unique_ptr<sim::UdpSocket> socket;
        Network().RunInField([&] {
            socket = std::make_unique<sim::UdpSocket>(sim::UdpSocket::BoundTo({kSenderIP, port}));
        });
        return socket;
    }
    /// Whether the library has logged nothing since the fixture registered its last device.
    static bool HasLoggedNothing() {
        K740_SetNodeID(9777);
        if (!WaitForLogLine("K740_SetNodeID(9777)")) { return false; }
        const auto texts = LogTexts();
        return texts[texts.size() - 2].starts_with("K740_AddDevice(5001");
    }
};

TEST_P(ReceiverTest, ReportIsHandledOnEitherPort) {
    Send(Report(kDevice, 2), Port());
    EXPECT_TRUE(WaitForStatus(kDevice, 2));
}

TEST_P(ReceiverTest, VersionReservedBytesDestinationAndLengthDoNotMatter) {
    sim::Packet packet = Report(kDevice, 3);
    packet.version = 0;
    packet.reserved = {1, 2, 3};
    packet.destination = 0xFFFFFFFF;
    packet.length = 0xFFFF;
    Send(packet, Port());
    EXPECT_TRUE(WaitForStatus(kDevice, 3));
}

TEST_P(ReceiverTest, MagicInTheOtherByteOrderIsDropped) {
    Bytes bytes = sim::Pack(Report(kDevice, 2));
    std::swap(bytes[0], bytes[1]);
    Send(bytes, Port());
    ASSERT_TRUE(PassMarker(1, Port()));
    EXPECT_NE(2, StatusOf(kDevice));
}

TEST_P(ReceiverTest, WrongMagicIsDroppedWithoutALogLine) {
    for (const unsigned wrong : {0x0000U, 0x4A78U, 0x4B79U, 0xFFFFU}) {
        Bytes bytes = sim::Pack(Report(kDevice, 2));
        bytes[0] = static_cast<std::uint8_t>(wrong);
        bytes[1] = static_cast<std::uint8_t>(wrong >> 8);
        Send(bytes, Port());
    }
    ASSERT_TRUE(PassMarker(1, Port()));
    EXPECT_NE(2, StatusOf(kDevice));
    EXPECT_TRUE(HasLoggedNothing());
}

TEST_P(ReceiverTest, UnknownCodesAreDroppedWithoutAnAnswerOrALogLine) {
    const std::unique_ptr<sim::UdpSocket> listener = ListenInField(sim::kReplyPort);
    for (const unsigned code : {0x0000U, 0x0100U, 0x0126U, 0x8112U, 0x7FFFU, 0xFFFFU}) {
        sim::Packet packet = Report(kDevice, 2);
        packet.command = static_cast<std::uint16_t>(code);
        Send(packet, Port());
    }
    ASSERT_TRUE(PassMarker(1, Port()));
    EXPECT_NE(2, StatusOf(kDevice));
    EXPECT_FALSE(listener->Receive());
    EXPECT_TRUE(HasLoggedNothing());
}

TEST_P(ReceiverTest, ShortDatagramReadsAsZerosBeyondItsEnd) {
    sim::Packet full = Report(kDevice, 4);
    full.payload.fill(0xEE);
    Send(full, Port());
    ASSERT_TRUE(WaitForStatus(kDevice, 0xEE));
    const Bytes packet = sim::Pack(Report(kDevice, 2));
    Send(ByteView(packet).first(20), Port()); // header and two bytes of payload, of which the second is 0
    ASSERT_TRUE(WaitForStatus(kDevice, 2));
    tagZCU_QUERYSTATUS2 record;
    ASSERT_EQ(0, g_app->ZCU().GetZCUStatus(kDevice, record));
    _zcu_status_payload_t expected{};
    expected.deviceStatus = 2;
    EXPECT_EQ(0, std::memcmp(&expected, &record.status, sizeof(expected)));
}

TEST_P(ReceiverTest, HeaderAloneIsHandledWithAPayloadOfZeros) {
    Send(Report(kDevice, 2), Port());
    ASSERT_TRUE(WaitForStatus(kDevice, 2));
    const Bytes packet = sim::Pack(Report(kDevice, 2));
    Send(ByteView(packet).first(18), Port());
    EXPECT_TRUE(WaitForStatus(kDevice, 0));
}

TEST_P(ReceiverTest, ShorterThanAHeaderIsDropped) {
    const Bytes packet = sim::Pack(Report(kDevice, 2));
    for (std::size_t length = 1; length < 16; ++length) { Send(ByteView(packet).first(length), Port()); }
    ASSERT_TRUE(PassMarker(1, Port()));
    EXPECT_NE(2, StatusOf(kDevice));
}

TEST_P(ReceiverTest, LongDatagramIsCutAndHandled) {
    for (const std::size_t length : {533U, 5119U, 5120U, 5121U, 10'000U}) {
        Bytes bytes = sim::Pack(Report(kDevice, static_cast<std::uint8_t>(length % 100 + 100)));
        bytes.resize(length, 0xEE);
        Send(bytes, Port());
        EXPECT_TRUE(WaitForStatus(kDevice, static_cast<int>(length % 100 + 100))) << length;
    }
}

TEST_P(ReceiverTest, ShortDatagramAfterALongOneReadsAsZeros) {
    Bytes bytes = sim::Pack(Report(kDevice, 0xEE));
    bytes.resize(10'000, 0xEE);
    std::fill(bytes.begin() + 18, bytes.end(), static_cast<std::uint8_t>(0xEE));
    Send(bytes, Port());
    ASSERT_TRUE(WaitForStatus(kDevice, 0xEE));
    const Bytes packet = sim::Pack(Report(kDevice, 1));
    Send(ByteView(packet).first(19), Port());
    ASSERT_TRUE(WaitForStatus(kDevice, 1));
    tagZCU_QUERYSTATUS2 record;
    ASSERT_EQ(0, g_app->ZCU().GetZCUStatus(kDevice, record));
    _zcu_status_payload_t expected{};
    expected.deviceStatus = 1;
    EXPECT_EQ(0, std::memcmp(&expected, &record.status, sizeof(expected)));
}

TEST_P(ReceiverTest, EmptyDatagramCostsAPauseOf100Milliseconds) {
    ASSERT_TRUE(PassMarker(1, Port()));
    const auto begin = sim::Clock::now();
    Send(ByteView(), Port());
    Send(Report(kDevice, 2), Port());
    ASSERT_TRUE(WaitForStatus(kDevice, 2));
    EXPECT_GE(sim::Clock::now() - begin, std::chrono::milliseconds(99));
}

TEST_P(ReceiverTest, DatagramFromNowhereIsIgnoredAndCostsAPauseOf100Milliseconds) {
    ASSERT_TRUE(PassMarker(1, Port()));
    const auto begin = sim::Clock::now();
    SendFromNowhere(Network(), sim::Pack(Report(kDevice, 2)), Port());
    ASSERT_TRUE(PassMarker(3, Port()));
    EXPECT_GE(sim::Clock::now() - begin, std::chrono::milliseconds(99)); // so it was received
    EXPECT_NE(2, StatusOf(kDevice));
}

TEST_P(ReceiverTest, SenderThatIsNotRegisteredIsNotHeardOf) {
    Send(Report(35, 2), Port());
    ASSERT_TRUE(PassMarker(1, Port()));
    EXPECT_EQ(-1, StatusOf(35));
}

TEST_P(ReceiverTest, SenderIsKnownByItsIDWhateverItsAddress) {
    Send(Report(kDevice, 2), Port()); // from 192.168.9.9
    EXPECT_TRUE(WaitForStatus(kDevice, 2));
}

TEST_P(ReceiverTest, HandlersGetTheSendersAddress) {
    const std::unique_ptr<sim::UdpSocket> listener = ListenInField(sim::kReplyPort);
    ASSERT_EQ(0, K740_AddDevice(60, 9, ""));
    Send(sim::MakePacket(9600, 60, 0x0125, Bytes{0x80, 0x25, 0, 0}), Port());
    ASSERT_TRUE(WaitUntil([] { return !g_app->ZCU().GetVirtualClients().empty(); }));
    EXPECT_STREQ(kSenderIP, std::string(g_app->ZCU().GetVirtualClients().front().ip).c_str());
    std::optional<sim::Datagram> answer;
    ASSERT_TRUE(WaitUntil([&] { return (answer = listener->Receive()).has_value(); }));
    const auto packet = sim::Unpack(answer->bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(0x8125, packet->command);
}

TEST_P(ReceiverTest, PagingStationReportIsHandledOnEitherPort) {
    sim::PagingStatus status;
    status.state = 7;
    Send(sim::MakePacket(kStation, 9500, 0x8700, sim::Payload(status)), Port());
    EXPECT_TRUE(WaitUntil([] {
        const auto all = g_app->RPK().GetAllRPKStatus();
        return std::any_of(all.begin(), all.end(), [](const tagRPK_QUERYSTATUS& record) {
            return record.DeviceID() == kStation && record.status.state == 7;
        });
    }));
}

TEST_P(ReceiverTest, RandomPayloadsOfEveryCodeOfTheProtocolDoNoHarm) {
    std::mt19937 random(Port()); // always the same numbers, so that a failure comes again
    std::uniform_int_distribution<unsigned> byte(0, 255);
    const sim::RawSender sender(Network(), kSenderIP);
    for (const unsigned code :
         {0x0101U, 0x0102U, 0x0109U, 0x8109U, 0x0123U, 0x0124U, 0x0125U, 0x8125U, 0x8126U, 0x0127U, 0x8127U, 0x0132U,
          0x8132U, 0x0205U, 0x8205U, 0x8206U, 0x0301U, 0x8301U, 0x0302U, 0x8302U, 0x0303U, 0x8303U, 0x030AU, 0x830AU,
          0x0313U, 0x0314U, 0x8313U, 0x8314U, 0x0700U, 0x8700U, 0x0701U, 0x8701U, 0x0702U, 0x8702U, 0x8112U}) {
        for (int i = 0; i < 10; ++i) {
            Bytes bytes(532);
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(byte(random)); });
            sim::Packet packet = Report(i % 2 == 0 ? kDevice : kStation, 1); // half of them from known senders
            packet.command = static_cast<std::uint16_t>(code);
            const Bytes header = sim::Pack(packet);
            std::copy_n(header.begin(), 18, bytes.begin());
            if (i > 5) { std::copy_n(bytes.begin() + 100, 8, bytes.begin() + 6); } // IDs at random too
            sender.Send(bytes, Port());
        }
        ASSERT_TRUE(PassMarker(static_cast<std::uint8_t>(code % 200), Port())) << std::hex << code;
    }
}

INSTANTIATE_TEST_SUITE_P(Ports, ReceiverTest, ::testing::Values(28001, 29001),
                         [](const auto& port) { return "Port" + std::to_string(port.param); });

} // namespace
} // namespace k740::test
