// answer_call beside a simulated paging station.
#include "tests/examples/example_fixture.h"

namespace k740::test {
namespace {

using ::testing::HasSubstr;

constexpr std::uint32_t kIntercom = 5500;
constexpr std::size_t kPriming = 12; // silent datagrams at the beginning of a call
constexpr std::size_t kFrameSamples = 2048;
constexpr std::size_t kSpeechFrames = 22; // that begin within one second

using AnswerCallTest = ExampleTest;

TEST_F(AnswerCallTest, CallerAndHostHearEachOtherUntilTheCallerHangsUp) {
    sim::PagingStation& station = AddPagingStation(kStation, kStationIP);
    Example host("answer_call speech.wav caller.raw");
    ASSERT_TRUE(Field().Events().WaitFor(sim::Sent(kStation, sim::command::kVersionAnswer), kSoon));
    station.Invite(kIntercom);
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x8701), kSoon, 2)); // rings, accepted
    const CodedTone tone(20, kStation);
    station.SendIntercomAudio(tone.Stream());
    ASSERT_TRUE(station.WaitForIntercomAudio(kPriming + kSpeechFrames, kSoon));
    station.AnswerCall(kIntercom, sim::call::kHungUp);
    EXPECT_EQ("station 5000 calls\nstation 5000 hung up\n", host.Rest());
    EXPECT_EQ(0, host.End());

    EXPECT_EQ(tone.heard, ReadSamples("caller.raw"));
    const std::vector<std::int16_t> all = station.IntercomAudio().samples;
    ExpectSpeech({all.begin() + kPriming * kFrameSamples, all.end()});
}

TEST_F(AnswerCallTest, AHangUpBeforeTheFileIsPlayedEndsTheHost) {
    sim::PagingStation& station = AddPagingStation(kStation, kStationIP);
    Example host("answer_call speech.wav caller.raw");
    ASSERT_TRUE(Field().Events().WaitFor(sim::Sent(kStation, sim::command::kVersionAnswer), kSoon));
    station.Invite(kIntercom);
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x8701), kSoon, 2));
    station.AnswerCall(kIntercom, sim::call::kHungUp);
    EXPECT_EQ("station 5000 calls\nstation 5000 hung up\n", host.Rest());
    EXPECT_EQ(0, host.End());
}

TEST_F(AnswerCallTest, WithoutTheStationItFails) {
    Example host("answer_call speech.wav caller.raw");
    EXPECT_THAT(host.Rest(), HasSubstr("The paging station does not answer.\n"));
    EXPECT_EQ(1, host.End());
}

} // namespace
} // namespace k740::test
