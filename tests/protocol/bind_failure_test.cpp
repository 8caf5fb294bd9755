#include "app/application.h"
#include "common/thread.h"
#include "sim/raw_sender.h"
#include "sim/records.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <system_error>

namespace k740::test {
namespace {

constexpr int kController = 33;

class BindFailureTest : public OnPrivateNetwork {
protected:
    BindFailureTest() { Network().AddFieldAddresses({kControllerIP}); }

    /// Holds a port of the station as another program would.
    static sim::UdpSocket Take(std::uint16_t port) { return sim::UdpSocket::BoundTo({"0.0.0.0", port}); }

    /// Whether a status report to this port is handled.
    bool Hears(std::uint16_t port) const {
        if (K740_AddDevice(kController, 1, kControllerIP) != 0) { return false; }
        sim::StatusReport report;
        report.deviceStatus = 3;
        const sim::Packet packet = sim::MakePacket(kController, 9500, 0x8126, sim::Payload(report));
        sim::RawSender(Network(), kControllerIP).Send(sim::Pack(packet), port);
        return WaitUntil([] {
            tagZCU_QUERYSTATUS2 record;
            return g_app->ZCU().GetZCUStatus(kController, record) == 0 && record.status.deviceStatus == 3;
        });
    }

    /// @return the place of the first text that matches; the number of texts when there is none
    static std::ptrdiff_t Place(const std::vector<std::string>& texts, const std::string& pattern) {
        const auto found =
            std::find_if(texts.begin(), texts.end(), ::testing::Matches(::testing::MatchesRegex(pattern)));
        return found - texts.begin();
    }
    /// Expects both lines of the failure, in their order.
    static void ExpectFailureLogged(const std::string& port) {
        ASSERT_TRUE(WaitForLogLine("Failed to bind udp port " + port));
        const auto texts = LogTexts();
        const auto ofSocket =
            Place(texts, "[*]{11}Failed to bind socket:[0-9]+, port:" + port + ", ret:-1, Address already in use");
        const auto ofReceiver = Place(texts, "[*]{5}Failed to bind udp port " + port);
        EXPECT_LT(ofSocket, ofReceiver);
        EXPECT_LT(ofReceiver, std::ssize(texts));
        EXPECT_EQ(0, CountLogLines("Player"));
    }

    static constexpr const char* kControllerIP = "192.168.1.33";
};

TEST_F(BindFailureTest, BothPortsAreBoundAndLogged) {
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitForLogLine("-------K740_Initialize()"));
    const auto texts = LogTexts();
    for (const char* port : {"28001", "29001"}) {
        EXPECT_LT(Place(texts, std::string("Bind socket:[0-9]+, port:") + port), std::ssize(texts)) << port;
    }
    EXPECT_EQ(CCommunication::kBound, g_app->Communication().State());
}

TEST_F(BindFailureTest, BoundPortsAreNotShared) {
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitUntil([] { return g_app->Communication().HoldsPorts(); }));
    for (const std::uint16_t port : {sim::kRequestPort, sim::kReplyPort}) {
        EXPECT_THROW(Take(port), std::system_error);
    }
}

TEST_F(BindFailureTest, Port29001TakenLeaves28001AtWork) {
    const sim::UdpSocket other = Take(29001);
    ASSERT_EQ(0, K740_Initialize());
    ExpectFailureLogged("29001");
    EXPECT_TRUE(Hears(28001));
}

TEST_F(BindFailureTest, Port28001TakenLeaves29001AtWork) {
    const sim::UdpSocket other = Take(28001);
    ASSERT_EQ(0, K740_Initialize());
    ExpectFailureLogged("28001");
    EXPECT_TRUE(Hears(29001));
}

TEST_F(BindFailureTest, BothPortsTakenLeaveTheInterfaceAtWork) {
    const sim::UdpSocket first = Take(28001);
    const sim::UdpSocket second = Take(29001);
    ASSERT_EQ(0, K740_Initialize());
    ExpectFailureLogged("28001");
    ExpectFailureLogged("29001");
    EXPECT_EQ(CCommunication::kBindFailed, g_app->Communication().State());
    EXPECT_EQ(0, K740_AddDevice(kController, 1, kControllerIP));
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
}

TEST_F(BindFailureTest, PortThatComesFreeStaysUnserved) {
    {
        const sim::UdpSocket other = Take(29001);
        ASSERT_EQ(0, K740_Initialize());
        ExpectFailureLogged("29001");
    }
    EXPECT_TRUE(Hears(28001));
    EXPECT_NO_THROW(Take(29001)); // nobody has tried again
}

TEST_F(BindFailureTest, BeforeInitialisationNoReceiverHasStarted) {
    EXPECT_EQ(CCommunication::kNotStarted, g_app->Communication().State());
    EXPECT_FALSE(g_app->Communication().HoldsPorts());
}

TEST_F(BindFailureTest, PortsAreFreeWhenDeinitializeReturns) {
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_EQ(0, K740_Deinitialize());
    EXPECT_NO_THROW(Take(28001));
    EXPECT_NO_THROW(Take(29001));
}

} // namespace
} // namespace k740::test
