#include "sim/zone_controller.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <sndfile.hh>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using sim::ByteView;
using sim::Event;
using sim::PlayBehaviour;
using sim::PlayReply;
using sim::ReadAt;

constexpr std::uint32_t kId = 33;
constexpr const char* kIp = "192.168.1.33";
constexpr std::uint32_t kTask = 1001;

class ZoneControllerTest : public OnPrivateNetwork {
protected:
    void Behave(PlayReply reply) {
        PlayBehaviour behaviour;
        behaviour.reply = reply;
        m_controller.SetBehaviour(behaviour);
    }
    void Play(std::uint32_t zoneMask = 1) { m_station.Play(kIp, kId, kTask, zoneMask); }
    /// Plays and waits until the controller is in the group.
    void PlayAndJoin(std::uint32_t zoneMask = 1) {
        Play(zoneMask);
        EXPECT_EQ(29U, m_station.AnswerPayload(0x8205).size());
        EXPECT_EQ(26U, m_station.AnswerPayload(0x8206).size());
    }
    void SendAudio(std::initializer_list<std::uint8_t> codes) {
        for (const std::uint8_t code : codes) { m_station.Multicast(AudioBytes(code, m_sender)); }
    }
    void CloseAudio() {
        m_station.CloseAudio(kIp, kId, kTask);
        EXPECT_TRUE(Field().Events().WaitFor(sim::Happened(kId, Event::Kind::LeftGroup), kSoon));
    }
    /// Whether the controller meets a further request, so that it has met all before it, without any answer.
    void ExpectNoFurtherAnswer() {
        m_controller.SendStatus(m_controller.QuietStatus());
        const auto packet = m_station.Answer();
        ASSERT_TRUE(packet);
        EXPECT_EQ(0x8126, packet->command);
    }
    void WaitUntilReceived(std::uint16_t command, std::size_t count = 1) {
        EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kId, command), kSoon, count));
    }

    Station m_station;
    sim::ZoneController& m_controller = AddZoneController(kId, kIp);
    sim::AdpcmState m_sender;
};

TEST_F(ZoneControllerTest, AcceptsEchoesAndReportsTheJoinWithTheSameTokens) {
    Play();
    const auto answer = m_station.Answer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(0x8205, answer->command);
    EXPECT_EQ(kId, answer->source);
    EXPECT_EQ(9500U, answer->destination);
    EXPECT_EQ(29, answer->length);
    const ByteView said(answer->payload);
    EXPECT_EQ(1, said[0]);
    EXPECT_EQ(1, ReadAt<std::uint16_t>(said, 1));
    EXPECT_EQ(1, ReadAt<std::uint16_t>(said, 3)); // sequence
    EXPECT_EQ(kTask, ReadAt<std::uint32_t>(said, 21));

    const Bytes report = m_station.AnswerPayload(0x8206);
    ASSERT_EQ(26U, report.size());
    EXPECT_EQ(1, ReadAt<std::uint16_t>(report, 0));
    EXPECT_EQ(ReadAt<std::uint32_t>(said, 5), ReadAt<std::uint32_t>(report, 2));
    EXPECT_EQ(ReadAt<std::uint32_t>(said, 9), ReadAt<std::uint32_t>(report, 6));
    EXPECT_NE(ReadAt<std::uint32_t>(said, 5), ReadAt<std::uint32_t>(said, 9));
    EXPECT_TRUE(m_controller.IsListening(kTask));
}

TEST_F(ZoneControllerTest, AcceptWithoutJoinListensAndReportsNothing) {
    Behave(PlayReply::AcceptWithoutJoin);
    Play();
    const Bytes answer = m_station.AnswerPayload(0x8205);
    ASSERT_EQ(29U, answer.size());
    EXPECT_EQ(0, answer[0]);
    EXPECT_EQ(1, ReadAt<std::uint16_t>(answer, 1));
    EXPECT_TRUE(m_controller.IsListening(kTask));
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, Accept255ListensAndReportsNothing) {
    Behave(PlayReply::Accept255);
    Play();
    EXPECT_EQ(255, ReadAt<std::uint16_t>(m_station.AnswerPayload(0x8205), 1));
    EXPECT_TRUE(m_controller.IsListening(kTask));
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, RefusalCarriesItsResultAndJoinsNothing) {
    PlayBehaviour behaviour;
    behaviour.reply = PlayReply::Refuse;
    behaviour.refusal = 7;
    m_controller.SetBehaviour(behaviour);
    Play();
    EXPECT_EQ(7, ReadAt<std::uint16_t>(m_station.AnswerPayload(0x8205), 1));
    EXPECT_FALSE(m_controller.IsListening(kTask));
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, SilentControllerKeepsTheRequestInTheJournal) {
    Behave(PlayReply::Silent);
    Play();
    WaitUntilReceived(0x0205);
    EXPECT_FALSE(m_controller.IsListening(kTask));
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, JoinRefusedAcceptsAndReportsAStatusOtherThanOne) {
    Behave(PlayReply::JoinRefused);
    Play();
    const Bytes answer = m_station.AnswerPayload(0x8205);
    ASSERT_EQ(29U, answer.size());
    EXPECT_EQ(1, answer[0]);
    EXPECT_EQ(2, ReadAt<std::uint16_t>(m_station.AnswerPayload(0x8206), 0));
    EXPECT_FALSE(m_controller.IsListening(kTask));
}

TEST_F(ZoneControllerTest, JoinNeverAcceptsAndReportsNothing) {
    Behave(PlayReply::JoinNever);
    Play();
    const Bytes answer = m_station.AnswerPayload(0x8205);
    ASSERT_EQ(29U, answer.size());
    EXPECT_EQ(1, answer[0]);
    EXPECT_FALSE(m_controller.IsListening(kTask));
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, DelaysAreKept) {
    PlayBehaviour behaviour;
    behaviour.answerDelay = 60ms;
    behaviour.joinDelay = 40ms;
    m_controller.SetBehaviour(behaviour);
    PlayAndJoin();
    const auto request = Field().Events().WaitFor(sim::Received(kId, 0x0205), kSoon);
    const auto answer = Field().Events().WaitFor(sim::Sent(kId, 0x8205), kSoon);
    const auto report = Field().Events().WaitFor(sim::Sent(kId, 0x8206), kSoon);
    ASSERT_TRUE(request && answer && report);
    EXPECT_GE(answer->time - request->time, 60ms);
    EXPECT_GE(report->time - answer->time, 40ms);
}

TEST_F(ZoneControllerTest, TwoAnswersHaveDifferentTokensAndTheReportHasTheSecondOnes) {
    PlayBehaviour behaviour;
    behaviour.answerTwice = true;
    m_controller.SetBehaviour(behaviour);
    Play();
    const Bytes first = m_station.AnswerPayload(0x8205);
    const Bytes second = m_station.AnswerPayload(0x8205);
    const Bytes report = m_station.AnswerPayload(0x8206);
    EXPECT_NE(ReadAt<std::uint32_t>(first, 5), ReadAt<std::uint32_t>(second, 5));
    EXPECT_EQ(ReadAt<std::uint32_t>(second, 5), ReadAt<std::uint32_t>(report, 2));
    EXPECT_EQ(ReadAt<std::uint32_t>(second, 9), ReadAt<std::uint32_t>(report, 6));
}

TEST_F(ZoneControllerTest, GroupThatIsNoMulticastAddressIsReportedAsNotJoined) {
    m_station.Request(kIp, kId, 0x0205, PlayPayload(kTask, 1, 0x0A000001));
    EXPECT_EQ(29U, m_station.AnswerPayload(0x8205).size());
    EXPECT_NE(1, ReadAt<std::uint16_t>(m_station.AnswerPayload(0x8206), 0));
}

TEST_F(ZoneControllerTest, HearsTheGroupInItsZonesUntilCloseAudio) {
    PlayAndJoin(0b101);
    SendAudio({0x12, 0xA5, 0x34});
    ASSERT_TRUE(m_controller.WaitForDatagrams(3, kSoon));
    CloseAudio();
    SendAudio({0x56});
    ExpectNoFurtherAnswer();

    const auto recordings = m_controller.Recordings();
    ASSERT_EQ(1U, recordings.size());
    EXPECT_EQ(3U, recordings[0].datagrams);
    EXPECT_EQ(0U, recordings[0].gaps);
    EXPECT_TRUE(recordings[0].left);
    EXPECT_EQ(0b101U, m_controller.ZonesServed());
    EXPECT_EQ(recordings[0].samples, m_controller.HeardIn(1));
    EXPECT_EQ(recordings[0].samples, m_controller.HeardIn(3));
    EXPECT_TRUE(m_controller.HeardIn(2).empty());
}

TEST_F(ZoneControllerTest, BothRoundsOfTheEndOfStreamAreHeardBeforeCloseAudio) {
    PlayAndJoin();
    SendAudio({0x12});
    for (const std::uint32_t controller : {kId, 34U, kId, 34U}) { m_station.Multicast(EndOfStreamBytes(controller)); }
    CloseAudio();
    const auto recordings = m_controller.Recordings();
    ASSERT_EQ(1U, recordings.size());
    EXPECT_EQ(2U, recordings[0].endsOfStream.size());
    EXPECT_EQ(2U, recordings[0].endsOfOthers);
    const auto end = Field().Events().WaitFor(sim::Happened(kId, Event::Kind::EndOfStream), kSoon, 2);
    const auto close = Field().Events().WaitFor(sim::Received(kId, 0x0101), kSoon);
    ASSERT_TRUE(end && close);
    EXPECT_EQ(kGroup, end->peer);
    EXPECT_LE(end->time, close->time);
}

TEST_F(ZoneControllerTest, CloseAudioForAnotherTaskChangesNothing) {
    PlayAndJoin();
    m_station.CloseAudio(kIp, kId, kTask + 1);
    WaitUntilReceived(0x0101);
    EXPECT_TRUE(m_controller.IsListening(kTask));
}

TEST_F(ZoneControllerTest, SecondRequestForARunningTaskAddsZones) {
    PlayAndJoin(0b001);
    SendAudio({0x12});
    ASSERT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    PlayAndJoin(0b010);
    SendAudio({0xA5});
    ASSERT_TRUE(m_controller.WaitForDatagrams(2, kSoon));
    EXPECT_EQ(1U, m_controller.Recordings().size());
    EXPECT_EQ(4096U, m_controller.HeardIn(1).size());
    EXPECT_EQ(2048U, m_controller.HeardIn(2).size());
}

TEST_F(ZoneControllerTest, RequestAfterTheEndOfStreamBeginsANewRecording) {
    PlayAndJoin();
    m_station.Multicast(EndOfStreamBytes(kId));
    ASSERT_TRUE(Field().Events().WaitFor(sim::Happened(kId, Event::Kind::EndOfStream), kSoon));
    PlayAndJoin();
    EXPECT_EQ(2U, m_controller.Recordings().size());
}

TEST_F(ZoneControllerTest, ClosedZonesHearNoMore) {
    PlayAndJoin(0b11);
    SendAudio({0x12});
    ASSERT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    sim::ByteWriter payload;
    payload.Put<std::uint32_t>(0b10).Fill(8, 0);
    m_station.Request(kIp, kId, 0x0102, payload.Get());
    WaitUntilReceived(0x0102);
    SendAudio({0xA5});
    ASSERT_TRUE(m_controller.WaitForDatagrams(2, kSoon));
    EXPECT_EQ(4096U, m_controller.HeardIn(1).size());
    EXPECT_EQ(2048U, m_controller.HeardIn(2).size());
}

TEST_F(ZoneControllerTest, WaitForDatagramsGivesUpAfterItsTime) {
    PlayAndJoin();
    EXPECT_FALSE(m_controller.WaitForDatagrams(1, 20ms));
}

TEST_F(ZoneControllerTest, WavHasWhatTheZoneHeard) {
    PlayAndJoin();
    SendAudio({0x12, 0xA5});
    ASSERT_TRUE(m_controller.WaitForDatagrams(2, kSoon));
    m_controller.WriteWav(1, "zone1.wav");
    SndfileHandle file("zone1.wav");
    EXPECT_EQ(44100, file.samplerate());
    EXPECT_EQ(1, file.channels());
    EXPECT_EQ(SF_FORMAT_WAV | SF_FORMAT_PCM_16, file.format());
    std::vector<std::int16_t> samples(static_cast<std::size_t>(file.frames()));
    file.read(samples.data(), file.frames());
    EXPECT_EQ(m_controller.HeardIn(1), samples);
}

TEST_F(ZoneControllerTest, HeartbeatIsOnlyNoted) {
    const Bytes node{0x1C, 0x25, 0x00, 0x00};
    m_station.Request(kIp, kId, 0x0125, node);
    WaitUntilReceived(0x0125);
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, StatusReportGoesToTheStationFromTheControllersAddress) {
    const sim::UdpSocket requestPort = sim::UdpSocket::BoundTo({sim::kStationAddress, sim::kRequestPort});
    m_controller.SendStatus(m_controller.QuietStatus(), sim::kRequestPort);
    const auto datagram = WaitForDatagram(requestPort);
    ASSERT_TRUE(datagram);
    EXPECT_EQ((sim::Endpoint{kIp, 28001}), datagram->sender);
    const auto packet = sim::Unpack(datagram->bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(0x8126, packet->command);
    EXPECT_EQ(85, packet->length);
    EXPECT_EQ(kId, packet->source);
    EXPECT_EQ(kId, ReadAt<std::uint32_t>(packet->payload, 13));
}

TEST_F(ZoneControllerTest, RepeatedStatusKeepsItsPeriodAndEnds) {
    m_controller.RepeatStatus(m_controller.QuietStatus(), 10ms);
    const auto fourth = Field().Events().WaitFor(sim::Sent(kId, 0x8126), kSoon, 4);
    m_controller.RepeatStatus({}, 0ms);
    const auto first = Field().Events().WaitFor(sim::Sent(kId, 0x8126), kSoon, 1);
    ASSERT_TRUE(first && fourth);
    EXPECT_GE(fourth->time - first->time, 30ms);
    const std::size_t count = Field().Events().Count(sim::Sent(kId, 0x8126));
    EXPECT_FALSE(Field().Events().WaitFor(sim::Sent(kId, 0x8126), 50ms, count + 1));
}

TEST_F(ZoneControllerTest, MalformedDatagramIsNotedAndIgnored) {
    sim::UdpSocket::BoundTo({sim::kStationAddress, 0}).Send(Bytes{1, 2, 3}, {kIp, 28001});
    const auto event = Field().Events().WaitFor([](const Event& noted) { return noted.bytes.size() == 3; }, kSoon);
    ASSERT_TRUE(event);
    EXPECT_FALSE(event->packet);
    ExpectNoFurtherAnswer();
}

TEST_F(ZoneControllerTest, RemovedControllerLeavesItsPortToAnother) {
    PlayAndJoin();
    Field().Remove(kId);
    EXPECT_NO_THROW(Field().AddZoneController(34, kIp));
}

TEST_F(ZoneControllerTest, RemovalDropsTheAnswerThatIsDue) {
    PlayBehaviour behaviour;
    behaviour.answerDelay = 10ms;
    m_controller.SetBehaviour(behaviour);
    Play();
    WaitUntilReceived(0x0205);
    Field().Remove(kId);
    EXPECT_FALSE(Field().Events().WaitFor(sim::Sent(0x8205), 50ms));
}

} // namespace
} // namespace k740::test
