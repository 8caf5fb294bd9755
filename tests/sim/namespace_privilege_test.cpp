#include "sim/namespace_privilege.h"
#include "tests/sim/program.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <string>

namespace k740::test {
namespace {

struct ProbeResult {
    int status = 0; // as wait(2) gives it
    std::string output;
};

ProbeResult RunProbe(const std::string& prefix, const std::string& suffix) {
    FILE* output = ::popen(("exec " + prefix + "\"" K740_PRIVILEGE_PROBE "\"" + suffix).c_str(), "re");
    ProbeResult result;
    for (int character = std::fgetc(output); character != EOF; character = std::fgetc(output)) {
        result.output += static_cast<char>(character);
    }
    result.status = ::pclose(output);
    return result;
}

TEST(NamespacePrivilegeTest, ProcessWithoutTheRightMakesANetworkAllTheSame) {
    const ProbeResult result = RunProbe(kWithoutRights, " and ends");
    ASSERT_TRUE(WIFEXITED(result.status));
    EXPECT_EQ(42, WEXITSTATUS(result.status));
}

TEST(NamespacePrivilegeTest, ProcessWithoutTheRightEndsByTheSignalOfItsSecondSelf) {
    const ProbeResult result = RunProbe(kWithoutRights, " signal");
    ASSERT_TRUE(WIFSIGNALED(result.status));
    EXPECT_EQ(SIGTERM, WTERMSIG(result.status));
}

TEST(NamespacePrivilegeTest, TheFirstSelfPassesOnWhatAsksForTheEnd) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        ChildProgram probe(std::string(kWithoutRights) + "'" K740_PRIVILEGE_PROBE "' wait");
        EXPECT_EQ("waits\n", probe.Line());
        probe.Signal(signal);
        EXPECT_EQ("got " + std::to_string(signal) + '\n', probe.Line());
        EXPECT_EQ(42, probe.End());
    }
}

TEST(NamespacePrivilegeTest, TheSecondSelfIsAskedToEndWhenTheFirstIsKilled) {
    ChildProgram probe(std::string(kWithoutRights) + "'" K740_PRIVILEGE_PROBE "' wait");
    EXPECT_EQ("waits\n", probe.Line());
    probe.Signal(SIGKILL);
    EXPECT_EQ("got " + std::to_string(SIGTERM) + '\n', probe.Line());
}

TEST(NamespacePrivilegeTest, RefusalIsOneSentenceAndStatusOne) {
    // A user namespace in which no further network namespace may be made.
    const std::string prefix = "unshare --user --map-root-user sh -c 'echo 0 >/proc/sys/user/max_net_namespaces; exec ";
    const ProbeResult result = RunProbe(prefix, "' 2>&1");
    ASSERT_TRUE(WIFEXITED(result.status));
    EXPECT_EQ(1, WEXITSTATUS(result.status));
    EXPECT_EQ("This machine refuses private network namespaces (unshare: No space left on device); run as root or "
              "allow user namespaces.\n",
              result.output);
}

} // namespace
} // namespace k740::test
