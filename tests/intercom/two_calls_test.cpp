// Two intercom calls at once, with audio both ways.
#include "tests/intercom/talk_fixture.h"

namespace k740::test {
namespace {

using ::testing::ElementsAreArray;

constexpr std::size_t kFrames = 40;

class TwoCallsTest : public TalkFixture {
protected:
    static std::size_t CountHeard(int stationID) {
        return Host().audio.Matching([=](const AudioCall& call) { return call.stationID == stationID; }).size();
    }
};

TEST_F(TwoCallsTest, LoseNothingEitherWay) {
    Talk(m_station, kIntercom);
    Talk(m_otherStation, kOtherIntercom);
    FillBuffer(kIntercom);
    FillBuffer(kOtherIntercom);
    ASSERT_TRUE(m_otherStation.WaitForIntercomAudio(1, kSoon));
    sim::AudioStream stream;
    stream.pcm = Noise(5 * kFrameSamplesHeard, 5);
    stream.count = kFrames;
    m_station.SendIntercomAudio(stream);
    m_otherStation.SendIntercomAudio(stream);

    const auto samples = Noise(kFrames * kFrameSamplesHeard, 3);
    const auto others = Noise(kFrames * kFrameSamplesHeard, 4);
    ASSERT_TRUE(PushAfterDiscard(kIntercom, samples));
    ASSERT_TRUE(PushAfterDiscard(kOtherIntercom, others));
    ASSERT_TRUE(m_station.WaitForIntercomAudio(kPriming + kFrames, kSoon));
    ASSERT_TRUE(m_otherStation.WaitForIntercomAudio(kPriming + kFrames, kSoon));
    EXPECT_THAT(HeardFrom(m_station, kPriming), ElementsAreArray(Datagrams(samples)));
    EXPECT_THAT(HeardFrom(m_otherStation, kPriming),
                ElementsAreArray(Datagrams(others, kOtherIntercom, kOtherStation)));

    ASSERT_TRUE(Host().WaitForAudio(2 * kFrames));
    EXPECT_EQ(kFrames, CountHeard(kStation));
    EXPECT_EQ(kFrames, CountHeard(kOtherStation));
}

} // namespace
} // namespace k740::test
