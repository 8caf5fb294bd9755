// Whom a virtual zone controller does not answer.
#include "sim/udp_socket.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/wait_until.h"
#include "zcu/zcu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;

constexpr std::uint16_t kMarker = 0x7777;

/// An application without receivers. What goes to 0.0.0.0 arrives at this machine's own port 29001.
class VirtualSenderTest : public OnRegistry {
protected:
    VirtualSenderTest() { EXPECT_EQ(0, m_devices.AddDevice(900, 9, "")); }

    /// @return the commands that have come to the port, up to a marker that is sent here
    std::vector<std::uint16_t> AnswersUntilNow() {
        m_app->SendToAddress("127.0.0.1", sim::kReplyPort, MakePacket(1, 1, kMarker));
        std::vector<std::uint16_t> commands;
        EXPECT_TRUE(WaitUntil([&] {
            while (const auto datagram = m_own.Receive()) { commands.push_back(sim::Unpack(datagram->bytes)->command); }
            return !commands.empty() && commands.back() == kMarker;
        }));
        return commands;
    }

    const sim::UdpSocket m_own = sim::UdpSocket::BoundTo({"127.0.0.1", sim::kReplyPort});
    CZCU& m_zcu = m_app->ZCU();
};

TEST_F(VirtualSenderTest, QueriesFromNowhereAreIgnored) {
    const _vxa_cmd_packet_t version = MakePacket(9600, 900, 0x0132);
    const _vxa_cmd_packet_t groups = MakePacket(9600, 900, 0x0303);
    m_zcu.ReceiveGetVersion(&version, "0.0.0.0");
    m_zcu.ReceiveGetMulticastIP(&groups, "0.0.0.0");
    EXPECT_THAT(AnswersUntilNow(), ElementsAre(kMarker));
}

TEST_F(VirtualSenderTest, QueriesOfTheLibraryItselfAreAnswered) {
    const _vxa_cmd_packet_t version = MakePacket(9600, 900, 0x0132);
    const _vxa_cmd_packet_t groups = MakePacket(9600, 900, 0x0303);
    m_zcu.ReceiveGetVersion(&version, "127.0.0.1");
    m_zcu.ReceiveGetMulticastIP(&groups, "127.0.0.1");
    EXPECT_THAT(AnswersUntilNow(), ElementsAre(0x8132, 0x8303, kMarker));
}

} // namespace
} // namespace k740::test
