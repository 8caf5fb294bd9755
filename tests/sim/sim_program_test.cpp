// k740-sim from its command line to its files.
#include "sim/audio_datagram.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sndfile.hh>
#include <string>
#include <utility>
#include <vector>

namespace k740::test {
namespace {

using Json = nlohmann::json;

constexpr const char* kIp = "192.168.1.33";

/// A k740-sim in `field` with its output on a pipe.
class Program {
public:
    Program(const sim::PrivateNetwork& network, const std::string& arguments) {
        const std::string command = std::string("exec ") + K740_SIM_PROGRAM + ' ' + arguments;
        network.RunInField([&] { m_output = ::popen(command.c_str(), "re"); });
    }
    ~Program() {
        if (m_output != nullptr) { ::pclose(m_output); }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] std::string Line() {
        std::array<char, 4096> line{};
        return std::fgets(line.data(), static_cast<int>(line.size()), m_output) != nullptr ? line.data() : "";
    }
    /// Reads until the program ends.
    std::vector<Json> RemainingLines() {
        std::vector<Json> lines;
        for (std::string line = Line(); !line.empty(); line = Line()) { lines.push_back(Json::parse(line)); }
        return lines;
    }
    /// Waits for the end; the exit status.
    int End() { return WEXITSTATUS(::pclose(std::exchange(m_output, nullptr))); }

private:
    FILE* m_output = nullptr;
};

std::vector<Json> Of(const std::vector<Json>& lines, const std::string& event) {
    std::vector<Json> found;
    for (const Json& line : lines) {
        if (line.at("event") == event) { found.push_back(line); }
    }
    return found;
}

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
    Program program(Network(),
                    std::string("--zcu 33@") + kIp + " --status-period 0 --until-close 1 --duration 0.1 2>&1");
    const std::string ready = program.Line();
    EXPECT_EQ("k740-sim: the time is over, but fewer than 1 close-audio requests came\n", program.Line());
    EXPECT_EQ(1, program.End());
}

TEST_F(SimProgramTest, AddressThatDoesNotExistIsRefused) {
    Program program(Network(), "--zcu 33@192.168.1.33 2>&1");
    EXPECT_EQ("k740-sim: bind 192.168.1.33:28001: Cannot assign requested address\n", program.Line());
    EXPECT_EQ(1, program.End());
}

TEST_F(SimProgramTest, DeviceWithoutAnAddressIsRefused) {
    Program program(Network(), "--zcu 33 2>&1");
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
                    std::string("--zcu 33@") + kIp + " --status-period 0 --events /dev/null -- no-such-host 2>&1");
    EXPECT_EQ("k740-sim: cannot start no-such-host: No such file or directory\n", program.Line());
    EXPECT_EQ(1, program.End());
}

} // namespace
} // namespace k740::test
