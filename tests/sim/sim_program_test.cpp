// k740-sim from its command line to its files.
#include "sim/audio_datagram.h"
#include "tests/sim/program.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sndfile.hh>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace k740::test {
namespace {

constexpr const char* kIp = "192.168.1.33";

class SimProgramTest : public OnPrivateNetwork {};

TEST_F(SimProgramTest, PlaysAControllerUntilCloseAudioAndWritesWhatItHeard) {
    Network().AddFieldAddresses({kIp});
    const Station station;
    Program program(Network(), std::string("--zcu 33@") + kIp + " --status-period 0 --record wavs --until-close 1");
    ASSERT_EQ("ready", Json::parse(program.Line()).at("event"));
    station.Play(kIp, 33, 1001, 0b10);
    ASSERT_EQ(29U, station.AnswerPayload(0x8205).size());
    ASSERT_EQ(26U, station.AnswerPayload(0x8206).size());
    sim::AdpcmState sender;
    for (const std::uint8_t code : sim::Bytes{0x12, 0xA5}) { station.Multicast(AudioBytes(code, sender)); }
    station.Multicast(EndOfStreamBytes(33));
    station.CloseAudio(kIp, 33, 1001);

    const std::vector<Json> lines = program.RemainingLines();
    EXPECT_EQ(0, program.End());
    const std::vector<Json> received = Of(lines, "received");
    ASSERT_EQ(2U, received.size());
    EXPECT_EQ("0x0205", received[0].at("command"));
    EXPECT_EQ("0x0101", received[1].at("command"));
    EXPECT_EQ(1U, Of(lines, "end-of-stream").size());
    const std::vector<Json> recordings = Of(lines, "recording");
    ASSERT_EQ(1U, recordings.size());
    EXPECT_EQ(2, recordings[0].at("datagrams"));
    EXPECT_EQ(0, recordings[0].at("gaps"));
    const std::vector<Json> wavs = Of(lines, "wav");
    ASSERT_EQ(1U, wavs.size());
    EXPECT_EQ("wavs/zcu33-zone2.wav", wavs[0].at("file"));
    EXPECT_EQ(4096, SndfileHandle("wavs/zcu33-zone2.wav").frames());
}

TEST_F(SimProgramTest, PlaysAPagingStation) {
    Network().AddFieldAddresses({"192.168.8.99"});
    const Station station;
    Program program(Network(), "--rpk 5000@192.168.8.99 --status-period 60 --duration 0.2");
    const auto status = station.Answer();
    ASSERT_TRUE(status);
    EXPECT_EQ(0x8700, status->command);
    EXPECT_EQ(5000U, status->source);
    program.RemainingLines();
    EXPECT_EQ(0, program.End());
}

TEST_F(SimProgramTest, DevicesWithAGroupStreamAToneToIt) {
    Network().AddFieldAddresses({kIp, "192.168.8.99", "192.168.3.1"});
    std::vector<sim::UdpSocket> ears;
    for (const char* group : {"225.2.0.1", "225.2.0.2", "225.2.0.3"}) {
        ears.push_back(sim::UdpSocket::InGroup({group, 28100}, sim::kStationAddress));
    }
    Program program(Network(), std::string("--status-period 0 --duration 0.2 --zcu 33@") + kIp +
                                   "/225.2.0.1 --rpk 5000@192.168.8.99/225.2.0.2 --aux 7000@192.168.3.1/225.2.0.3");
    std::vector<std::uint32_t> nodes;
    for (const sim::UdpSocket& ear : ears) {
        const auto datagram = WaitForDatagram(ear);
        ASSERT_TRUE(datagram);
        nodes.push_back(sim::ReadAudioDatagram(datagram->bytes)->node);
    }
    EXPECT_EQ((std::vector<std::uint32_t>{33, 5000, 7000}), nodes);
    const std::vector<Json> streamed = Of(program.RemainingLines(), "streamed");
    ASSERT_EQ(3U, streamed.size());
    EXPECT_EQ(33, streamed[0].at("device"));
    EXPECT_EQ("225.2.0.1:28100", streamed[0].at("group"));
    EXPECT_GE(streamed[0].at("datagrams"), 1);
    EXPECT_EQ(0, program.End());
}

TEST_F(SimProgramTest, AcceptsCallsAndWritesWhatItHeardOnTheLine) {
    Network().AddFieldAddresses({"192.168.8.99"});
    const Station station;
    Program program(Network(), "--rpk 5000@192.168.8.99 --accept-calls --status-period 0 --duration 0.5 --record wavs");
    ASSERT_EQ("ready", Json::parse(program.Line()).at("event"));
    station.Request("192.168.8.99", 5000, 0x0701, sim::Bytes(8));
    EXPECT_EQ(0, station.AnswerPayload(0x8701).at(0));
    EXPECT_EQ(1, station.AnswerPayload(0x8701).at(0));
    sim::AdpcmState sender;
    sim::UdpSocket::BoundTo({sim::kStationAddress, 29002}).Send(AudioBytes(0x12, sender), {"192.168.8.99", 29002});
    const std::vector<Json> lines = program.RemainingLines();
    EXPECT_EQ(0, program.End());
    const std::vector<Json> intercom = Of(lines, "intercom");
    ASSERT_EQ(1U, intercom.size());
    EXPECT_EQ(5000, intercom[0].at("device"));
    EXPECT_EQ(1, intercom[0].at("datagrams"));
    ASSERT_EQ(1U, Of(lines, "wav").size());
    EXPECT_EQ(2048, SndfileHandle("wavs/rpk5000-intercom.wav").frames());
}

TEST_F(SimProgramTest, TimeOverBeforeEnoughCloseAudioIsAFailure) {
    Network().AddFieldAddresses({kIp});
    Program program(Network(), std::string("--zcu 33@") + kIp + " --status-period 0 --until-close 1 --duration 0.1");
    const std::string ready = program.Line();
    EXPECT_EQ("k740-sim: the time is over, but fewer than 1 close-audio requests came\n", program.Line());
    EXPECT_EQ(1, program.End());
}

TEST_F(SimProgramTest, AddressThatDoesNotExistIsRefused) {
    Program program(Network(), "--zcu 33@192.168.1.33");
    EXPECT_EQ("k740-sim: bind 192.168.1.33:28001: Cannot assign requested address\n", program.Line());
    EXPECT_EQ(1, program.End());
}

TEST_F(SimProgramTest, DeviceWithoutAnAddressIsRefused) {
    Program program(Network(), "--zcu 33");
    EXPECT_EQ("33: is not ID@ADDRESS\n", program.Line());
    EXPECT_NE(0, program.End());
}

TEST_F(SimProgramTest, EndsWithItsHostAndWithTheHostsExitStatus) {
    Program program(Network(), std::string("--zcu 33@") + kIp + " --status-period 0 -- sh -c 'exit 7'");
    EXPECT_EQ(1U, Of(program.RemainingLines(), "ready").size());
    EXPECT_EQ(7, program.End());
}

TEST_F(SimProgramTest, ItsHostIsInTheStationOfAPrivateNetwork) {
    Program program(Network(), std::string("--zcu 33@") + kIp + " --status-period 0 -- ip -4 -o address show");
    std::string output;
    for (std::string line = program.Line(); !line.empty(); line = program.Line()) { output += line; }
    EXPECT_NE(std::string::npos, output.find("192.168.1.166/16")) << output;
    EXPECT_EQ(std::string::npos, output.find(kIp)) << output;
    EXPECT_EQ(0, program.End());
}

TEST_F(SimProgramTest, HostThatDoesNotExistIsRefused) {
    Program program(Network(),
                    std::string("--zcu 33@") + kIp + " --status-period 0 --events /dev/null -- no-such-host");
    EXPECT_EQ("k740-sim: cannot start no-such-host: No such file or directory\n", program.Line());
    EXPECT_EQ(1, program.End());
}

TEST_F(SimProgramTest, ReadyTellsTheWallClock) {
    Program program(Network(), "--duration 0.01");
    const std::string date = Json::parse(program.Line()).at("date");
    std::tm parts{};
    const char* rest = ::strptime(date.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    ASSERT_NE(nullptr, rest) << date;
    EXPECT_THAT(rest, ::testing::MatchesRegex("\\.[0-9][0-9][0-9]Z")) << date;
    EXPECT_LE(std::abs(std::difftime(std::time(nullptr), ::timegm(&parts))), 60);
    program.RemainingLines();
}

TEST_F(SimProgramTest, TakesCommandsFromStandardInput) {
    Network().AddFieldAddresses({kIp});
    Program program(Network(), std::string("--zcu 33@") + kIp + " --status-period 0 --commands --duration 20",
                    "printf 'help\\nsing\\nend\\n' |");
    const std::vector<Json> commands = Of(program.RemainingLines(), "command");
    EXPECT_EQ(0, program.End());
    ASSERT_EQ(3U, commands.size());
    EXPECT_EQ("done", commands[0].at("result"));
    EXPECT_GE(commands[0].at("lines").size(), 30U);
    EXPECT_EQ("\"sing\" is no command", commands[1].at("error"));
    EXPECT_EQ("input", commands[1].at("origin"));
    EXPECT_EQ("end", commands[2].at("text"));
}

TEST_F(SimProgramTest, TheEndOfTheCommandsIsNotTheEndOfTheRun) {
    Program program(Network(), "--commands --duration 0.3", "printf '' |");
    const auto start = std::chrono::steady_clock::now();
    program.RemainingLines();
    EXPECT_EQ(0, program.End());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(SimProgramTest, WithCommandsTheHostHasNoInput) {
    Program program(Network(), "--commands -- sh -c 'read line && exit 1; exit 7'", "printf 'help\\n' |");
    EXPECT_EQ(1U, Of(program.RemainingLines(), "command").size());
    EXPECT_EQ(7, program.End());
}

TEST_F(SimProgramTest, EndEndsTheHostToo) {
    Program program(Network(), "--commands -- sleep 60", "printf 'end\\n' |");
    program.RemainingLines();
    EXPECT_EQ(0, program.End());
}

TEST_F(SimProgramTest, PeriodicLinesAreToldAsAsked) {
    Network().AddFieldAddresses({kIp});
    const std::string options = std::string("--zcu 33@") + kIp + " --status-period 0.02 --duration 0.5 --periodic ";
    for (const auto& [which, least, most] : {std::tuple("all", 5U, 50U), {"changes", 1U, 1U}, {"none", 0U, 0U}}) {
        Program program(Network(), options + which);
        const std::size_t count = Of(program.RemainingLines(), "sent").size();
        EXPECT_GE(count, least) << which;
        EXPECT_LE(count, most) << which;
        EXPECT_EQ(0, program.End());
    }
}

TEST_F(SimProgramTest, UnusableOptionsAndScenariosExitWithTwo) {
    std::ofstream("bad.yaml") << "node: 9500\ncolour: red\n";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"--scenario bad.yaml", "k740-sim: bad.yaml:2: \"colour\" is not known here\n"},
        {"--zcu 33@300.1.1.1", "k740-sim: --zcu 33@300.1.1.1: no IPv4 address: 300.1.1.1\n"},
        {"--zcu 1000@192.168.1.1", "k740-sim: --zcu 1000@192.168.1.1: zone controller 1000: the ID is not in 1..999\n"},
        {"--zcu 33@192.168.1.1/10.0.0.1",
         "k740-sim: --zcu 33@192.168.1.1/10.0.0.1: no multicast group: \"10.0.0.1\"\n"},
        {"--station nowhere", "k740-sim: --station: no IPv4 address: nowhere\n"},
        {"--zcu 33@192.168.1.1 --rpk 5000@192.168.1.1",
         "k740-sim: --rpk 5000@192.168.1.1: paging station 5000: another device has the address 192.168.1.1\n"},
        {"--station ''", "k740-sim: --station: no device address: \"\"\n"},
        {"--station 0.0.0.0", "k740-sim: --station: no device address: \"0.0.0.0\"\n"},
        {"--station 224.0.0.1", "k740-sim: --station: no device address: \"224.0.0.1\"\n"},
        {"--zcu 33@192.168.1.166", "k740-sim: --zcu 33@192.168.1.166: the address 192.168.1.166 is the host's\n"},
        {"--station 10.0.0.1 --zcu 33@192.168.1.166 -- true",
         "k740-sim: --zcu 33@192.168.1.166: the address 192.168.1.166 is the host's\n"},
        {"--status-period 0.0009", "k740-sim: the status period is below 1 ms\n"},
        {"--scenario .", "k740-sim: .: it is a directory\n"},
        {"--record ''", "k740-sim: --record: the directory has no name\n"},
        {"--record /dev/null/x", "k740-sim: --record: cannot write to \"/dev/null/x\": Not a directory\n"},
        {"--events /nowhere/x", "k740-sim: --events: cannot write /nowhere/x: No such file or directory\n"},
        {"--commands </dev/zero", "k740-sim: --commands: standard input is no pipe, no terminal and no plain file\n"},
        {"--zcu 33@192.168.1.1 --", "k740-sim: there is no host behind --\n"}};
    for (const auto& [options, sentence] : cases) {
        Program program(Network(), options);
        EXPECT_EQ(sentence, program.Line());
        EXPECT_EQ(2, program.End()) << options;
    }
    for (const char* options :
         {"--bogus", "--duration x", "--duration -1", "--duration nan", "--status-period nan", "--node 9499",
          "--periodic often", "--until-close -1", "--until-close 0", "./my-host"}) {
        Program program(Network(), options);
        EXPECT_NE("", program.Line());
        EXPECT_EQ(2, program.End()) << options;
    }
}

TEST_F(SimProgramTest, NoInputIsNoCommands) {
    Program program(Network(), "--commands --duration 0.1 </dev/null");
    EXPECT_EQ(1U, program.RemainingLines().size());
    EXPECT_EQ(0, program.End());
}

TEST_F(SimProgramTest, DevicesMayBeAList) {
    Network().AddFieldAddresses({kIp, "192.168.1.34"});
    Program program(Network(), std::string("--zcu 33@") + kIp + " 34@192.168.1.34 --status-period 60 --duration 0.3");
    const std::vector<Json> lines = program.RemainingLines();
    EXPECT_EQ(1U, Of(lines, "sent", 33).size());
    EXPECT_EQ(1U, Of(lines, "sent", 34).size());
    EXPECT_EQ(0, program.End());
}

TEST_F(SimProgramTest, SettingsHoldBeforeTheFirstReport) {
    Network().AddFieldAddresses({kIp, "192.168.1.34"});
    std::ofstream("s.yaml") << "zone-controllers:\n  - {id: 33, address: 192.168.1.33, remove: }\n"
                               "  - {id: 34, address: 192.168.1.34, status: fault 2}\n";
    Program program(Network(), "--scenario s.yaml --status-period 0.02 --periodic all --duration 0.3");
    const std::vector<Json> lines = program.RemainingLines();
    EXPECT_EQ(0, program.End());
    EXPECT_EQ(0U, Of(lines, "sent", 33).size());
    ASSERT_LE(2U, Of(lines, "sent", 34).size());
    for (const Json& line : Of(lines, "sent", 34)) { EXPECT_EQ(2, line.at("fault")); }
}

TEST_F(SimProgramTest, HelpAndVersionAreNoErrors) {
    Program version(Network(), "--version");
    EXPECT_TRUE(version.Line().starts_with("k740-sim "));
    EXPECT_EQ(0, version.End());
    Program help(Network(), "--help");
    std::string text;
    for (std::string line = help.Line(); !line.empty(); line = help.Line()) { text += line; }
    for (const char* part : {"[-- HOST [ARGUMENT]...]", "--scenario", "--commands", "Examples:", "Exit status:"}) {
        EXPECT_NE(std::string::npos, text.find(part)) << part;
    }
    EXPECT_EQ(0, help.End());
}

} // namespace
} // namespace k740::test
