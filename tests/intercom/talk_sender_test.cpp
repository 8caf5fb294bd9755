// What the station hears of a call. Each call begins with some 3 s without the host's audio.
#include "common/thread.h"
#include "tests/intercom/talk_fixture.h"
#include "tests/support/process_state.h"

#include <filesystem>
#include <utility>

namespace k740::test {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAreArray;
using ::testing::SizeIs;

using TalkSenderTest = TalkFixture;

/// A datagram before the audio: 79 4A, zeros, the intercom, the station, 341, 1032, and nothing else.
sim::Bytes PrimingBytes() {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(0x4A79).Fill(4, 0).Put<std::uint32_t>(kIntercom).Put<std::uint32_t>(kStation);
    writer.Put<std::uint16_t>(0x0155).Put<std::uint16_t>(0x0408).Fill(1034, 0);
    return writer.Get();
}

constexpr const char* kSenderName = "k740-talk-send";

/// Blocks until the thread has not woken for longer than a datagram's period.
void WaitUntilAtRest(const std::filesystem::path& thread) {
    constexpr milliseconds kQuiet{100};
    long sleeps = -1;
    auto since = sim::Clock::now();
    EXPECT_TRUE(WaitUntil([&] {
        const long now = CountSleeps(thread);
        if (std::exchange(sleeps, now) != now) { since = sim::Clock::now(); }
        return sim::Clock::now() - since > kQuiet;
    }));
}

TEST_F(TalkSenderTest, TwelveEmptyDatagramsComeBeforeTheAudioAndWhatWasPushedUntilThenIsDropped) {
    RingFromStation();
    const auto accepted = sim::Clock::now();
    ASSERT_EQ(0, K740_Accept(kIntercom, kStation));
    FillBuffer(kIntercom);
    const auto samples = Noise(2 * kFrameSamplesHeard);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, samples));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 2, kSoon));

    const auto kept = m_station.IntercomAudio().kept;
    ASSERT_GE(kept.size(), kPriming + 2);
    for (std::size_t i = 0; i < kPriming; ++i) { EXPECT_EQ(PrimingBytes(), kept[i].bytes) << i; }
    EXPECT_GE(kept[0].arrival - accepted, milliseconds(2'500));
    EXPECT_LT(kept[0].arrival - accepted, milliseconds(7'500));
    EXPECT_GE(kept[11].arrival - kept[0].arrival, milliseconds(11 * 46));
    EXPECT_GE(kept[12].arrival - accepted, milliseconds(2'500 + 12 * 46));
    EXPECT_THAT(HeardFrom(m_station, kPriming), ElementsAreArray(Datagrams(samples)));
    EXPECT_EQ((sim::Bytes{0xC1, 0xE5, 0xCC, 0xCA, 0x52, 0x55}),
              sim::Bytes(kept[12].bytes.begin() + 1042, kept[12].bytes.begin() + 1048)); // of the generator's noise
}

TEST_F(TalkSenderTest, AudioLeavesOnAGridOf46Point4Milliseconds) {
    constexpr std::size_t kFrames = 42;
    RingAndAccept();
    FillBuffer(kIntercom);
    const auto samples = Noise(kFrames * kFrameSamplesHeard);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, samples));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + kFrames, kSoon));
    const sim::IntercomRecording heard = m_station.IntercomAudio();
    EXPECT_EQ(0U, heard.gaps) << "each state block follows from the one before";
    const auto first = heard.kept[kPriming].arrival;
    for (std::size_t i = 20; i < kFrames; i += 20) {
        const auto elapsed = heard.kept[kPriming + i].arrival - first;
        const auto nominal = std::chrono::microseconds(46'400 * i);
        EXPECT_GE(elapsed, nominal - milliseconds(12)) << i; // 10 ms of drift are made good at the most
        EXPECT_LE(elapsed, 3 * nominal) << i;
    }
    EXPECT_THAT(HeardFrom(m_station, kPriming), ElementsAreArray(Datagrams(samples)));
}

TEST_F(TalkSenderTest, AudioGoesOutInWholeBlocksOf4096Bytes) {
    Talk(m_station, kIntercom);
    Talk(m_otherStation, kOtherIntercom); // beside it a call that shows how time passes
    FillBuffer(kIntercom);
    FillBuffer(kOtherIntercom);
    const auto samples = Noise(2 * kFrameSamplesHeard);
    const sim::Bytes bytes = sim::ByteWriter().PutAll(samples).Get();
    const auto part = [&](std::size_t from, std::size_t length) {
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
        return PushBytes(kIntercom, {begin, begin + static_cast<std::ptrdiff_t>(length)});
    };
    const auto letTimePass = [&] {
        const std::size_t heard = m_otherStation.IntercomAudio().datagrams;
        ASSERT_EQ(0, PushSamples(kOtherIntercom, Noise(3 * kFrameSamplesHeard)));
        ASSERT_TRUE(m_otherStation.WaitForIntercomAudio(heard + 3, kSoon));
    };
    ASSERT_TRUE(WaitUntil([&] { return part(0, 4'095) == 0; }));
    ASSERT_TRUE(PushAfterDiscard(kOtherIntercom, Noise(kFrameSamplesHeard)));
    ASSERT_TRUE(m_otherStation.WaitForIntercomAudio(kPriming + 1, kSoon));
    letTimePass();
    EXPECT_EQ(kPriming, m_station.IntercomAudio().datagrams) << "4095 bytes send nothing";
    ASSERT_EQ(0, part(4'095, 1));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 1, kSoon));
    ASSERT_EQ(0, part(4'096, 2'048));
    letTimePass();
    EXPECT_EQ(kPriming + 1, m_station.IntercomAudio().datagrams);
    ASSERT_EQ(0, part(6'144, 2'048));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 2, kSoon));
    EXPECT_THAT(HeardFrom(m_station, kPriming), ElementsAreArray(Datagrams(samples)));
}

TEST_F(TalkSenderTest, HangingUpEndsTheAudioAndIsLogged) {
    const int threads = RunningThreads();
    RingAndAccept();
    FillBuffer(kIntercom);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(100 * kFrameSamplesHeard)));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 1, kSoon));
    ASSERT_EQ(0, K740_HangUp(kIntercom));
    const std::size_t heard = m_station.IntercomAudio().datagrams;
    ASSERT_TRUE(WaitForExactLine(EndLine()));
    EXPECT_LE(m_station.IntercomAudio().datagrams, heard + 1) << "one may have been under way";
    EXPECT_TRUE(WaitUntil([=] { return RunningThreads() == threads; }));
}

TEST_F(TalkSenderTest, EndByTheStationEndsTheAudioTooAndDiscardsTheRest) {
    EXPECT_EQ(0, K740_Invite(kIntercom, kStation));
    m_station.AnswerCall(kIntercom, 1);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kAccepted}));
    FillBuffer(kIntercom);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(100 * kFrameSamplesHeard)));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 1, kSoon));
    m_station.AnswerCall(kIntercom, 2);
    ASSERT_TRUE(WaitForExactLine(EndLine()));
    EXPECT_LE(m_station.IntercomAudio().datagrams, kPriming + 60) << "200 ms are 5 datagrams";
    EXPECT_EQ(-1, g_app->Talker().RemoveTalkerAudio(kIntercom)) << "nothing is left";
}

TEST_F(TalkSenderTest, CallThatEndsEarlyStillSendsItsFirstTwelveAndNoMore) {
    RingAndAccept();
    ASSERT_EQ(0, PushSamples(kIntercom, Noise(kFrameSamplesHeard)));
    ASSERT_EQ(0, K740_HangUp(kIntercom));
    ASSERT_TRUE(WaitForExactLine(EndLine()));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming, kSoon));
    EXPECT_THAT(HeardFrom(m_station, 0), SizeIs(kPriming));
}

TEST_F(TalkSenderTest, AudioGoesToWhereTheStationWasRegisteredWhenTheCallBegan) {
    RingAndAccept();
    FillBuffer(kIntercom);
    ASSERT_TRUE(m_station.WaitForIntercomAudio(1, kSoon));
    ASSERT_EQ(0, K740_RemoveDevice(kStation));
    ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(kFrameSamplesHeard)));
    EXPECT_TRUE(m_station.WaitForIntercomAudio(kPriming + 1, kSoon));
}

TEST_F(TalkSenderTest, SenderThatHasNothingToSendEndsWithItsCallAtOnce) {
    RingAndAccept();
    FillBuffer(kIntercom);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(kFrameSamplesHeard)));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + 1, kSoon));
    const auto senders = ThreadsNamed(kSenderName);
    ASSERT_THAT(senders, SizeIs(1));
    WaitUntilAtRest(senders[0]);
    m_station.AnswerCall(kIntercom, 2);
    EXPECT_TRUE(WaitUntil([] { return ThreadsNamed(kSenderName).empty(); }, milliseconds(5'000)))
        << "it would not have looked of itself for another 10 s";
}

TEST_F(TalkSenderTest, AudioOfOneCallLeavesTheSendersOfOthersAsleep) {
    constexpr std::size_t kFrames = 20;
    Talk(m_otherStation, kOtherIntercom);
    ASSERT_TRUE(WaitUntil([] { return ThreadsNamed(kSenderName).size() == 1; }));
    const auto other = ThreadsNamed(kSenderName).at(0);
    Talk(m_station, kIntercom);
    FillBuffer(kIntercom);
    FillBuffer(kOtherIntercom);
    ASSERT_TRUE(PushAfterDiscard(kOtherIntercom, Noise(kFrameSamplesHeard)));
    ASSERT_TRUE(m_otherStation.WaitForIntercomAudio(kPriming + 1, kSoon));
    WaitUntilAtRest(other);
    const long before = CountSleeps(other);
    for (std::size_t i = 1; i <= kFrames; ++i) {
        ASSERT_TRUE(PushAfterDiscard(kIntercom, Noise(kFrameSamplesHeard)));
        ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + i, kSoon));
    }
    const long after = CountSleeps(other);
    EXPECT_GE(after, before) << "it has not ended";
    EXPECT_LT(after, before + static_cast<long>(kFrames) / 2);
}

TEST_F(TalkSenderTest, CallWhoseSocketCannotBeMadeIsLogged) {
    RingFromStation();
    ASSERT_EQ(0, g_app->Talker().ProcessRPKAccept(kIntercom, 5'999)); // without an address, as it is not registered
    EXPECT_TRUE(WaitForExactLine("*****No socket for the audio of intercom 5500."));
}

} // namespace
} // namespace k740::test
