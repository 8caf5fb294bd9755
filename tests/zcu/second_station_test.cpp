// Two stations, each with this library in a process and a network namespace of its own: one broadcasts, the other plays
// it as a virtual zone controller.
#include "app/application.h"
#include "app/k740.h"
#include "sim/audio_encoder.h"
#include "sim/host_program.h"
#include "sim/wav_match.h"
#include "tests/app/recording_host.h"
#include "tests/support/leftovers.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"
#include "tests/zcu/second_station.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

namespace k740::test {
namespace {

using ::testing::ElementsAre;

constexpr const char* kDirectory = "second"; // of the second station, below this one's
constexpr double kGoodSignalToNoiseDb = 20;  // what the coding leaves of a tone is some 25 dB

/// What a receiver makes of audio that was coded datagram by datagram from the start of a stream.
std::vector<std::int16_t> Coded(const std::vector<std::int16_t>& audio) {
    sim::AudioEncoder encoder(kSecondNode, 1, 341);
    sim::AudioDecoder decoder;
    std::vector<std::int16_t> coded;
    const std::size_t step = encoder.SamplesPerDatagram();
    for (std::size_t at = 0; at + step <= audio.size(); at += step) {
        const auto samples = decoder.Decode(encoder.Encode(std::span(audio).subspan(at, step)));
        coded.insert(coded.end(), samples.begin(), samples.end());
    }
    return coded;
}

class SecondStationTest : public OnPrivateNetwork {
protected:
    SecondStationTest() {
        Network().AddFieldAddresses({kSecondStationIP});
        std::filesystem::create_directory(kDirectory);
        K740_SetTrainCallback(RecordingHost::OnTrainMessage, RecordingHost::OnTrainAudio);
        EXPECT_EQ(0, K740_AddDevice(kSharedController, 9, ""));
        // A new device's first status is off line; the train's comes after it.
        tagZCU_QUERYSTATUS2 record;
        EXPECT_TRUE(WaitUntil([&] { return g_app->ZCU().GetZCUStatus(kSharedController, record) == 0; }));
        EXPECT_EQ(0, K740_SetTrainStatus(kSharedController, 1));
        Network().RunInField([this] { m_second.emplace(std::vector<std::string>{K740_SECOND_STATION, kDirectory}); });
    }
    static std::vector<TrainMessageCall> Messages() { return RecordingHost::Get().trainMessages.All(); }
    /// What the host got, which must be of the second station's task.
    static std::vector<std::int16_t> Heard() {
        std::vector<std::int16_t> heard;
        for (const TrainAudioCall& call : RecordingHost::Get().trainAudio.All()) {
            EXPECT_EQ(kSecondNode, call.sourceID);
            EXPECT_EQ(kSharedTask, call.taskID);
            std::vector<std::int16_t> samples(call.audio.size() / 2);
            std::memcpy(samples.data(), call.audio.data(), call.audio.size());
            heard.insert(heard.end(), samples.begin(), samples.end());
        }
        return heard;
    }
    static void LetPlay() { std::ofstream(std::filesystem::path(kDirectory) / kMayPlay).put('\n'); }

    std::optional<sim::HostProgram> m_second;
};

TEST_F(SecondStationTest, TheVirtualControllerPlaysWhatTheOtherStationBroadcasts) {
    const int before = CountMembers();
    ASSERT_TRUE(WaitUntil([] { return !Messages().empty(); }));
    ASSERT_TRUE(WaitUntil([=] { return CountMembers() == before + 1; }));
    LetPlay();
    std::optional<int> status;
    ASSERT_TRUE(WaitUntil([&] { return (status = m_second->ExitStatus()).has_value(); }));
    EXPECT_EQ(0, *status) << "the step of the second station that failed";
    ASSERT_TRUE(WaitUntil([] { return Messages().size() == 2; }));

    EXPECT_THAT(Messages(), ElementsAre(TrainMessageCall{kSecondNode, kSharedController, 1},
                                        TrainMessageCall{kSecondNode, kSharedController, 2}));
    EXPECT_TRUE(WaitForExactLine("Exit player for receive multicast exit, virtual ZCU 900"));
    const auto heard = Heard();
    EXPECT_EQ(Coded(SharedAudio()), heard);
    const sim::WavMatch match = sim::Match(SharedAudio(), heard);
    EXPECT_LT(match.missing, 2048U) << "only what did not fill a datagram";
    EXPECT_GT(match.signalToNoiseDb, kGoodSignalToNoiseDb);
}

} // namespace
} // namespace k740::test
