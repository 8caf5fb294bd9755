// voice_alarm beside a simulated zone controller.
#include "tests/examples/example_fixture.h"

namespace k740::test {
namespace {

using ::testing::HasSubstr;

class VoiceAlarmTest : public ExampleTest {
protected:
    void ShowStatus(sim::ZoneController& controller, std::uint8_t status) {
        sim::StatusReport report = controller.QuietStatus();
        report.deviceStatus = status;
        controller.RepeatStatus(report);
    }
    [[nodiscard]] bool WaitForRequests(std::uint16_t command, std::size_t count) const {
        return Field().Events().WaitFor(sim::Received(kController, command), kSoon, count).has_value();
    }
};

TEST_F(VoiceAlarmTest, EachRequestIsRepeatedUntilTheStatusShowsIt) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    ShowStatus(controller, 1);
    Example host("voice_alarm 0");
    ASSERT_TRUE(WaitForRequests(sim::command::kEnterEmergency, 2)); // the first had no effect
    EXPECT_EQ(256 - 255, controller.EmergencyPriority());
    ShowStatus(controller, 3);
    ASSERT_TRUE(WaitForRequests(sim::command::kExitEmergency, 2));
    EXPECT_FALSE(controller.EmergencyPriority());
    ShowStatus(controller, 1);
    EXPECT_NE("", host.LineWith("zone controller 33: status 3, fault 0"));
    EXPECT_NE("", host.LineWith("zone controller 33: status 1, fault 0"));
    EXPECT_EQ(0, host.End());
}

TEST_F(VoiceAlarmTest, AStatusThatNeverChangesIsAFailure) {
    ShowStatus(AddZoneController(kController, kControllerIP), 1);
    Example host("voice_alarm 0");
    EXPECT_THAT(host.Rest(), HasSubstr("The zone controller does not show voice alarm.\n"));
    EXPECT_EQ(1, host.End());
    EXPECT_EQ(10U, Field().Events().Count(sim::Received(kController, sim::command::kEnterEmergency)));
}

TEST_F(VoiceAlarmTest, WithoutTheControllerItFails) {
    Example host("voice_alarm 0");
    EXPECT_THAT(host.Rest(), HasSubstr("The zone controller is off line.\n"));
    EXPECT_EQ(1, host.End());
}

} // namespace
} // namespace k740::test
