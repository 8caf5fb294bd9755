// The receiver of one multicast group after the other.
#include "app/application.h"
#include "common/stopwatch.h"
#include "player/group_receiver.h"
#include "sim/audio_encoder.h"
#include "sim/audio_source.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/support/leftovers.h"
#include "tests/support/noise.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace k740::test {
namespace {

constexpr const char* kGroup = "225.7.0.1";
constexpr const char* kOtherGroup = "225.7.0.2";
constexpr int kPort = sim::kAudioPort;

class GroupReceiverTest : public OnPrivateNetwork {
protected:
    GroupReceiverTest() {
        m_app->Configuration().SetDefaults();
        m_app->Lifetime().Begin();
    }
    /// A datagram of PCM, 1764 bytes of it.
    static sim::Bytes Datagram(std::uint32_t seed) {
        return sim::Pack(sim::AudioEncoder(1, 1, 357).Encode(Noise(882, seed)));
    }
    void Send(const std::string& group, const sim::Bytes& datagram) {
        m_sender.SendRaw(datagram, {group, sim::kAudioPort});
    }
    /// @return what the next datagram yields
    int ReceiveOne() {
        int length = kNothingReceived;
        EXPECT_TRUE(WaitUntil([&] { return (length = m_receiver.Receive()) != kNothingReceived; }));
        return length;
    }
    std::vector<std::int16_t> Audio() { return {m_receiver.Audio(), m_receiver.Audio() + 882}; }

    sim::PagingStation& m_sender = AddPagingStation(5000, "192.168.8.99");
    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
    CGroupReceiver m_receiver{*m_app};
};

TEST_F(GroupReceiverTest, DecodesWhatComesToItsGroup) {
    ASSERT_TRUE(m_receiver.Join(kGroup, kPort));
    EXPECT_EQ(kGroup, m_receiver.Group());
    Send(kOtherGroup, Datagram(1));
    Send(kGroup, Datagram(2));
    EXPECT_EQ(1764, ReceiveOne());
    EXPECT_EQ(Noise(882, 2), Audio());
    Send(kGroup, sim::EndOfStream(1, 33));
    EXPECT_EQ(kEndOfStreamReceived, ReceiveOne());
    Send(kGroup, sim::Bytes(20, 0xFF));
    EXPECT_EQ(0, ReceiveOne());
}

TEST_F(GroupReceiverTest, WaitsTwentyMillisecondsForADatagram) {
    ASSERT_TRUE(m_receiver.Join(kGroup, kPort));
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(kNothingReceived, m_receiver.Receive());
    EXPECT_GE(watch.TimeEnd_us(), 19'000); // the system counts in ticks
    EXPECT_LT(watch.TimeEnd(), 200U);
}

TEST_F(GroupReceiverTest, WithoutAGroupItWaitsAsLong) {
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(kNothingReceived, m_receiver.Receive());
    EXPECT_GE(watch.TimeEnd_us(), 20'000);
    EXPECT_EQ("", m_receiver.Group());
}

TEST_F(GroupReceiverTest, ASecondJoinLeavesTheFirstGroupAndWhatWaitedThere) {
    const Leftovers before;
    ASSERT_TRUE(m_receiver.Join(kGroup, kPort));
    Send(kGroup, Datagram(1));
    ASSERT_TRUE(WaitUntil([] { return IsAnythingWaiting(kGroup); }));
    ASSERT_TRUE(m_receiver.Join(kOtherGroup, kPort));
    EXPECT_EQ(before.descriptors + 1, CountDescriptors());
    EXPECT_EQ(0, MembersOf(kGroup));
    EXPECT_EQ(1, MembersOf(kOtherGroup));
    Send(kOtherGroup, Datagram(2));
    EXPECT_EQ(1764, ReceiveOne());
    EXPECT_EQ(Noise(882, 2), Audio());
}

TEST_F(GroupReceiverTest, LeavingClosesTheSocketAndNeedsNoGroup) {
    const Leftovers before;
    m_receiver.Leave();
    ASSERT_TRUE(m_receiver.Join(kGroup, kPort));
    m_receiver.Leave();
    m_receiver.Leave();
    EXPECT_EQ(before, Leftovers());
    EXPECT_EQ("", m_receiver.Group());
}

TEST_F(GroupReceiverTest, AJoinThatFailsLeavesNoGroup) {
    const Leftovers before;
    ASSERT_TRUE(m_receiver.Join(kGroup, kPort));
    EXPECT_FALSE(m_receiver.Join("192.168.1.1", kPort));
    EXPECT_EQ("", m_receiver.Group());
    EXPECT_EQ(before, Leftovers());
    EXPECT_TRUE(m_receiver.Join(kGroup, kPort));
}

TEST_F(GroupReceiverTest, AFailureIsLoggedOnceForAGroup) {
    const auto fail = [this](const char* group, int times) {
        for (int i = 0; i < times; ++i) { EXPECT_FALSE(m_receiver.Join(group, kPort)); }
    };
    fail("192.168.1.1", 3);
    fail("192.168.1.2", 2);
    EXPECT_TRUE(m_receiver.Join(kGroup, kPort));
    fail("192.168.1.2", 2);
    std::filesystem::create_directory(kLogDirectory);
    m_app->Log().SetBaseDirectory(".");
    m_app->Log().SaveSDKLog();
    const std::string line = "*****Failed to join into multi-cast group 192.168.1.";
    EXPECT_EQ((std::vector<std::string>{line + "1", line + "2", line + "2"}), LogTexts());
}

TEST_F(GroupReceiverTest, ReceiversOfTheSameGroupBothHearIt) {
    CGroupReceiver second(*m_app);
    ASSERT_TRUE(m_receiver.Join(kGroup, kPort));
    ASSERT_TRUE(second.Join(kGroup, kPort));
    Send(kGroup, Datagram(1));
    EXPECT_EQ(1764, ReceiveOne());
    EXPECT_TRUE(WaitUntil([&] { return second.Receive() == 1764; }));
}

TEST_F(GroupReceiverTest, ItsEndLeavesNothing) {
    const Leftovers before;
    {
        CGroupReceiver receiver(*m_app);
        EXPECT_TRUE(receiver.Join(kGroup, kPort));
    }
    EXPECT_EQ(before, Leftovers());
}

} // namespace
} // namespace k740::test
