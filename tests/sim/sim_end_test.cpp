// How k740-sim ends: by signals, with or without its reader, its rights, its host; and with which exit status.
#include "tests/sim/program.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace k740::test {
namespace {

constexpr const char* kController = "--zcu 33@192.168.1.33 --status-period 0 ";
// A host that says when it has begun and that it was asked to end.
constexpr const char* kHost =
    " -- sh -c 'trap \"echo host ends; exit 3\" TERM; echo host begins; while :; do sleep 0.02; "
    "done'";

class SimEndTest : public OnPrivateNetwork {
protected:
    /// Starts a simulator with a host and sends a signal. @return what it then says
    std::pair<std::string, int> EndBy(int signal, const std::string& rights) const {
        Program program(Network(), std::string(kController) + kHost, rights);
        EXPECT_NE("", program.LineWith("host begins"));
        program.Signal(signal);
        const std::string rest = program.Rest();
        return {rest, program.End()};
    }
    static std::string FirstLine(const std::string& file) {
        std::string line;
        std::getline(std::ifstream(file), line);
        return line;
    }
    static bool Holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

TEST_F(SimEndTest, SignalsEndTheRunInOrderWithAndWithoutRights) {
    for (const char* rights : {"", kWithoutRights}) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            const auto [rest, status] = EndBy(signal, rights);
            EXPECT_TRUE(Holds(rest, "host ends")) << signal << rights;
            EXPECT_EQ(128 + signal, status) << rights;
        }
    }
}

TEST_F(SimEndTest, AKilledSimulatorLeavesNoHost) {
    for (const char* rights : {"", kWithoutRights}) {
        const auto [rest, status] = EndBy(SIGKILL, rights);
        EXPECT_TRUE(Holds(rest, "host ends")) << rights;
        EXPECT_EQ(128 + SIGKILL, status) << rights;
    }
}

TEST_F(SimEndTest, ASignalEndsItWithoutAHostToo) {
    Program program(Network(), "--until-close 1");
    ASSERT_NE("", program.Line());
    program.Signal(SIGTERM);
    EXPECT_EQ("", program.Rest());
    EXPECT_EQ(128 + SIGTERM, program.End());
}

TEST_F(SimEndTest, UnderNohupAHangUpEndsNothing) {
    Program program(Network(), "--duration 0.5", "nohup");
    ASSERT_NE("", program.LineWith("ready"));
    program.Signal(SIGHUP);
    EXPECT_EQ(0, program.End());
}

TEST_F(SimEndTest, AReaderThatGoesEndsTheRunAndTheHost) {
    std::ofstream("run.sh")
        << "{ '" K740_SIM_PROGRAM "' --zcu 33@192.168.1.33 --status-period 0.02 --periodic all"
           " -- sh -c 'trap \"touch ended; exit\" TERM; touch begun; while :; do sleep 0.02; done' 2>errors\n"
           "echo $? >status; } | { while [ ! -e begun ]; do sleep 0.02; done; head -1; }\n";
    EXPECT_EQ(0, ChildProgram("sh run.sh").End());
    EXPECT_TRUE(std::filesystem::exists("ended"));
    EXPECT_EQ("1", FirstLine("status"));
    EXPECT_EQ("k740-sim: cannot write the events: Broken pipe", FirstLine("errors"));
}

TEST_F(SimEndTest, AFullDiskIsTold) {
    for (const char* place : {"--events /dev/full", "> /dev/full"}) {
        Program program(Network(), std::string("--duration 0.1 ") + place);
        EXPECT_EQ("k740-sim: cannot write the events: No space left on device\n", program.Line()) << place;
        EXPECT_EQ(1, program.End()) << place;
    }
}

TEST_F(SimEndTest, AReaderThatStopsReadingDoesNotKeepItFromEnding) {
    constexpr int kPipeBytes = 4096;
    ASSERT_EQ(0, ::mkfifo("events", 0600));
    const sim::FileDescriptor reader(::open("events", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    ASSERT_EQ(kPipeBytes, ::fcntl(reader.Get(), F_SETPIPE_SZ, kPipeBytes));
    std::ofstream("commands.txt") << "help\nhelp\n";
    Program program(Network(), "--events events --commands <commands.txt");
    EXPECT_TRUE(WaitUntil([&] {
        int waiting = 0;
        return ::ioctl(reader.Get(), FIONREAD, &waiting) == 0 && waiting > 0; // its one page counts as full then
    }));
    program.Signal(SIGTERM);
    EXPECT_EQ("k740-sim: cannot write the events: nobody reads them\n", program.Line());
    EXPECT_EQ(1, program.End());
}

TEST_F(SimEndTest, AHostThatEndsGivesItsExitStatus) {
    Program program(Network(), std::string(kController) + "--duration 20 -- sh -c 'kill -USR1 $$'");
    EXPECT_EQ(128 + SIGUSR1, program.End());
}

TEST_F(SimEndTest, TheTimeEndsAHostAndIsNoFailure) {
    Program program(Network(), std::string(kController) + "--duration 0.3" + kHost);
    EXPECT_TRUE(Holds(program.Rest(), "host ends"));
    EXPECT_EQ(0, program.End());
}

TEST_F(SimEndTest, CloseAudioRequestsEndAHost) {
    // The host is a simulator too, whose client closes what it never began. Clients send to port 29001, on which paging
    // stations listen.
    std::ofstream("commands.txt") << "close-audio 9501 33 1\n";
    const std::string host = " -- sh -c \"exec '" K740_SIM_PROGRAM "' --client 9501@192.168.1.166"
                             " --station 192.168.8.99 --commands --events host.jsonl <commands.txt\"";
    Program program(Network(), "--rpk 5000@192.168.8.99 --status-period 0 --until-close 1 --duration 20" + host);
    const std::vector<Json> lines = program.RemainingLines();
    EXPECT_EQ(0, program.End());
    ASSERT_EQ(1U, Of(lines, "received").size());
    EXPECT_EQ("close-audio", Of(lines, "received")[0].at("name"));
}

TEST_F(SimEndTest, TooFewCloseAudioRequestsAreAFailureWithAHostToo) {
    Program program(Network(), std::string(kController) + "--until-close 2 --duration 0.2" + kHost);
    EXPECT_NE("", program.LineWith("fewer than 2 close-audio requests"));
    EXPECT_EQ(1, program.End());
}

TEST_F(SimEndTest, ADiskErrorIsToldBehindTheSummary) {
    Network().AddFieldAddresses({"192.168.1.33"});
    const Station station;
    Program program(Network(), std::string(kController) + "--record wavs");
    ASSERT_NE("", program.Line());
    std::filesystem::remove_all("wavs");
    station.Play("192.168.1.33", 33, 1001, 0b10);
    ASSERT_EQ(29U, station.AnswerPayload(0x8205).size());
    ASSERT_EQ(26U, station.AnswerPayload(0x8206).size());
    sim::AdpcmState sender;
    station.Multicast(AudioBytes(0x12, sender));
    const std::string rest = program.Rest();
    EXPECT_TRUE(Holds(rest, "\"event\":\"recording\"")) << rest;
    EXPECT_TRUE(Holds(rest, "k740-sim: cannot write wavs/zcu33-zone2.wav: ")) << rest;
    EXPECT_EQ(1, program.End());
}

} // namespace
} // namespace k740::test
