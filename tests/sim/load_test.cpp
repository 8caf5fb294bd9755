// What a large installation costs when nothing but reports goes on.
#include "tests/sim/program.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <vector>

namespace k740::test {
namespace {

constexpr double kSimulatedSeconds = 6;
constexpr double kMostLoad = 0.1; // of one core

double SecondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// CPU time of all children that have been waited for.
double ChildrensSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return SecondsOf(usage.ru_utime) + SecondsOf(usage.ru_stime);
}

class LoadTest : public OnPrivateNetwork {};

TEST_F(LoadTest, AWholeLineReportsForATenthOfACore) {
    std::vector<std::string> addresses;
    for (int i = 1; i <= 254; ++i) {
        addresses.push_back("192.168.1." + std::to_string(i));
        addresses.push_back("192.168.2." + std::to_string(i));
        addresses.push_back("192.168.8." + std::to_string(i));
    }
    std::erase(addresses, sim::kStationAddress);
    Network().AddFieldAddresses(addresses);
    const sim::UdpSocket sink = sim::UdpSocket::BoundTo({sim::kStationAddress, sim::kReplyPort});
    const double before = ChildrensSeconds();
    Program program(Network(), "--duration 6 --scenario '" K740_SCENARIOS "/line.yaml'");
    const std::vector<Json> lines = program.RemainingLines();
    EXPECT_EQ(0, program.End());
    const double load = (ChildrensSeconds() - before) / kSimulatedSeconds;
    RecordProperty("load_percent", static_cast<int>(load * 100));
    EXPECT_LT(load, kMostLoad);
    EXPECT_EQ(540U, Of(lines, "sent").size()); // one each: the others say the same
    EXPECT_GT(Of(lines, "held-back").at(0).at("count"), 540);
}

} // namespace
} // namespace k740::test
