// The sample host as a program, beside simulated devices.
#include "tests/support/child_program.h"
#include "tests/support/private_network_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kControllerIP = "192.168.1.33";
constexpr const char* kStationIP = "192.168.8.99";
constexpr int kStation = 5000;
constexpr int kIntercom = 5500;
constexpr auto kPatience = 10s;

// The sample host and the library each break times down. While TZ is not set the C library then renews what it knows of
// the time zone, under a lock of its own, which the thread sanitizer does not see.
constexpr const char* kEnvironment = "TZ=UTC ";

/// The sample host in `station`.
class Host : public ChildProgram {
public:
    explicit Host(const std::string& arguments)
        : ChildProgram(std::string("env ") + kEnvironment + "'" K740_SAMPLE_HOST "' " + arguments) {}
};

std::string Files() {
    return "--task-file '" K740_ANNOUNCEMENT "' --intercom-file '" K740_ANNOUNCEMENT "'";
}

TEST(SampleHostUsageTest, UnknownOptionsAndUnusableValuesPrintTheUsage) {
    for (const char* bad : {"--bogus", "--nic", "--duration x", "--duration -1", "--node 9500x", "stray"}) {
        Host host(bad);
        EXPECT_THAT(host.Line(), StartsWith("usage: k740demo")) << bad;
        EXPECT_EQ(2, host.End()) << bad;
    }
}

TEST(SampleHostUsageTest, HelpIsNoError) {
    Host host("--help");
    EXPECT_THAT(host.Line(), StartsWith("usage: k740demo"));
    EXPECT_EQ(0, host.End());
}

class SampleHostTest : public OnPrivateNetwork {};

TEST_F(SampleHostTest, StreamsTheFileOverAndOverAndEndsInOrder) {
    sim::ZoneController& controller = AddZoneController(33, kControllerIP);
    Host host(Files() + " --duration 4");
    EXPECT_EQ("###########task status:1001,1\n", host.LineWith("task status"));
    EXPECT_EQ("###########task status:1001,2\n", host.LineWith("task status"));
    EXPECT_EQ("play is ok:2\n", host.LineWith("play is"));
    EXPECT_THAT(host.LineWith("cost"), StartsWith("send task audio stream cost:"));
    EXPECT_EQ("###########task status:1001,0\n", host.LineWith("task status"));
    EXPECT_EQ(0, host.End());
    EXPECT_GT(controller.CountDatagrams(), 40U);
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(33, 0x0101), kPatience));
    EXPECT_GE(Field().Events().Count(sim::Received(33, 0x0303)), 1U); // it monitors the zone
}

TEST_F(SampleHostTest, WithoutTheControllerTheTaskFails) {
    Host host(Files() + " --duration 8");
    EXPECT_EQ("###########task status:1001,-3\n", host.LineWith("task status:1001,-"));
    EXPECT_EQ("failed to play:1001, -3\n", host.LineWith("failed"));
    EXPECT_EQ(0, host.End());
}

TEST_F(SampleHostTest, AnInvitationIsAcceptedAtOnceAndAnsweredWithTheFile) {
    AddZoneController(33, kControllerIP);
    sim::PagingStation& station = AddPagingStation(kStation, kStationIP);
    Host host(Files() + " --duration 7");
    // The zone is monitored once all devices are registered.
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(33, 0x0303), kPatience));
    station.Invite(kIntercom);
    EXPECT_THAT(host.LineWith("talker message"), HasSubstr("talker message, rpk:5000, train:5500, msg:1, 20"));
    EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x8701), kPatience, 2)); // rings, accepted
    EXPECT_TRUE(station.WaitForIntercomAudio(12 + 5, kPatience));
    EXPECT_EQ(0, host.End());
}

} // namespace
} // namespace k740::test
