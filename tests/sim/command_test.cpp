// Every command, by what its device then does.
#include "sim/audio_datagram.h"
#include "sim/command_table.h"
#include "sim/wav_file.h"
#include "tests/sim/command_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace k740::test {
namespace {

using sim::Event;
using ::testing::HasSubstr;

const sim::Endpoint kEar{"225.2.0.1", 28100};

class CommandTest : public CommandFixture {
protected:
    /// The next datagram in the group that commands name.
    [[nodiscard]] std::optional<sim::AudioDatagram> Hear() const {
        const auto datagram = WaitForDatagram(m_ear);
        return datagram ? sim::ReadAudioDatagram(datagram->bytes) : std::nullopt;
    }

private:
    const sim::UdpSocket m_ear = sim::UdpSocket::InGroup(kEar, sim::kStationAddress);
};

TEST_F(CommandTest, UnknownCommandsAndDevicesAreRefused) {
    EXPECT_EQ("\"sing\" is no command", Do("sing 33"));
    EXPECT_EQ("there is no device 34", Do("quiet 34"));
    EXPECT_EQ("device 33 is no paging station", Do("call 33 5500"));
    EXPECT_EQ("\"more\" is too much", Do("quiet 33 more"));
    EXPECT_EQ("the command is missing", Do(""));
}

TEST_F(CommandTest, TalkStreamsAToneUntilQuiet) {
    EXPECT_EQ("", Do("talk 5000 225.2.0.1"));
    const auto heard = Hear();
    ASSERT_TRUE(heard);
    EXPECT_EQ(5000U, heard->node);
    ASSERT_TRUE(Await(kPagingStation, Event::Kind::StreamBegins));
    EXPECT_EQ("", Do("quiet 5000"));
    const auto end = Await(kPagingStation, Event::Kind::StreamEnds);
    ASSERT_TRUE(end);
    EXPECT_EQ(kEar, end->peer);
    EXPECT_GE(end->audio->datagrams, 1U);
}

TEST_F(CommandTest, AuxInterfacesTalkToo) {
    EXPECT_EQ("", Do("talk 7000 225.2.0.1"));
    EXPECT_EQ(7000U, Hear().value_or(sim::AudioDatagram{}).node);
}

TEST_F(CommandTest, AWavIsPlayedOnce) {
    sim::WriteWav("short.wav", std::vector<std::int16_t>(2049, 500));
    EXPECT_EQ("", Do("talk 5000 225.2.0.1 short.wav"));
    const auto end = Await(kPagingStation, Event::Kind::StreamEnds);
    ASSERT_TRUE(end);
    EXPECT_EQ(2U, end->audio->datagrams); // the second one is filled up with silence
}

TEST_F(CommandTest, AWavIsPlayedOverAndOverWithLoop) {
    sim::WriteWav("short.wav", std::vector<std::int16_t>(2048, 500));
    EXPECT_EQ("", Do("talk 5000 225.2.0.1 short.wav loop"));
    EXPECT_TRUE(Hear() && Hear() && Hear());
}

TEST_F(CommandTest, SpeakStreamsToTheStationsIntercomPort) {
    const sim::UdpSocket ear = sim::UdpSocket::BoundTo({sim::kStationAddress, 29002});
    EXPECT_EQ("", Do("speak 5000 5500"));
    const auto datagram = WaitForDatagram(ear);
    ASSERT_TRUE(datagram);
    EXPECT_EQ((sim::Endpoint{kStationIp, 29002}), datagram->sender);
    const auto audio = sim::ReadAudioDatagram(datagram->bytes);
    EXPECT_EQ(5000U, audio->node);
    EXPECT_EQ(5500U, audio->stream);
    EXPECT_EQ("", Do("quiet 5000"));
    EXPECT_TRUE(Await(kPagingStation, Event::Kind::StreamEnds));
}

TEST_F(CommandTest, PlayZoneStreamsToTheZonesGroupAndTellsIt) {
    EXPECT_EQ("", Do("play-zone 33 2 225.2.0.1"));
    EXPECT_EQ(kController, Hear().value_or(sim::AudioDatagram{}).node);
    station.Request(kControllerIp, kController, 0x0303, {});
    const sim::Bytes groups = station.AnswerPayload(0x8303);
    EXPECT_EQ(0xE1020001U, sim::ReadAt<std::uint32_t>(groups, 8));
}

TEST_F(CommandTest, CallsAreMadeAndAnswered) {
    EXPECT_EQ("", Do("call 5000 5500"));
    EXPECT_EQ(5500U, AwaitSent(kPagingStation, 0x0701).value().packet->destination);
    EXPECT_EQ("", Do("handshake 5000 5500"));
    EXPECT_TRUE(AwaitSent(kPagingStation, 0x0700));
    struct Said {
        const char* command;
        int code;
    };
    for (const auto& [command, code] : {Said{"ring", 0}, Said{"accept", 1}, Said{"refuse", 2}, Said{"hang-up", 2}}) {
        EXPECT_EQ("", Do(std::string(command) + " 5000 5500"));
        const auto sent = Field().Events().Events(sim::Sent(kPagingStation, 0x8701));
        EXPECT_EQ(code, sent.back().packet->payload[0]) << command;
    }
}

TEST_F(CommandTest, HangUpEndsWhatTheStationSays) {
    Do("speak 5000 5500");
    EXPECT_EQ("", Do("hang-up 5000 5500"));
    EXPECT_TRUE(Await(kPagingStation, Event::Kind::StreamEnds));
}

TEST_F(CommandTest, ReplySaysHowPlayRequestsAreMet) {
    EXPECT_EQ("", Do("reply 33 refuse"));
    station.Play(kControllerIp, kController, 1001, 1);
    EXPECT_EQ(2, sim::ReadAt<std::uint16_t>(station.AnswerPayload(0x8205), 1));
    EXPECT_EQ("", Do("reply 33 accept-255 20 twice"));
    station.Play(kControllerIp, kController, 1001, 1);
    EXPECT_EQ(255, sim::ReadAt<std::uint16_t>(station.AnswerPayload(0x8205), 1));
    EXPECT_EQ(255, sim::ReadAt<std::uint16_t>(station.AnswerPayload(0x8205), 1));
}

TEST_F(CommandTest, AnswerSaysHowAStationMeetsRequests) {
    EXPECT_EQ("", Do("answer 5000 calls refuse"));
    station.Request(kStationIp, kPagingStation, 0x0701, sim::Bytes(8));
    EXPECT_EQ(2, station.AnswerPayload(0x8701).at(0));
    EXPECT_EQ("", Do("answer 5000 tasks 7 8"));
    station.Request(kStationIp, kPagingStation, 0x0702, sim::Bytes(26));
    EXPECT_EQ(7, station.AnswerPayload(0x8702).at(4));
    EXPECT_EQ(8, station.AnswerPayload(0x8702).at(4));
    EXPECT_EQ("", Do("answer 5000 monitors 3 delay 1"));
    station.Request(kStationIp, kPagingStation, 0x030A, sim::Bytes(7));
    EXPECT_EQ(3, station.AnswerPayload(0x830A).at(0));
}

TEST_F(CommandTest, FaultsAreOfOneRequestOrOfAll) {
    EXPECT_EQ("", Do("fault 33 read-version twice source 34"));
    station.Request(kControllerIp, kController, 0x0132, {});
    for (int answer = 0; answer < 2; ++answer) { EXPECT_EQ(34U, station.Answer().value().source); }
    EXPECT_EQ("", Do("fault 33 lose 1"));
    station.Request(kControllerIp, kController, 0x0303, {});
    EXPECT_TRUE(Await(kController, Event::Kind::Lost));
    EXPECT_EQ("", Do("fault 33 none"));
    station.Request(kControllerIp, kController, 0x0303, {});
    EXPECT_EQ(65U, station.AnswerPayload(0x8303).size());
}

TEST_F(CommandTest, StatusChangesFieldsAndReportsAtOnce) {
    EXPECT_EQ("", Do("status 33 fault 5 amplifier 8 3 zone 2 4 task 1 70000 extra-b 9"));
    const sim::Bytes report = station.AnswerPayload(0x8126);
    ASSERT_EQ(85U, report.size());
    EXPECT_EQ(5, report[17]);
    EXPECT_EQ(3, report[63]);
    EXPECT_EQ(4, report[2]);
    EXPECT_EQ(70000U, sim::ReadAt<std::uint32_t>(report, 18));
    EXPECT_EQ(9, report[59]);
    EXPECT_EQ("", Do("status 5000 state 2 word-b 300"));
    const sim::Bytes status = station.AnswerPayload(0x8700);
    EXPECT_EQ(2, status[0]);
    EXPECT_EQ(300, sim::ReadAt<std::uint16_t>(status, 6));
    EXPECT_THAT(Do("status 33 zone 9 1"), HasSubstr("is not in 1..8"));
    EXPECT_THAT(Do("status 33 fault 256"), HasSubstr("is not in 0..255"));
}

TEST_F(CommandTest, VolumesGenerationAndVersionAreSet) {
    EXPECT_EQ("", Do("volumes 33 1 2 3 4 5 6 7 8 9 10"));
    EXPECT_EQ((std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), controller->Volumes());
    EXPECT_EQ("wrong number of volume levels", Do("volumes 33 1 2 3 4"));
    EXPECT_EQ("", Do("generation 33 2"));
    EXPECT_EQ("", Do("volumes 33 1 2 3 4"));
    EXPECT_THAT(Do("volumes 33 1 2 3"), HasSubstr("4 attenuations"));
    EXPECT_EQ("", Do("version 33 application 9.8 kernel 7.6"));
    station.Request(kControllerIp, kController, 0x0132, {});
    const sim::Bytes version = station.AnswerPayload(0x8132);
    EXPECT_STREQ("9.8", reinterpret_cast<const char*>(version.data() + 36));
    EXPECT_STREQ("7.6", reinterpret_cast<const char*>(version.data() + 24));
}

TEST_F(CommandTest, TurnedVolumesAreToldAsSet) {
    EXPECT_EQ("", Do("turn 33 1 2 3 4 5 6 7 8 9 10"));
    EXPECT_EQ(10U, station.AnswerPayload(0x8301).size());
    EXPECT_EQ((std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), controller->Volumes());
    EXPECT_EQ("", Do("generation 33 2"));
    EXPECT_EQ("", Do("turn 33 1 2 3 4"));
    EXPECT_EQ(4U, station.AnswerPayload(0x8109).size());
}

TEST_F(CommandTest, ARemovedDeviceIsThereForNobodyUntilItIsRestored) {
    station.Play(kControllerIp, kController, 1001, 1);
    ASSERT_EQ(29U, station.AnswerPayload(0x8205).size());
    ASSERT_EQ(26U, station.AnswerPayload(0x8206).size());
    Do("talk 33 225.2.0.1");
    EXPECT_EQ("", Do("remove 33"));
    EXPECT_TRUE(Await(kController, Event::Kind::LeftGroup));
    EXPECT_TRUE(Await(kController, Event::Kind::StreamEnds));
    EXPECT_EQ("device 33 is off", Do("talk 33 225.2.0.1"));
    station.Request(kControllerIp, kController, 0x0132, {});
    EXPECT_EQ("", Do("status 5000 state 1")); // comes instead of the answer
    EXPECT_EQ(0x8700, station.Answer().value().command);
    EXPECT_EQ("", Do("restore 33"));
    station.Request(kControllerIp, kController, 0x0132, {});
    EXPECT_EQ(0x8132, station.Answer().value().command);
}

TEST_F(CommandTest, ClientsAskVirtualControllers) {
    struct Asked {
        const char* command;
        std::uint16_t code;
    };
    for (const auto& [command, code] :
         {Asked{"heartbeat 9501 900", 0x0125}, Asked{"play 9501 900 1001 1,2 225.2.0.1 priority 80", 0x0205},
          Asked{"close-audio 9501 900 1001", 0x0101}, Asked{"close-zones 9501 900 all", 0x0102},
          Asked{"ask 9501 900 version", 0x0132}, Asked{"ask 9501 900 groups", 0x0303},
          Asked{"add-zones 9501 900 1", 0x0313}, Asked{"remove-zones 9501 900 1", 0x0314}}) {
        EXPECT_EQ("", Do(command));
        const auto packet = station.Answer();
        ASSERT_TRUE(packet) << command;
        EXPECT_EQ(code, packet->command) << command;
        EXPECT_EQ(900U, packet->destination) << command;
    }
    const auto request = Field().Events().Events(sim::Sent(kClient, 0x0205));
    EXPECT_EQ(176, sim::ReadAt<std::uint16_t>(request.at(0).packet->payload, 4)); // 256 less the priority
    EXPECT_EQ(0b11U, sim::ReadAt<std::uint32_t>(request.at(0).packet->payload, 38));
}

TEST_F(CommandTest, EndOfAudioNamesTheController) {
    EXPECT_EQ("", Do("end-of-audio 9501 900 225.2.0.1"));
    const auto end = Hear();
    ASSERT_TRUE(end);
    EXPECT_EQ(sim::Coding::EndOfStream, end->coding);
    EXPECT_EQ(900U, end->stream);
}

TEST_F(CommandTest, ZoneGroupIsTold) {
    EXPECT_EQ("", Do("zone-group 33 8 225.2.0.1"));
    station.Request(kControllerIp, kController, 0x0303, {});
    EXPECT_EQ(0xE1020001U, sim::ReadAt<std::uint32_t>(station.AnswerPayload(0x8303), 56));
    EXPECT_EQ("zone \"9\" is not in 1..8", Do("close-zones 9501 900 9"));
    EXPECT_EQ("the zone \"9\" is not in 1..8", Do("zone-group 33 9 none"));
}

TEST_F(CommandTest, ThePageExplainsEachCommand) {
    std::ostringstream page;
    page << std::ifstream(K740_SIMULATOR_PAGE).rdbuf();
    for (const sim::CommandForm& form : sim::Commands()) {
        const bool explained = page.str().find('`' + form.name + ' ') != std::string::npos ||
                               page.str().find('`' + form.name + '`') != std::string::npos;
        EXPECT_TRUE(explained) << form.name;
    }
}

TEST_F(CommandTest, HelpListsTheCommandsAndEndEndsTheRun) {
    EXPECT_EQ("", Do("help"));
    EXPECT_GE(LastCommand().lines.size(), 30U);
    EXPECT_FALSE(stage.ended);
    EXPECT_EQ("", Do("end"));
    EXPECT_TRUE(stage.ended);
}

} // namespace
} // namespace k740::test
