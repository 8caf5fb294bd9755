// What a broadcast puts on the wire: requests, audio, the end of the stream.
#include "tests/player/broadcast_fixture.h"
#include "tests/support/noise.h"
#include "tests/support/sha256.h"

#include <algorithm>
#include <set>
#include <span>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using sim::PlayReply;
using sim::ReadAt;
using sim::command::kCloseAudio;
using sim::command::kPlay;

class StreamBroadcastTest : public BroadcastTest {
protected:
    StreamBroadcastTest() { m_controller.SetKeep(sim::Keep::SamplesAndDatagrams); }

    [[nodiscard]] sim::Recording Heard() const { return m_controller.Recordings().at(0); }
    /// The datagrams of the group once so many with audio have come.
    [[nodiscard]] std::vector<Bytes> WaitForAudio(std::size_t count) const {
        EXPECT_TRUE(m_controller.WaitForDatagrams(count, kSoon));
        return Heard().rawDatagrams;
    }
    /// Fingerprints of the datagrams that audio becomes.
    std::vector<std::string> Fingerprints(int format, int volume, std::size_t samples, std::size_t chunkBytes) {
        g_app->Configuration().SetAudioStreamFormat(format);
        StartAndBroadcast({.volume = volume});
        EXPECT_TRUE(PushAudio(kTask, Noise(samples), chunkBytes));
        std::vector<std::string> fingerprints;
        for (const Bytes& datagram : WaitForAudio(2)) { fingerprints.push_back(Sha256Prefix(datagram)); }
        return fingerprints;
    }
};

using Fingerprint = std::vector<std::string>;

TEST_F(StreamBroadcastTest, Format0IsSentAsItIs) {
    EXPECT_EQ((Fingerprint{"afb6e8323e289e62", "fa4018ca0a4639e5"}), Fingerprints(0, 100, 4096, 4096));
    const auto datagrams = Heard().rawDatagrams;
    EXPECT_EQ((Bytes{0xC1, 0xE5, 0xCC, 0xCA, 0x52, 0x55}), Bytes(datagrams[0].begin() + 1042, datagrams[0].end() - 4));
    EXPECT_EQ((Bytes{0x6E, 0x07, 0x40, 0x02, 0x56, 0x56}), Bytes(datagrams[1].begin() + 1042, datagrams[1].end() - 4));
}

TEST_F(StreamBroadcastTest, OddChunksMakeTheSameStream) {
    EXPECT_EQ((Fingerprint{"afb6e8323e289e62", "fa4018ca0a4639e5"}), Fingerprints(0, 100, 4096, 333));
}

TEST_F(StreamBroadcastTest, Format0AtHalfVolumeIsScaled) {
    EXPECT_EQ((Fingerprint{"6516cd6a132c8bc0", "37522a740e4e9d06"}), Fingerprints(0, 50, 4096, 4096));
}

TEST_F(StreamBroadcastTest, Format1IsDoubled) {
    EXPECT_EQ((Fingerprint{"9e397d5e561b1b2e", "0a602419b4720d83"}), Fingerprints(1, 100, 2205, 2048));
}

TEST_F(StreamBroadcastTest, Format1AtHalfVolumeIsDoubledAndScaled) {
    EXPECT_EQ((Fingerprint{"6f01b07873fc5254", "874bd35306103998"}), Fingerprints(1, 50, 2205, 2048));
}

TEST_F(StreamBroadcastTest, Format4IsResampled) {
    EXPECT_EQ((Fingerprint{"248cfd11eb5f6dcb", "fea655a06ac89934"}), Fingerprints(4, 100, 800, 700));
}

TEST_F(StreamBroadcastTest, AControllerHearsWhatWasSent) {
    StartAndBroadcast();
    EXPECT_TRUE(PushAudio(kTask, Noise(4096), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(2, kSoon));
    const auto samples = Heard().samples;
    const auto half = [&](std::size_t from) {
        return Sha256Prefix(std::as_bytes(std::span(samples).subspan(from, 2048)));
    };
    ASSERT_EQ(4096U, samples.size());
    EXPECT_EQ("f5c668867bd27bc6", half(0));
    EXPECT_EQ("f1f54d270dd38070", half(2048));
    EXPECT_EQ(samples, m_controller.HeardIn(1));
    EXPECT_EQ(samples, m_controller.HeardIn(8));
}

TEST_F(StreamBroadcastTest, VolumeZeroIsSentAsSilence) {
    StartAndBroadcast({.volume = 0});
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    EXPECT_EQ(std::vector<std::int16_t>(2048, 0), Heard().samples);
}

TEST_F(StreamBroadcastTest, ADatagramCarriesTheNodeIDAndStreamOne) {
    ASSERT_EQ(0, K740_SetNodeID(9876));
    StartAndBroadcast();
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    const Bytes datagram = WaitForAudio(1).at(0);
    ASSERT_EQ(1052U, datagram.size());
    const Bytes header{0x79, 0x4A, 0, 0, 0, 0, 0x94, 0x26, 0, 0, 1, 0, 0, 0, 0x55, 0x01, 0x08, 0x04};
    EXPECT_EQ(header, Bytes(datagram.begin(), datagram.begin() + 18));
    EXPECT_EQ(Bytes(4, 0), Bytes(datagram.end() - 4, datagram.end()));
}

TEST_F(StreamBroadcastTest, AFrameIsSentOnceItIsWhole) {
    StartAndBroadcast();
    EXPECT_EQ(0, PushBytes(kTask, Bytes(4095)));
    EXPECT_EQ(0, PushBytes(kTask, Bytes(1)));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    EXPECT_EQ(0, PushBytes(kTask, Bytes(4095)));
    StopAndWait();
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kController, kCloseAudio), kSoon));
    EXPECT_EQ(1U, m_controller.CountDatagrams()); // what is no whole frame is not sent
}

TEST_F(StreamBroadcastTest, RequestsCarryTheTask) {
    ASSERT_EQ(0, K740_SetFirstMulticastIP("226.1.2.3"));
    StartAndBroadcast({.priority = 200, .recovery = 1, .zones = " 002103 ", .dryContact = 1});
    const sim::Packet packet = WaitForPacket(kController, kPlay);
    EXPECT_EQ(9500U, packet.source);
    EXPECT_EQ(kController, packet.destination);
    EXPECT_EQ(66, packet.length);
    const Bytes expected{1,    0, 0,    0,    56,   0,    1, 1, 3,    0,    0, 0, 0, // sequence, 256 - 200, dry contact
                         0xE9, 3, 0,    0,    0xE9, 3,    0, 0, 3,    0,    0, 0, 1, 0,    // task twice, 3, recovery
                         0,    0, 0xFF, 0xFF, 0,    0,    0, 0, 0,    0,    0, 3, 0, 0, 0, // zones
                         0,    0, 0,    0,    0,    0,    0, 0, 32,   0,    0, 0,          // 32
                         3,    2, 1,    226,  0xC4, 0x6D, 0, 0, 0x1C, 0x25, 0, 0};         // group, port, node
    EXPECT_EQ(expected, Bytes(packet.payload.begin(), packet.payload.begin() + 66));
}

TEST_F(StreamBroadcastTest, EveryTaskHasItsOwnGroupAndSequence) {
    std::set<std::string> groups;
    for (int i = 0; i < 3; ++i) { StartAndBroadcast({.taskID = kTask + i}); }
    for (const sim::Recording& recording : m_controller.Recordings()) {
        EXPECT_EQ(recording.request.taskId - kTask + 1, recording.request.sequence);
        groups.insert(recording.request.group);
    }
    EXPECT_EQ((std::set<std::string>{"225.0.0.1", "225.0.0.2", "225.0.0.3"}), groups);
}

TEST_F(StreamBroadcastTest, AudioGoesToItsOwnTaskOnly) {
    StartAndBroadcast({.taskID = 1});
    StartAndBroadcast({.taskID = 2});
    EXPECT_TRUE(PushAudio(2, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    EXPECT_EQ(0U, m_controller.Recordings().at(0).datagrams);
    EXPECT_EQ(1U, m_controller.Recordings().at(1).datagrams);
}

TEST_F(StreamBroadcastTest, WithoutRecoveryTheStreamEndsTwiceForEveryControllerThenTheAudioIsClosed) {
    AddRegistered(34);
    StartAndBroadcast({.zones = "0021FF;0022FF"});
    StopAndWait();
    const auto close = Field().Events().WaitFor(sim::Received(kController, kCloseAudio), kSoon);
    ASSERT_TRUE(close);
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(34, kCloseAudio), kSoon));
    const sim::Recording heard = Heard();
    ASSERT_EQ(4U, heard.rawDatagrams.size());
    for (std::size_t i = 0; i < 4; ++i) {
        Bytes expected{0x79, 0x4A, 0, 0, 0, 0, 0x1C, 0x25, 0, 0, 33, 0, 0, 0, 0x12, 0x81, 0x08, 0x04};
        expected[10] = i % 2 == 0 ? 33 : 34;
        expected.resize(1052);
        EXPECT_EQ(expected, heard.rawDatagrams[i]) << i;
    }
    ASSERT_EQ(2U, heard.endsOfStream.size());
    EXPECT_GE(heard.endsOfStream[1] - heard.endsOfStream[0], 19ms);
    EXPECT_LT(heard.endsOfStream[1] - heard.endsOfStream[0], 90ms);
    EXPECT_GE(close->time - heard.endsOfStream[1], 19ms);
}

TEST_F(StreamBroadcastTest, WithRecoveryNoEndOfStreamIsSentButTheAudioIsClosed) {
    AddRegistered(34);
    StartAndBroadcast({.recovery = 1, .zones = "0021FF;0022FF"});
    StopAndWait();
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kController, kCloseAudio), kSoon));
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(34, kCloseAudio), kSoon));
    EXPECT_TRUE(Heard().rawDatagrams.empty());
}

TEST_F(StreamBroadcastTest, CloseAudioNamesTheTask) {
    StartAndBroadcast({.recovery = 1});
    StopAndWait();
    const sim::Packet packet = WaitForPacket(kController, kCloseAudio);
    const Bytes payload{0xE9, 3, 0, 0, 3, 0, 0, 0};
    EXPECT_EQ(0, packet.version);
    EXPECT_EQ(8, packet.length);
    EXPECT_EQ(payload, Bytes(packet.payload.begin(), packet.payload.begin() + 8));
}

TEST_F(StreamBroadcastTest, ARepeatedItemIsServedRepeatedly) {
    StartAndBroadcast({.zones = "002101;002102"});
    WaitForPacket(kController, kPlay, 2);
    StopAndWait();
    WaitForPacket(kController, kCloseAudio, 2);
    EXPECT_EQ(4U, Heard().rawDatagrams.size());
}

TEST_F(StreamBroadcastTest, TheAudioIsClosedAlsoOnControllersThatDidNotJoin) {
    Reply(AddRegistered(34), PlayReply::Refuse);
    StartAndBroadcast({.recovery = 1, .zones = "0021FF;0022FF"});
    StopAndWait();
    WaitForPacket(34, kCloseAudio);
}

TEST_F(StreamBroadcastTest, EveryZonesReachesEveryController) {
    AddRegistered(34);
    StartAndBroadcast({.zones = "FFFFFF"});
    EXPECT_EQ(0xFFU, sim::ReadPlayRequest(WaitForPacket(kController, kPlay)).zoneMask);
    EXPECT_EQ(0xFFU, sim::ReadPlayRequest(WaitForPacket(34, kPlay)).zoneMask);
    StopAndWait();
    WaitForPacket(34, kCloseAudio);
}

} // namespace
} // namespace k740::test
