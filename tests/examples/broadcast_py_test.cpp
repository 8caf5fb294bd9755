// broadcast.py beside a simulated zone controller.
#include "tests/examples/example_fixture.h"

#include <fstream>

namespace k740::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

/// The example in Python, with the library of this build.
class BroadcastPyTest : public ExampleTest {
protected:
    static constexpr const char* kStart = "'" K740_PYTHON "' '" K740_EXAMPLE_SOURCES "'/";
    static constexpr const char* kCommand = "broadcast.py --library '" K740_LIBRARY "' speech.wav";
};

TEST_F(BroadcastPyTest, TheZoneHearsTheWholeFileAndTheInterpreterEnds) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    Example host(kStart, kCommand);
    EXPECT_EQ("task 1001: state 1\ntask 1001: state 2\ntask 1001: state 0\n", host.Rest());
    EXPECT_EQ(0, host.End());
    ExpectSpeech(controller.HeardIn(1));
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kController, 0x0101), kSoon));
}

TEST_F(BroadcastPyTest, WithoutTheControllerItFails) {
    Example host(kStart, kCommand);
    EXPECT_THAT(host.Rest(), EndsWith("the broadcast failed: -3\n"));
    EXPECT_EQ(1, host.End());
}

TEST_F(BroadcastPyTest, AnotherRateIsRefused) {
    constexpr std::streamoff kRateInHeader = 24;
    std::fstream("speech.wav", std::ios::in | std::ios::out | std::ios::binary).seekp(kRateInHeader).put('\x45');
    Example host(kStart, kCommand);
    EXPECT_THAT(host.Rest(), EndsWith("speech.wav is not 44.1 kHz, 16 bit, mono\n"));
    EXPECT_EQ(1, host.End());
}

TEST_F(BroadcastPyTest, WhatIsNoWavFileIsRefused) {
    Example host(kStart, "broadcast.py --library '" K740_LIBRARY "' /dev/null");
    EXPECT_THAT(host.Rest(), HasSubstr("\nEOFError"));
    EXPECT_EQ(1, host.End());
}

} // namespace
} // namespace k740::test
