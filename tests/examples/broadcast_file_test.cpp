// broadcast_file beside a simulated zone controller.
#include "tests/examples/example_fixture.h"

namespace k740::test {
namespace {

using ::testing::HasSubstr;

constexpr std::size_t kUpToAFrame = 2048 + 28; // samples: a part of a frame is not sent, nor a header of 100 bytes

using BroadcastFileTest = ExampleTest;

TEST_F(BroadcastFileTest, TheZoneHearsTheFileAndTheHostEndsWithTheTask) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    Example host("broadcast_file speech.wav");
    EXPECT_EQ("task 1001: state 1\ntask 1001: state 2\ntask 1001: state 0\n", host.Rest());
    EXPECT_EQ(0, host.End());
    ExpectSpeech(controller.HeardIn(1), kUpToAFrame);
    EXPECT_EQ(1U, controller.ZonesServed());
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kController, 0x0101), kSoon));
}

TEST_F(BroadcastFileTest, AddressAndIDOfTheControllerAreArguments) {
    sim::ZoneController& controller = AddZoneController(300, "192.168.7.7");
    Example host("broadcast_file speech.wav 192.168.1.166 192.168.7.7 300");
    EXPECT_EQ(0, host.End());
    ExpectSpeech(controller.HeardIn(1), kUpToAFrame);
}

TEST_F(BroadcastFileTest, WithoutTheControllerItFails) {
    Example host("broadcast_file speech.wav");
    EXPECT_THAT(host.Rest(), HasSubstr("The broadcast failed: -4\n"));
    EXPECT_EQ(1, host.End());
}

TEST_F(BroadcastFileTest, AFileThatIsNotThereIsNamedAndNothingIsStarted) {
    AddZoneController(kController, kControllerIP);
    Example host("broadcast_file absent.wav");
    EXPECT_EQ("absent.wav: No such file or directory\n", host.Rest());
    EXPECT_EQ(1, host.End());
    EXPECT_EQ(0U, Field().Events().Count(sim::Received(kController, 0x0125)));
}

} // namespace
} // namespace k740::test
