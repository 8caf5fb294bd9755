// monitor_zone beside a simulated zone controller.
#include "tests/examples/example_fixture.h"
#include "tests/support/leftovers.h"
#include "tests/support/wait_until.h"

namespace k740::test {
namespace {

constexpr const char* kGroup = "225.1.0.1";

using MonitorZoneTest = ExampleTest;

TEST_F(MonitorZoneTest, TheFileHasWhatTheZonePlaysBitForBit) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    controller.SetZoneGroup(1, kGroup);
    const CodedTone tone(20, kController);
    Example host("monitor_zone heard.wav 4");
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup) == 1; }));
    controller.StreamZone(1, tone.Stream());
    EXPECT_EQ("", host.Rest());
    EXPECT_EQ(0, host.End());
    EXPECT_EQ(tone.heard, sim::ReadWav("heard.wav"));
}

TEST_F(MonitorZoneTest, ASilentZoneIsAFailure) {
    AddZoneController(kController, kControllerIP).SetZoneGroup(1, kGroup);
    Example host("monitor_zone heard.wav 1");
    EXPECT_EQ("Nothing was heard: is the zone controller there, and does the zone play?\n", host.Rest());
    EXPECT_EQ(1, host.End());
    EXPECT_TRUE(sim::ReadWav("heard.wav").empty());
}

TEST_F(MonitorZoneTest, WithoutTheControllerItFails) {
    Example host("monitor_zone heard.wav 1");
    EXPECT_EQ("Nothing was heard: is the zone controller there, and does the zone play?\n", host.Rest());
    EXPECT_EQ(1, host.End());
}

} // namespace
} // namespace k740::test
