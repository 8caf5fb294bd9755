// Which manager gets which command. The dispatcher of an application whose threads do not run.
#include "app/application.h"
#include "protocol/commands.h"
#include "sim/udp_socket.h"
#include "sim/wire.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace k740::test {
namespace {

constexpr int kController = 33;
constexpr int kVirtualController = 60;
constexpr int kStation = 5001;
constexpr int kIntercom = 5500;
constexpr int kClient = 9600;
constexpr const char* kClientIP = "192.168.9.9";

int IgnoreMessage(int, int, int) {
    return 0;
}

class DispatchCodesTest : public OnPrivateNetwork {
protected:
    DispatchCodesTest() {
        Network().AddFieldAddresses({kClientIP});
        Network().RunInField([this] {
            m_replies = std::make_unique<sim::UdpSocket>(sim::UdpSocket::BoundTo({kClientIP, 29001}));
            m_requests = std::make_unique<sim::UdpSocket>(sim::UdpSocket::BoundTo({kClientIP, 28001}));
        });
        m_app->Configuration().SetDefaults();
        m_app->Lifetime().Begin();
        EXPECT_EQ(0, m_app->Devices().AddDevice(kController, 1, "192.168.1.33"));
        EXPECT_EQ(0, m_app->Devices().AddDevice(kStation, 2, kClientIP));
        EXPECT_EQ(0x0700, NextCode(*m_requests)); // its first heartbeat
        EXPECT_EQ(0, m_app->Devices().AddDevice(kVirtualController, 9, ""));
        EXPECT_EQ(0, m_app->Devices().AddDevice(kIntercom, 10, ""));
    }

    /// A packet whose payload is the record.
    template <typename Record> void Dispatch(int source, int destination, std::uint16_t command, const Record& record) {
        const _vxa_cmd_packet_t packet =
            MakePacket(static_cast<uint32_t>(source), static_cast<uint32_t>(destination), command, record);
        m_app->Communication().ProcessResponse(&packet, kClientIP);
    }
    void Dispatch(int source, int destination, std::uint16_t command) {
        Dispatch(source, destination, command, std::uint32_t{1});
    }
    /// @return the code of the next packet that comes to the client
    static int NextCode(const sim::UdpSocket& socket) {
        std::optional<sim::Datagram> datagram;
        if (!WaitUntil([&] { return (datagram = socket.Receive()).has_value(); })) { return -1; }
        const auto packet = sim::Unpack(datagram->bytes);
        return packet ? packet->command : -2;
    }
    void Play(std::uint32_t task) {
        _vxa_play_task_req_t_V2 request{};
        request.taskID = task;
        m_app->ZCU().NewTaskZones(kClient, kVirtualController, request);
    }
    /// @return whether the virtual controller plays
    bool Plays(int task) const { return !m_app->ZCU().GetTaskZCU(kClient, task).empty(); }

    std::unique_ptr<sim::UdpSocket> m_replies;
    std::unique_ptr<sim::UdpSocket> m_requests;
    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
};

TEST_F(DispatchCodesTest, CloseAudioEndsATaskOfAVirtualController) {
    Play(1);
    ASSERT_TRUE(Plays(1));
    Dispatch(kClient, kVirtualController, 0x0101);
    EXPECT_FALSE(Plays(1));
}

TEST_F(DispatchCodesTest, CloseZonesEndsTheTasksOfAVirtualController) {
    Play(1);
    Dispatch(kClient, kVirtualController, 0x0102);
    EXPECT_FALSE(Plays(1));
}

TEST_F(DispatchCodesTest, QueriesOfAVirtualControllerAreAnswered) {
    Dispatch(kClient, kVirtualController, 0x0125);
    EXPECT_EQ(0x8125, NextCode(*m_replies));
    Dispatch(kClient, kVirtualController, 0x0132);
    EXPECT_EQ(0x8132, NextCode(*m_replies));
    Dispatch(kClient, kVirtualController, 0x0303);
    EXPECT_EQ(0x8303, NextCode(*m_replies));
}

TEST_F(DispatchCodesTest, TaskExtensionsAreNotedAnsweredAndForgotten) {
    Dispatch(kClient, kVirtualController, 0x0313);
    EXPECT_EQ(0x8313, NextCode(*m_requests));
    EXPECT_EQ(1U, m_app->ZCU().GetTaskExtensions().size());
    Dispatch(kClient, kVirtualController, 0x0314);
    EXPECT_EQ(0x8314, NextCode(*m_requests));
    EXPECT_TRUE(m_app->ZCU().GetTaskExtensions().empty());
}

TEST_F(DispatchCodesTest, VolumeAnswersWaitForTheHost) {
    Dispatch(kController, 9500, 0x8127);
    EXPECT_EQ(1U, m_app->ZCU().VolumesV2().Size());
    Dispatch(kController, 9500, 0x8302);
    EXPECT_EQ(1U, m_app->ZCU().VolumesV3().Size());
}

TEST_F(DispatchCodesTest, VersionAnswerIsFoundByItsQuery) {
    Dispatch(kController, 9500, 0x8132);
    tagQUERY_DEVICE_VERSION_RSP answer{};
    EXPECT_EQ(0, m_app->ZCU().GetDeviceVersion(kController, &answer));
    EXPECT_EQ(1, answer.version.texts[0]);
}

TEST_F(DispatchCodesTest, ZoneMulticastAnswerIsFoundByItsQuery) {
    Dispatch(kController, 9500, 0x8303);
    tagQUERY_ZONE_MCAST_IP_RSP answer{};
    int error = 77;
    EXPECT_TRUE(m_app->ZCU().ZCU_Request_GetZoneMCastIP(kController, &answer, error));
    EXPECT_EQ(0, error);
    EXPECT_EQ(1, answer.table[0]);
}

TEST_F(DispatchCodesTest, AnswersOfPagingStationsAreFoundByTheirRequests) {
    Dispatch(kStation, 9500, 0x830A, std::int16_t{1});
    EXPECT_EQ(0, m_app->RPK().StartStopRPKMonitor(kStation, kController, 1, 1));
    const std::uint16_t answer[] = {3, 0, 1}; // the task, and success
    Dispatch(kStation, 9500, 0x8702, answer);
    EXPECT_EQ(0, m_app->RPK().StartStopRPKTask(kStation, 3, 0, "", 0));
}

TEST_F(DispatchCodesTest, HandshakeOfAStationIsAnsweredByTheIntercom) {
    Dispatch(kStation, kIntercom, 0x0700);
    EXPECT_EQ(0x8700, NextCode(*m_replies));
}

TEST_F(DispatchCodesTest, InvitationRingsAndAnswersEndIt) {
    m_app->Callbacks().intercomMessage.Set(IgnoreMessage);
    tagTALK_STATUS record;
    Dispatch(kStation, kIntercom, 0x0701);
    EXPECT_EQ(0x8701, NextCode(*m_replies));
    ASSERT_EQ(0, m_app->Talker().GetTalkerStatus(kIntercom, record));
    EXPECT_EQ(0, record.status);
    Dispatch(kStation, kIntercom, 0x8701, std::uint8_t{2});
    ASSERT_EQ(0, m_app->Talker().GetTalkerStatus(kIntercom, record));
    EXPECT_EQ(2, record.status);
}

// What the library itself sends, it does not take.
TEST_F(DispatchCodesTest, CodesOfOtherReceiversAreDropped) {
    Play(1);
    for (const unsigned code : {0x0109U, 0x0123U, 0x0124U, 0x0127U, 0x0301U, 0x0302U, 0x030AU, 0x0702U, 0x8101U,
                                0x8102U, 0x8125U, 0x8313U, 0x8314U, 0x8112U}) {
        Dispatch(kClient, kVirtualController, static_cast<std::uint16_t>(code));
        Dispatch(kStation, kIntercom, static_cast<std::uint16_t>(code));
        Dispatch(kController, 9500, static_cast<std::uint16_t>(code));
    }
    EXPECT_TRUE(Plays(1));
    EXPECT_EQ(0U, m_app->ZCU().VolumesV2().Size() + m_app->ZCU().VolumesV3().Size());
    Dispatch(kClient, kVirtualController, 0x0132);
    EXPECT_EQ(0x8132, NextCode(*m_replies)) << "nothing has been answered before";
    EXPECT_FALSE(m_requests->Receive());
}

} // namespace
} // namespace k740::test
