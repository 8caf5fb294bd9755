// The audio that a virtual zone controller plays, on its way to the host.
#include "sim/audio_encoder.h"
#include "tests/support/noise.h"
#include "tests/zcu/virtual_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <set>
#include <thread>
#include <utility>

namespace k740::test {
namespace {

using sim::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Datagrams of one stream and what a receiver makes of them.
struct CodedAudio {
    std::vector<Bytes> datagrams;
    std::vector<Bytes> decoded; // PCM of each datagram

    CodedAudio(std::uint16_t type, std::size_t count) {
        sim::AudioEncoder encoder(kClient, 1, type);
        sim::AudioDecoder decoder;
        const auto samples = encoder.SamplesPerDatagram();
        const auto noise = Noise(samples * count);
        for (std::size_t i = 0; i < count; ++i) {
            const sim::AudioDatagram datagram = encoder.Encode(std::span(noise).subspan(i * samples, samples));
            datagrams.push_back(sim::Pack(datagram));
            decoded.push_back(sim::ByteWriter().PutAll(decoder.Decode(datagram)).Get());
        }
    }
};

class VirtualAudioTest : public VirtualTest {
protected:
    void Send(const std::vector<Bytes>& datagrams, const sim::Endpoint& group = kGroup) {
        for (const Bytes& datagram : datagrams) { m_client.SendRaw(datagram, group); }
    }
    static std::vector<TrainAudioCall> WaitForAudio(std::size_t count) {
        EXPECT_TRUE(RecordingHost::Get().trainAudio.WaitFor([](const auto&) { return true; }, count));
        return RecordingHost::Get().trainAudio.All();
    }
    /// @return the audio in the order in which the host got it, all of it of this task
    static std::vector<Bytes> AudioOf(const std::vector<TrainAudioCall>& calls, std::uint32_t task = kTask) {
        std::vector<Bytes> audio;
        for (const TrainAudioCall& call : calls) {
            EXPECT_EQ(kClient, static_cast<std::uint32_t>(call.sourceID));
            EXPECT_EQ(task, static_cast<std::uint32_t>(call.taskID));
            audio.push_back(call.audio);
        }
        return audio;
    }
    static bool WaitForExit(const std::string& reason, int controller = kVirtual) {
        return WaitForExactLine("Exit player for " + reason + ", virtual ZCU " + std::to_string(controller));
    }
};

TEST_F(VirtualAudioTest, TheHostGetsEveryDatagramDecodedInOrder) {
    const CodedAudio audio(341, 5);
    Play();
    Send(audio.datagrams);
    EXPECT_EQ(audio.decoded, AudioOf(WaitForAudio(5)));
}

TEST_F(VirtualAudioTest, EveryTypeOfAudioIsDecoded) {
    Play();
    std::vector<Bytes> expected;
    for (const std::uint16_t type :
         std::initializer_list<std::uint16_t>{341, 342, 343, 344, 345, 352, 353, 354, 355, 356, 357, 359, 360}) {
        const CodedAudio audio(type, 1);
        Send(audio.datagrams);
        // Each stream begins anew, its receiver goes on from the state of the one before.
        expected.push_back(audio.decoded.at(0));
        const auto heard = AudioOf(WaitForAudio(expected.size())).back();
        EXPECT_EQ(expected.back().size(), heard.size()) << type;
        if (sim::FormatOf(type)->coding == sim::Coding::Pcm) { EXPECT_EQ(expected.back(), heard) << type; }
    }
}

TEST_F(VirtualAudioTest, DatagramsThatCarryNoAudioAreSkipped) {
    const CodedAudio audio(341, 1);
    Bytes unknown = audio.datagrams.at(0);
    unknown.at(14) = 346 & 0xFF; // the type
    Play();
    Send({unknown, {}, {0x79}, Bytes(17, 0), Bytes(5000, 0xFF), audio.datagrams.at(0)});
    EXPECT_EQ(audio.decoded, AudioOf(WaitForAudio(1)));
}

TEST_F(VirtualAudioTest, AudioIsInTheCallbackLogWithItsFirstEightSamples) {
    K740_EnableCallbackLog(1);
    sim::AudioEncoder encoder(kClient, 1, 353);
    std::vector<std::int16_t> samples(encoder.SamplesPerDatagram());
    const std::vector<std::int16_t> first{0, 1, -1, 2, 32767, -32768, 3, 4, 5};
    std::copy(first.begin(), first.end(), samples.begin());
    Play();
    Send({sim::Pack(encoder.Encode(samples))});
    EXPECT_TRUE(WaitForCallbackLogLine("PTRAINAUDIO", "PTRAINAUDIO("));
    EXPECT_THAT(LogTexts("PTRAINAUDIO"),
                ElementsAre("PTRAINAUDIO(9600, 1001, {0,1,4294967295,2,32767,4294934528,3,4 ...}, 3528)"));
}

TEST_F(VirtualAudioTest, WithoutAnAudioCallbackAudioIsDroppedAndTheMessagesGoOn) {
    K740_SetTrainCallback(RecordingHost::OnTrainMessage, nullptr);
    K740_EnableCallbackLog(1);
    Play();
    Send(CodedAudio(341, 2).datagrams);
    m_client.SendEndOfStream(kGroup, kVirtual);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitForCallbackLogLine("PTRAINMESSAGE", "900, 2"));
    EXPECT_THAT(LogTexts("PTRAINAUDIO"), IsEmpty());
}

// Ends.

TEST_F(VirtualAudioTest, TheEndOfStreamEndsPlayingAfterTheAudioBeforeIt) {
    const CodedAudio audio(341, 3);
    Play();
    Send(audio.datagrams);
    m_client.SendEndOfStream(kGroup, kVirtual);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_EQ(audio.decoded, AudioOf(RecordingHost::Get().trainAudio.All()));
    EXPECT_TRUE(WaitForExit("receive multicast exit"));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));
}

TEST_F(VirtualAudioTest, TheEndOfStreamForAnotherControllerEndsItToo) {
    Play();
    m_client.SendEndOfStream(kGroup, 33);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(g_app->ZCU().GetTaskZCU(kClient, kTask).empty());
}

TEST_F(VirtualAudioTest, AfterTheEndItPlaysAgain) {
    const CodedAudio audio(341, 2);
    Play();
    m_client.SendEndOfStream(kGroup, kVirtual);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));
    Play();
    Send(audio.datagrams);
    EXPECT_EQ(audio.decoded, AudioOf(WaitForAudio(2)));
}

TEST_F(VirtualAudioTest, CloseAudioOfTheTaskEndsIt) {
    Play();
    m_client.CloseAudio(kVirtual, kTask);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitForExactLine(
        "-----Virutla ZCU receive a close audio request, ZCU 900, source device 9600, task 1001, 192.168.4.1"));
    EXPECT_TRUE(WaitForExit("ZCU has none task"));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));
}

TEST_F(VirtualAudioTest, CloseAudioOfAnotherTaskOrFromAnotherDeviceIsOnlyLogged) {
    auto& other = AddClient(9601, "192.168.4.2");
    const CodedAudio audio(341, 1);
    Play();
    m_client.CloseAudio(kVirtual, kTask + 1);
    other.CloseAudio(kVirtual, kTask);
    m_client.CloseAudio(kOtherVirtual, kTask);
    EXPECT_TRUE(WaitForLogLine("receive a close audio request", 3));
    Send(audio.datagrams);
    EXPECT_EQ(audio.decoded, AudioOf(WaitForAudio(1)));
    EXPECT_THAT(g_app->ZCU().GetTaskZCU(kClient, kTask), ElementsAre(kVirtual));
}

TEST_F(VirtualAudioTest, CloseZonesEndsItWhoeverAsksAndWhateverTheZones) {
    auto& other = AddClient(9601, "192.168.4.2");
    Play();
    other.CloseZones(kVirtual, 0);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(
        WaitForExactLine("-----Virutla ZCU receive a close zone request, ZCU 900, source device 9601, 192.168.4.2"));
    EXPECT_TRUE(WaitForExit("ZCU has none task"));
}

TEST_F(VirtualAudioTest, DeinitializeEndsIt) {
    Play();
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));
}

// The second request.

TEST_F(VirtualAudioTest, ASecondRequestMovesItToTheNewTask) {
    const CodedAudio audio(341, 2);
    Play();
    Play(PlayRequestOf(kTask + 1, kOtherGroup));
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitForExit("ZCU has none task"));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));
    Send(CodedAudio(341, 2).datagrams); // to the group that was left
    Send(audio.datagrams, kOtherGroup);
    EXPECT_EQ(audio.decoded, AudioOf(WaitForAudio(2), kTask + 1));
    EXPECT_EQ(1U, CountMessages(2));
}

TEST_F(VirtualAudioTest, TheSameRequestAgainDoublesNoAudio) {
    const CodedAudio audio(341, 10);
    Play();
    Play();
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitForExit("ZCU has none task"));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 1; }));
    Send(audio.datagrams);
    m_client.SendEndOfStream(kGroup, kVirtual);
    EXPECT_TRUE(WaitForMessage(2, 2));
    EXPECT_EQ(audio.decoded, AudioOf(RecordingHost::Get().trainAudio.All()));
}

TEST_F(VirtualAudioTest, TwoRequestsAtOnceDoubleNoAudioThatRunsAlready) {
    const CodedAudio audio(341, 2000);
    std::atomic<bool> ended{false};
    std::thread stream([&] {
        for (std::size_t i = 0; i < audio.datagrams.size() && !ended; ++i) {
            m_client.SendRaw(audio.datagrams[i], kGroup);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    m_client.RequestPlay(kVirtual, PlayRequestOf());
    m_client.RequestPlay(kVirtual, PlayRequestOf());
    EXPECT_TRUE(WaitForMessage(2));
    WaitForAudio(5);
    ended = true;
    stream.join();
    m_client.SendEndOfStream(kGroup, kVirtual);
    EXPECT_TRUE(WaitForMessage(2, 2));
    const auto heard = AudioOf(RecordingHost::Get().trainAudio.All());
    EXPECT_EQ(heard.size(), std::set<Bytes>(heard.begin(), heard.end()).size());
}

TEST_F(VirtualAudioTest, AnotherSourceTakesItOver) {
    auto& other = AddClient(9601, "192.168.4.2");
    Play();
    other.RequestPlay(kVirtual, PlayRequestOf());
    EXPECT_TRUE(WaitForMessage(1, 1, kVirtual, 9601));
    EXPECT_TRUE(WaitForMessage(2)); // for the source that has lost it
    EXPECT_TRUE(g_app->ZCU().GetTaskZCU(kClient, kTask).empty());
    EXPECT_THAT(g_app->ZCU().GetTaskZCU(9601, kTask), ElementsAre(kVirtual));
}

TEST_F(VirtualAudioTest, TwoControllersPlayTheSameTaskAndEndOneByOne) {
    const CodedAudio audio(341, 1);
    Play();
    Play(PlayRequestOf(), kOtherVirtual);
    EXPECT_THAT(g_app->ZCU().GetTaskZCU(kClient, kTask), ElementsAre(kVirtual, kOtherVirtual));
    m_client.CloseAudio(kVirtual, kTask);
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 1; }));
    Send(audio.datagrams);
    EXPECT_EQ(audio.decoded, AudioOf(WaitForAudio(1)));
    EXPECT_EQ(0U, CountMessages(2, kOtherVirtual));
}

} // namespace
} // namespace k740::test
