// The requests that end a task or a zone's audio: their bytes, and when they are not sent.
#include "common/udp.h"
#include "sim/udp_socket.h"
#include "tests/zcu/trigger_fixture.h"

#include <poll.h>

#include <optional>

namespace k740::test {
namespace {

using sim::Bytes;
using sim::Event;

class ReleaseRequestsTest : public TriggerTest {
protected:
    /// The one datagram of a command that the controller received.
    Bytes Sent(std::uint16_t command) {
        const auto event = Field().Events().WaitFor(sim::Received(kController, command), kSoon);
        return event ? event->bytes : Bytes{};
    }
    /// How many of a command the controller had received when it received what was sent last of all.
    std::size_t CountUntilNow(std::uint16_t command) {
        ++m_marker;
        EXPECT_EQ(1, g_app->ZCU().ZCU_Request_CloseAudio(kController, m_marker));
        const auto marker = [this](const Event& event) {
            return sim::Received(kController, 0x0101)(event) && sim::ReadCloseAudioTask(*event.packet) == m_marker;
        };
        EXPECT_TRUE(Field().Events().WaitFor(marker, kSoon));
        return Field().Events().Count(sim::Received(kController, command));
    }

private:
    unsigned m_marker = 40'000; // task ID of the last marker
};

Bytes Padded(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

TEST_F(ReleaseRequestsTest, CloseAudioIsTheStatedBytes) {
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_CloseAudio(33, 1001));
    const Bytes expected{0x79, 0x4A, 0x00, 0x00, 0x00, 0x00, // magic, version 0, reserved
                         0x1C, 0x25, 0x00, 0x00,             // source 9500
                         0x21, 0x00, 0x00, 0x00,             // destination 33
                         0x01, 0x01, 0x08, 0x00,             // command, length
                         0xE9, 0x03, 0x00, 0x00, 0x03};      // task, 3
    EXPECT_EQ(Padded(expected, 532), Sent(0x0101));
}

TEST_F(ReleaseRequestsTest, CloseAudioGoesToControllersOnly) {
    for (const int id : {0, -1, 1000, 9500}) { EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseAudio(id, 1)) << id; }
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseAudio(999, 1)); // not registered
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseAudio(1, 1));
    EXPECT_EQ(0, K740_AddDevice(999, 1, "192.168.9.99"));
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_CloseAudio(999, 1));
}

TEST_F(ReleaseRequestsTest, CloseZonesIsTheStatedBytes) {
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_CloseZones(33, 0xA5));
    const Bytes expected{0x79, 0x4A, 0x03, 0x00, 0x00, 0x00, // magic, version 3, reserved
                         0x1C, 0x25, 0x00, 0x00,             // source 9500
                         0x21, 0x00, 0x00, 0x00,             // destination 33
                         0x02, 0x01, 0x0C, 0x00,             // command, length 12
                         0xA5};                              // mask
    EXPECT_EQ(Padded(expected, 532), Sent(0x0102));
}

TEST_F(ReleaseRequestsTest, CloseZonesTakesMasks1To255OfControllers) {
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseZones(33, 0));
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseZones(33, 256));
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseZones(33, 65535));
    for (const int id : {0, -1, 1000, 999}) { EXPECT_EQ(0, g_app->ZCU().ZCU_Request_CloseZones(id, 1)) << id; }
    EXPECT_EQ(0U, CountUntilNow(0x0102));
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_CloseZones(33, 1));
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_CloseZones(33, 255));
    EXPECT_EQ(2U, CountUntilNow(0x0102));
}

class ExitMulticastTest : public ReleaseRequestsTest {
protected:
    ExitMulticastTest() {
        Network().RunInField([this] { m_receiver = sim::UdpSocket::InGroup({"225.0.0.1", 28100}, "192.168.1.33"); });
        EXPECT_EQ(0, m_sender.join_multicast_send("225.0.0.1", 28100, ""));
    }
    Bytes Receive() {
        pollfd ready{m_receiver->Descriptor(), POLLIN, 0};
        if (poll(&ready, 1, 5000) != 1) { return {}; }
        const auto datagram = m_receiver->Receive();
        return datagram ? datagram->bytes : Bytes{};
    }

    CQBUDP m_sender;
    std::optional<sim::UdpSocket> m_receiver;
};

TEST_F(ExitMulticastTest, The4KFormHas1052BytesAndLength1032) {
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_ExitMultiCast_4K(&m_sender, 33));
    const Bytes expected{0x79, 0x4A, 0x00, 0x00, 0x00, 0x00, // magic, version 0, reserved
                         0x1C, 0x25, 0x00, 0x00,             // source 9500
                         0x21, 0x00, 0x00, 0x00,             // controller 33
                         0x12, 0x81, 0x08, 0x04};            // type, length
    EXPECT_EQ(Padded(expected, 1052), Receive());
}

TEST_F(ExitMulticastTest, The2KFormHas540BytesAndLength520) {
    EXPECT_EQ(1, g_app->ZCU().ZCU_Request_ExitMultiCast_2K(&m_sender, 999));
    const Bytes expected{0x79, 0x4A, 0x00, 0x00, 0x00, 0x00, 0x1C, 0x25, 0x00,
                         0x00, 0xE7, 0x03, 0x00, 0x00, 0x12, 0x81, 0x08, 0x02};
    EXPECT_EQ(Padded(expected, 540), Receive());
}

TEST_F(ExitMulticastTest, WithoutAnOpenSocketNothingIsSent) {
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_ExitMultiCast_4K(nullptr, 33));
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_ExitMultiCast_2K(nullptr, 33));
    CQBUDP closed;
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_ExitMultiCast_4K(&closed, 33));
    m_sender.close_multicast();
    EXPECT_EQ(0, g_app->ZCU().ZCU_Request_ExitMultiCast_2K(&m_sender, 33));
}

} // namespace
} // namespace k740::test
