// What the host hears of a station.
#include "sim/raw_sender.h"
#include "tests/intercom/talk_fixture.h"
#include "tests/protocol/unspecified_sender.h"

namespace k740::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class ReceiveAudioTest : public TalkFixture {
protected:
    /// The datagrams in which a station says the samples.
    static std::vector<sim::AudioDatagram> Say(int stationID, std::uint32_t seed, std::size_t count,
                                               std::uint16_t type = 341) {
        sim::AudioEncoder encoder(static_cast<std::uint32_t>(stationID), 1, type);
        const auto samples = Noise(count * encoder.SamplesPerDatagram(), seed);
        std::vector<sim::AudioDatagram> said;
        for (std::size_t i = 0; i < count; ++i) {
            said.push_back(encoder.Encode(
                sim::SampleView(samples).subspan(i * encoder.SamplesPerDatagram(), encoder.SamplesPerDatagram())));
        }
        return said;
    }
    void Send(sim::ByteView bytes) const { m_sender.Send(bytes, 29002); }
    void Send(const std::vector<sim::AudioDatagram>& said) const {
        for (const sim::AudioDatagram& datagram : said) { Send(sim::Pack(datagram)); }
    }
    /// What the library's one decoder must have made of datagrams that the host heard.
    void ExpectHeard(std::size_t at, int stationID, const std::vector<sim::AudioDatagram>& said) {
        ASSERT_TRUE(Host().WaitForAudio(at + said.size()));
        const auto heard = Host().audio.All();
        for (std::size_t i = 0; i < said.size(); ++i) {
            EXPECT_EQ(stationID, heard[at + i].stationID);
            EXPECT_EQ(m_decoder.Decode(said[i]), heard[at + i].samples) << i;
        }
    }
    /// What it must have made of datagrams that the host did not hear.
    void Miss(const std::vector<sim::AudioDatagram>& said) {
        for (const sim::AudioDatagram& datagram : said) { m_decoder.Decode(datagram); }
    }

    const sim::RawSender m_sender{Network(), kStationIP};
    sim::AudioDecoder m_decoder;
};

TEST_F(ReceiveAudioTest, HostHearsTheStationThatItTalksTo) {
    Talk(m_station, kIntercom);
    const auto said = Say(kStation, 1, 5);
    Send(said);
    ExpectHeard(0, kStation, said);
}

TEST_F(ReceiveAudioTest, StationThatIsInNoCallIsNotHeard) {
    Talk(m_station, kIntercom);
    Send(Say(kOtherStation, 2, 3)); // moves the decoder
    const auto said = Say(kStation, 1, 2);
    Send(said);
    Miss(Say(kOtherStation, 2, 3));
    ExpectHeard(0, kStation, said);
    EXPECT_THAT(Host().audio.All(), SizeIs(2));
}

TEST_F(ReceiveAudioTest, RingingStationIsNotHeard) {
    RingFromStation();
    Talk(m_otherStation, kOtherIntercom);
    Send(Say(kStation, 1, 1));
    const auto said = Say(kOtherStation, 2, 1);
    Send(said);
    Miss(Say(kStation, 1, 1));
    ExpectHeard(0, kOtherStation, said);
    EXPECT_THAT(Host().audio.All(), SizeIs(1));
}

TEST_F(ReceiveAudioTest, DecoderIsSharedByStationsAndNeverReset) {
    Talk(m_station, kIntercom);
    Talk(m_otherStation, kOtherIntercom);
    const auto said = Say(kStation, 1, 2);
    const auto other = Say(kOtherStation, 2, 2);
    Send({said[0], other[0], said[1], other[1]});
    ExpectHeard(0, kStation, {said[0]});
    ExpectHeard(1, kOtherStation, {other[0]});
    ExpectHeard(2, kStation, {said[1]});
    ExpectHeard(3, kOtherStation, {other[1]});
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    Talk(m_station, kIntercom);
    Send(said); // a stream that begins anew meets the state of the one before
    ExpectHeard(4, kStation, said);
}

TEST_F(ReceiveAudioTest, AfterTheEndOfACallItIsNotHeard) {
    Talk(m_station, kIntercom);
    Talk(m_otherStation, kOtherIntercom);
    EXPECT_EQ(0, K740_HangUp(kIntercom));
    Send(Say(kStation, 1, 2));
    Miss(Say(kStation, 1, 2));
    const auto said = Say(kOtherStation, 2, 1);
    Send(said);
    ExpectHeard(0, kOtherStation, said);
    EXPECT_THAT(Host().audio.All(), SizeIs(1));
}

TEST_F(ReceiveAudioTest, WithoutTheCallbackItIsDroppedAndTheCallGoesOn) {
    Talk(m_station, kIntercom);
    ASSERT_EQ(0, K740_SetIntercomCallback(IntercomHost::OnMessage, nullptr));
    Send(Say(kStation, 3, 1));
    ASSERT_EQ(0, K740_SetIntercomCallback(IntercomHost::OnMessage, IntercomHost::OnAudio));
    const auto said = Say(kStation, 1, 2);
    Send(said);
    // The first may have been taken before or after the callback came back; the last follows from the one before it.
    ASSERT_TRUE(Host().audio.WaitFor([](const AudioCall&) { return true; }, 2));
    m_decoder.Skip(said[0]);
    const auto last = m_decoder.Decode(said[1]);
    EXPECT_TRUE(Host().audio.WaitFor([&](const AudioCall& call) { return call.samples == last; }));
    EXPECT_EQ(Talking(), StateOf());
}

TEST_F(ReceiveAudioTest, EveryTypeIsDecodedAsItSays) {
    Talk(m_station, kIntercom);
    std::size_t heard = 0;
    for (const int type : {341, 342, 343, 344, 345, 352, 359, 360}) {
        const auto said = Say(kStation, 7, 2, static_cast<std::uint16_t>(type));
        Send(said);
        ExpectHeard(heard, kStation, said);
        heard += said.size();
    }
}

TEST_F(ReceiveAudioTest, PCMIsCutAt1300BytesAndSilentBeyond) {
    Talk(m_station, kIntercom);
    std::size_t heard = 0;
    for (const int type : {353, 354, 355, 356, 357}) {
        auto said = Say(kStation, 7, 1, static_cast<std::uint16_t>(type));
        Send(said);
        constexpr std::size_t kKept = 1'300 - 18; // bytes of payload
        std::fill(said[0].payload.begin() + kKept, said[0].payload.end(), static_cast<std::uint8_t>(0));
        ExpectHeard(heard, kStation, said);
        ++heard;
    }
}

TEST_F(ReceiveAudioTest, EndOfStreamAndForeignTypesAreDroppedAndLeaveTheState) {
    Talk(m_station, kIntercom);
    const auto said = Say(kStation, 1, 2);
    Send({said[0]});
    Send(sim::EndOfStream(kStation, 1));
    for (const unsigned type : {0U, 340U, 346U, 351U, 358U, 361U, 0x5501U, 0xFFFFU}) {
        sim::AudioDatagram foreign = Say(kStation, 9, 1)[0];
        foreign.type = static_cast<std::uint16_t>(type);
        Send(sim::Pack(foreign));
    }
    Send({said[1]});
    ExpectHeard(0, kStation, said);
    EXPECT_THAT(Host().audio.All(), SizeIs(2));
}

TEST_F(ReceiveAudioTest, EachBlockIsLoggedWithItsFirstEightSamples) {
    EXPECT_EQ(0, K740_EnableCallbackLog(1));
    Talk(m_station, kIntercom);
    sim::AudioDatagram pcm = Say(kStation, 1, 1, 355)[0];
    pcm.payload.assign(1'764, 0);
    const sim::Bytes samples = sim::ByteWriter().PutAll(std::vector<std::int16_t>{1, -1, 2, 32767, -32768}).Get();
    std::copy(samples.begin(), samples.end(), pcm.payload.begin());
    Send(sim::Pack(pcm));
    ASSERT_TRUE(WaitForCallbackLogLine("PINTERCOMAUDIO", "PINTERCOMAUDIO("));
    EXPECT_EQ("PINTERCOMAUDIO(5000, {1,4294967295,2,32767,4294934528,0,0,0 ...}, 1764)",
              LogTexts("PINTERCOMAUDIO").at(0));
}

TEST_F(ReceiveAudioTest, StationOfTwoCallsIsHeardOnce) {
    Talk(m_station, kIntercom);
    Talk(m_station, kOtherIntercom);
    const auto said = Say(kStation, 1, 3);
    Send(said);
    ExpectHeard(0, kStation, said);
    EXPECT_EQ(0, K740_HangUp(kIntercom)); // the other call goes on
    Send(said);
    ExpectHeard(3, kStation, said);
}

TEST_F(ReceiveAudioTest, SenderIsKnownByItsIDWhateverItsAddress) {
    Network().AddFieldAddresses({"192.168.9.9"});
    Talk(m_station, kIntercom);
    const auto said = Say(kStation, 1, 2);
    sim::RawSender(Network(), "192.168.9.9").Send(sim::Pack(said[0]), 29002);
    ASSERT_TRUE(Host().WaitForAudio(1));
    SendFromNowhere(Network(), sim::Pack(said[1]), 29002);
    ExpectHeard(0, kStation, said);
}

TEST_F(ReceiveAudioTest, NobodyIsHeardBeforeTheFirstCall) {
    Send(Say(kStation, 1, 3));
    Miss(Say(kStation, 1, 3));
    Talk(m_otherStation, kIntercom);
    const auto said = Say(kOtherStation, 2, 1);
    Send(said);
    ExpectHeard(0, kOtherStation, said);
    EXPECT_THAT(Host().audio.All(), SizeIs(1));
    EXPECT_THAT(Host().audio.Matching([](const AudioCall& call) { return call.stationID == kStation; }), IsEmpty());
}

} // namespace
} // namespace k740::test
