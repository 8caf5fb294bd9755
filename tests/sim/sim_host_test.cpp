// What k740-sim gives to its host, and what not.
#include "tests/sim/program.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <string>

namespace k740::test {
namespace {

class SimHostTest : public OnPrivateNetwork {
protected:
    /// What a host prints.
    [[nodiscard]] std::string Output(const std::string& host, const std::string& start = "") const {
        Program program(Network(), "--zcu 33@192.168.1.33 --status-period 0 --events events.jsonl -- " + host, start);
        return program.Rest();
    }
};

TEST_F(SimHostTest, ItsArgumentsStayAsTheyAre) {
    EXPECT_EQ("[one] [two,three]\n--zcu\n--\n", Output("printf '%s\\n' '[one] [two,three]' --zcu --"));
}

TEST_F(SimHostTest, ItHasTheDescriptorLimitOfTheSimulatorsUser) {
    EXPECT_EQ("600\n", Output("sh -c 'ulimit -Sn'", "prlimit --nofile=600:"));
    EXPECT_EQ("600\n", Output("sh -c 'ulimit -Sn'", std::string("prlimit --nofile=600: ") + kWithoutRights));
}

TEST_F(SimHostTest, ItInheritsNoFilesOfTheSimulator) {
    EXPECT_EQ(ChildProgram("ls /proc/self/fd").Rest(), Output("ls /proc/self/fd"));
}

TEST_F(SimHostTest, NoneOfItsSignalsAreHeldBackOrLost) {
    const auto signals = [&](const std::string& which) {
        return std::stoull(Output("sh -c 'grep " + which + " /proc/$$/status | cut -f2'"), nullptr, 16);
    };
    EXPECT_EQ(0U, signals("SigBlk"));
    EXPECT_EQ(0U, signals("SigIgn") >> (SIGPIPE - 1) & 1U);
}

TEST_F(SimHostTest, ClosedInputAndOutputDoNotBecomeFilesOfTheSimulator) {
    EXPECT_EQ("", Output("echo says the host <&- >&-"));
    std::ifstream events("events.jsonl");
    for (std::string line; std::getline(events, line);) { EXPECT_TRUE(Json::accept(line)) << line; }
}

} // namespace
} // namespace k740::test
