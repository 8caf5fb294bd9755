// volume_and_version beside a simulated zone controller.
#include "tests/examples/example_fixture.h"

namespace k740::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using VolumeAndVersionTest = ExampleTest;

TEST_F(VolumeAndVersionTest, AllChannelsAreSetAndReadBack) {
    sim::ZoneController& controller = AddZoneController(kController, kControllerIP);
    controller.SetVolumes({1, 2, 3, 4, 5, 6, 7, 8, 255, 255}); // attenuation
    Example host("volume_and_version 12");
    const std::string output = host.Rest();
    EXPECT_THAT(output, StartsWith("version: APP:"));
    EXPECT_THAT(output, HasSubstr("\nvolumes before: 18 17 16 15 14 13 12 11\n"));
    EXPECT_THAT(output, EndsWith("\nvolumes after: 12 12 12 12 12 12 12 12\n"));
    EXPECT_EQ(0, host.End());
    EXPECT_EQ((std::vector<std::uint8_t>{7, 7, 7, 7, 7, 7, 7, 7, 255, 255}), controller.Volumes());
}

TEST_F(VolumeAndVersionTest, AChangeThatIsNotAcknowledgedIsAFailure) {
    sim::AnswerFault silent;
    silent.silent = true;
    AddZoneController(kController, kControllerIP).SetAnswerFault(sim::command::kSetVolumeV3, silent);
    Example host("volume_and_version 12");
    EXPECT_THAT(host.Rest(), HasSubstr("The controller has not acknowledged the volumes.\n"));
    EXPECT_EQ(1, host.End());
}

TEST_F(VolumeAndVersionTest, ALevelBeyondTheRangeIsRefused) {
    AddZoneController(kController, kControllerIP);
    Example host("volume_and_version 20");
    EXPECT_THAT(host.Rest(), HasSubstr("The volumes were refused.\n"));
    EXPECT_EQ(1, host.End());
}

TEST_F(VolumeAndVersionTest, WithoutTheControllerItFails) {
    Example host("volume_and_version 12");
    EXPECT_THAT(host.Rest(), HasSubstr("No version came.\n"));
    EXPECT_EQ(1, host.End());
}

} // namespace
} // namespace k740::test
