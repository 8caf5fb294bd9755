// A call that begins while the thread of the one before is still in its first 3 s.
#include "tests/intercom/talk_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::SizeIs;

constexpr std::size_t kFrames = 12;

class SupersededCallTest : public TalkFixture {
protected:
    /// Pushes the frames one by one, each after a station has heard the one before, so that the old thread has had
    /// every chance to take one.
    static void PushFrames(const sim::PagingStation& station, std::size_t heardBefore,
                           const std::vector<std::int16_t>& samples) {
        for (std::size_t i = 0; i < kFrames; ++i) {
            const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(i * kFrameSamplesHeard);
            const std::vector<std::int16_t> frame(begin, begin + kFrameSamplesHeard);
            ASSERT_TRUE(i == 0 ? PushAfterDiscard(kIntercom, frame) : PushSamples(kIntercom, frame) == 0);
            ASSERT_TRUE(station.WaitForIntercomAudio(heardBefore + i + 1, kSoon));
        }
    }
    const std::vector<std::int16_t> m_samples = Noise(kFrames * kFrameSamplesHeard);
};

TEST_F(SupersededCallTest, OldThreadSendsTheNewCallsAudioNowhere) {
    Talk(m_station, kIntercom);
    ASSERT_EQ(0, K740_HangUp(kIntercom));
    Talk(m_otherStation, kIntercom);
    FillBuffer(kIntercom);
    PushFrames(m_otherStation, kPriming, m_samples);
    EXPECT_THAT(HeardFrom(m_otherStation, kPriming), ElementsAreArray(Datagrams(m_samples, kIntercom, kOtherStation)));
    EXPECT_THAT(HeardFrom(m_station, 0), SizeIs(kPriming)) << "the old station hears no more";
    EXPECT_TRUE(WaitForExactLine(EndLine())) << "the old thread has ended, the new call has not";
    EXPECT_EQ(Talking(kOtherStation), StateOf());
    ASSERT_EQ(0, K740_HangUp(kIntercom));
    EXPECT_TRUE(WaitForExactLine(EndLine(), 2));
}

TEST_F(SupersededCallTest, SecondCallOfTheSameStationIsHeardOnce) {
    Talk(m_station, kIntercom);
    m_station.AnswerCall(kIntercom, 2);
    ASSERT_TRUE(Host().WaitForMessage({kStation, kIntercom, kHungUpByStation}));
    Talk(m_station, kIntercom);
    FillBuffer(kIntercom);
    ASSERT_TRUE(WaitForExactLine(EndLine()));
    PushFrames(m_station, 2 * kPriming, m_samples);
    EXPECT_THAT(HeardFrom(m_station, 2 * kPriming), ElementsAreArray(Datagrams(m_samples)));
}

// The old call's thread reaches its end at a time when only the new call has queued anything.
TEST_F(SupersededCallTest, OldThreadDiscardsNothingOfTheNewCall) {
    Talk(m_station, kIntercom);
    ASSERT_EQ(0, K740_HangUp(kIntercom));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(1, kSoon)); // 2.5 s later
    Talk(m_station, kIntercom);
    FillBuffer(kIntercom);
    ASSERT_TRUE(WaitForExactLine(EndLine()));
    EXPECT_EQ(-3, PushBytes(kIntercom, {0})) << "the buffer is still full";
    ASSERT_EQ(0, K740_HangUp(kIntercom));
}

} // namespace
} // namespace k740::test
