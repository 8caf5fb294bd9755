// Calls between a simulated paging station and the station's intercoms.
#include "sim/audio_encoder.h"
#include "sim/paging_station.h"
#include "sim/tone.h"
#include "sim/wav_match.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using sim::CallReply;

constexpr std::uint32_t kId = 5000;
constexpr const char* kIp = "192.168.8.99";
constexpr std::uint32_t kIntercom = 6001;
const sim::Endpoint kStationLine{sim::kStationAddress, 29002};
const sim::Endpoint kPagingLine{kIp, 29002};

class IntercomTest : public OnPrivateNetwork {
protected:
    void ReceiveInvitation() {
        const Bytes packet = sim::Pack(sim::MakePacket(kIntercom, kId, 0x0701, Bytes(8)));
        m_line.Send(packet, {kIp, 28001});
        EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kId, 0x0701), kSoon));
    }
    /// Code of the next call answer, which must be for the intercom; -1 for any other packet.
    int NextCallAnswer() {
        const auto packet = m_station.Answer();
        if (!packet || packet->command != 0x8701) { return -1; }
        EXPECT_EQ(kId, packet->source);
        EXPECT_EQ(kIntercom, packet->destination);
        EXPECT_EQ(9, packet->length);
        return packet->payload[0];
    }
    /// A status report is the next packet that comes, so that no other is before it.
    void ExpectNothingElse() {
        m_paging.SendStatus({});
        EXPECT_EQ(9U, m_station.AnswerPayload(0x8700).size());
    }

    Station m_station;
    const sim::UdpSocket m_line = sim::UdpSocket::BoundTo(kStationLine);
    sim::PagingStation& m_paging = AddPagingStation(kId, kIp);
};

TEST_F(IntercomTest, HandshakeInvitationAndAnswersAreForTheIntercom) {
    m_paging.Handshake(kIntercom);
    m_paging.Invite(kIntercom);
    const auto handshake = m_station.Answer();
    const auto invitation = m_station.Answer();
    ASSERT_TRUE(handshake && invitation);
    EXPECT_EQ(0x0700, handshake->command);
    EXPECT_EQ(kIntercom, handshake->destination);
    EXPECT_EQ(4, handshake->length);
    EXPECT_EQ(0x0701, invitation->command);
    EXPECT_EQ(kIntercom, invitation->destination);
    EXPECT_EQ(8, invitation->length);
    for (const std::uint8_t code : {sim::call::kRinging, sim::call::kAccepted, sim::call::kHungUp}) {
        m_paging.AnswerCall(kIntercom, code);
        EXPECT_EQ(code, NextCallAnswer());
    }
}

TEST_F(IntercomTest, PacketsToItsReplyPortAreNotedWithThePort) {
    m_line.Send(sim::Pack(sim::MakePacket(kIntercom, kId, 0x8700, Bytes(9))), {kIp, 29001});
    const auto event = Field().Events().WaitFor(sim::Received(kId, 0x8700), kSoon);
    ASSERT_TRUE(event);
    EXPECT_EQ(29001, event->port);
}

TEST_F(IntercomTest, InvitationIsOnlyNotedUnlessItIsToldOtherwise) {
    ReceiveInvitation();
    ExpectNothingElse();
}

TEST_F(IntercomTest, RingsAndNoMore) {
    m_paging.SetCallBehaviour({CallReply::Ring, 0ms});
    ReceiveInvitation();
    EXPECT_EQ(0, NextCallAnswer());
    ExpectNothingElse();
}

TEST_F(IntercomTest, RingsAtOnceAndAcceptsAfterTheDelay) {
    m_paging.SetCallBehaviour({CallReply::Accept, 50ms});
    ReceiveInvitation();
    EXPECT_EQ(0, NextCallAnswer());
    EXPECT_EQ(1, NextCallAnswer());
    const auto ringing = Field().Events().WaitFor(sim::Sent(kId, 0x8701), kSoon, 1);
    const auto accepted = Field().Events().WaitFor(sim::Sent(kId, 0x8701), kSoon, 2);
    ASSERT_TRUE(ringing && accepted);
    EXPECT_GE(accepted->time - ringing->time, 50ms);
}

TEST_F(IntercomTest, RefusesAfterTheDelay) {
    m_paging.SetCallBehaviour({CallReply::Refuse, 50ms});
    ReceiveInvitation();
    EXPECT_EQ(2, NextCallAnswer());
    const auto invited = Field().Events().WaitFor(sim::Received(kId, 0x0701), kSoon);
    const auto refused = Field().Events().WaitFor(sim::Sent(kId, 0x8701), kSoon);
    ASSERT_TRUE(invited && refused);
    EXPECT_GE(refused->time - invited->time, 50ms);
}

TEST_F(IntercomTest, HearsWhatComesToItsLine) {
    const std::vector<std::int16_t> tone = sim::Tone(440, 8192);
    sim::AudioEncoder encoder(kIntercom, 1, 341);
    for (std::size_t from = 0; from < tone.size(); from += 2048) {
        m_line.Send(sim::Pack(encoder.Encode(sim::SampleView(tone).subspan(from, 2048))), kPagingLine);
    }
    ASSERT_TRUE(m_paging.WaitForIntercomAudio(4, kSoon));
    const sim::IntercomRecording heard = m_paging.IntercomAudio();
    EXPECT_EQ(4U, heard.datagrams);
    EXPECT_EQ(0U, heard.gaps);
    EXPECT_EQ(0U, heard.foreign);
    EXPECT_EQ(kIntercom, heard.node);
    EXPECT_EQ(1U, heard.stream);
    EXPECT_EQ(kStationLine, heard.sender);
    ASSERT_EQ(4U, heard.kept.size());
    EXPECT_EQ(1052U, heard.kept[0].bytes.size());
    EXPECT_LE(heard.kept[0].arrival, heard.kept[3].arrival);
    EXPECT_GT(sim::Match(tone, heard.samples).correlation, 0.99);
}

TEST_F(IntercomTest, LossOnTheLineIsAGap) {
    const std::vector<std::int16_t> tone = sim::Tone(440, 2048);
    sim::AudioEncoder encoder(kIntercom, 1, 341);
    m_line.Send(sim::Pack(encoder.Encode(tone)), kPagingLine);
    encoder.Encode(tone);
    m_line.Send(sim::Pack(encoder.Encode(tone)), kPagingLine);
    ASSERT_TRUE(m_paging.WaitForIntercomAudio(2, kSoon));
    EXPECT_EQ(1U, m_paging.IntercomAudio().gaps);
}

TEST_F(IntercomTest, ForeignDatagramsAreKeptAndCountedApart) {
    m_line.Send(Bytes{1, 2, 3}, kPagingLine);
    m_line.Send(sim::EndOfStream(9500, kId), kPagingLine);
    ASSERT_TRUE(Field().WaitUntil([this] { return m_paging.IntercomAudio().foreign == 2; }, kSoon));
    const sim::IntercomRecording heard = m_paging.IntercomAudio();
    EXPECT_EQ(0U, heard.datagrams);
    ASSERT_EQ(2U, heard.kept.size());
    EXPECT_EQ((Bytes{1, 2, 3}), heard.kept[0].bytes);
}

TEST_F(IntercomTest, KeepsUpToItsBoundAndCountsBeyond) {
    constexpr std::size_t kBound = sim::IntercomRecording::kMostKept;
    sim::AudioEncoder encoder(kIntercom, 1, 345);
    const Bytes silence = sim::Pack(encoder.Encode(std::vector<std::int16_t>(882)));
    for (std::size_t sent = 1; sent <= kBound + 1; ++sent) {
        m_line.Send(silence, kPagingLine);
        if (sent % 200 == 0) { ASSERT_TRUE(m_paging.WaitForIntercomAudio(sent, kSoon)); } // none is lost in its queue
        if (sent < kBound) { continue; }
        ASSERT_TRUE(m_paging.WaitForIntercomAudio(sent, kSoon));
        EXPECT_EQ(kBound, m_paging.IntercomAudio().kept.size());
        EXPECT_EQ(kBound * 882, m_paging.IntercomAudio().samples.size());
    }
    EXPECT_EQ(kBound + 1, m_paging.IntercomAudio().datagrams);
}

TEST_F(IntercomTest, SpeaksFromItsLineToTheStations) {
    sim::AudioStream stream;
    stream.count = 2;
    stream.period = 1ms;
    m_paging.SendIntercomAudio(stream);
    for (int datagram = 0; datagram < 2; ++datagram) {
        const auto heard = WaitForDatagram(m_line);
        ASSERT_TRUE(heard);
        EXPECT_EQ(kPagingLine, heard->sender);
        const auto audio = sim::ReadAudioDatagram(heard->bytes);
        ASSERT_TRUE(audio);
        EXPECT_EQ(kId, audio->node);
        EXPECT_EQ(1U, audio->stream);
        EXPECT_EQ(341, audio->type);
    }
}

TEST_F(IntercomTest, TalksAndSpeaksOnItsLineAtTheSameTime) {
    const sim::UdpSocket ear = sim::UdpSocket::InGroup(kGroup, sim::kStationAddress);
    sim::AudioSource& line = m_paging.SendIntercomAudio();
    m_paging.Talk(kGroup);
    EXPECT_TRUE(WaitForDatagram(ear));
    EXPECT_TRUE(WaitForDatagram(m_line));
    EXPECT_TRUE(line.IsStreaming());
}

} // namespace
} // namespace k740::test
