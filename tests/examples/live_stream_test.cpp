// live_stream beside a simulated zone controller.
#include "tests/examples/example_fixture.h"

namespace k740::test {
namespace {

using ::testing::HasSubstr;

using LiveStreamTest = ExampleTest;

TEST_F(LiveStreamTest, TheZoneHearsTheWholeFile) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    Example host("live_stream speech.wav");
    EXPECT_EQ("task 1001: state 1\ntask 1001: state 2\ntask 1001: state 0\n", host.Rest());
    EXPECT_EQ(0, host.End());
    ExpectSpeech(controller.HeardIn(1));
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kController, 0x0101), kSoon));
}

TEST_F(LiveStreamTest, TheZoneHearsStandardInput) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    Example host("cat speech.wav | '" K740_EXAMPLES "'/", "live_stream -");
    EXPECT_EQ(0, host.End());
    ExpectSpeech(controller.HeardIn(1));
}

TEST_F(LiveStreamTest, AudioIsPacedAsItIsHeard) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    Example host("live_stream speech.wav");
    EXPECT_EQ(0, host.End());
    const sim::Recording broadcast = controller.Recordings().at(0);
    EXPECT_GT(*broadcast.lastAudio - *broadcast.firstAudio, std::chrono::milliseconds(900)); // 1 s, 23 datagrams
    EXPECT_EQ(0U, broadcast.gaps);
}

TEST_F(LiveStreamTest, AnInterruptEndsTheTaskInOrder) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    Example host("live_stream /dev/zero");
    ASSERT_NE("", host.LineWith("state 2"));
    ASSERT_TRUE(controller.WaitForDatagrams(3, kSoon));
    host.Signal(SIGINT);
    EXPECT_EQ("task 1001: state 0\n", host.Rest());
    EXPECT_EQ(0, host.End());
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kController, 0x0101), kSoon));
}

TEST_F(LiveStreamTest, WithoutTheControllerItFails) {
    Example host("live_stream speech.wav");
    EXPECT_THAT(host.Rest(), HasSubstr("The broadcast failed"));
    EXPECT_EQ(1, host.End());
}

} // namespace
} // namespace k740::test
