// Datagrams of every audio type and length, with any content, on the port of intercom audio.
#include "sim/raw_sender.h"
#include "tests/intercom/talk_fixture.h"

#include <algorithm>
#include <array>
#include <random>

namespace k740::test {
namespace {

constexpr std::size_t kLongest = 5'120; // bytes that the library receives of a datagram

struct Type {
    std::uint16_t type;
    std::size_t decoded; // bytes
};
constexpr std::array<Type, 14> kTypes{{{341, 4096},
                                       {342, 4096},
                                       {343, 4096},
                                       {344, 4096},
                                       {345, 1764},
                                       {352, 1764},
                                       {353, 3528},
                                       {354, 4096},
                                       {356, 4096},
                                       {355, 1764},
                                       {357, 1764},
                                       {359, 3528},
                                       {360, 3528},
                                       {0x8112, 0}}};

class BadAudioTest : public TalkFixture {
protected:
    BadAudioTest() {
        Host().keepAudio = false;
        std::minstd_rand random(1); // always the same numbers, so that a failure comes again
        std::generate(m_datagram.begin(), m_datagram.end(), [&] { return static_cast<std::uint8_t>(random()); });
    }

    /// Random bytes, state blocks included, behind a header that says the station and the type.
    void Fill(sim::Bytes& datagram, std::uint16_t type) {
        std::rotate(datagram.begin() + 18, datagram.begin() + 19, datagram.end());
        const sim::Bytes header = sim::ByteWriter()
                                      .Put<std::uint16_t>(0x4A79)
                                      .Fill(4, 0)
                                      .Put<std::uint32_t>(kStation)
                                      .Fill(4, 0)
                                      .Put(type)
                                      .Get();
        std::copy(header.begin(), header.end(), datagram.begin());
    }
    /// Sends all types with this length and waits for what the host must hear.
    void SendAllTypes(std::size_t length) {
        for (const Type& type : kTypes) {
            Fill(m_datagram, type.type);
            m_sender.Send(sim::ByteView(m_datagram).first(length), 29002);
            if (length < 16 || type.decoded == 0) { continue; } // without a type nothing is decoded
            ++m_blocks;
            m_bytes += type.decoded;
        }
        ASSERT_TRUE(Host().WaitForAudio(m_blocks)) << length;
    }

    const sim::RawSender m_sender{Network(), kStationIP};
    sim::Bytes m_datagram = sim::Bytes(10'000);
    std::size_t m_blocks = 0;
    std::size_t m_bytes = 0;
};

TEST_F(BadAudioTest, EveryTypeAtEveryLengthGivesItsOwnLengthOrNothing) {
    Talk(m_station, kIntercom);
    for (std::size_t length = 1; length <= kLongest; ++length) { ASSERT_NO_FATAL_FAILURE(SendAllTypes(length)); }
    EXPECT_EQ(m_bytes, Host().audioBytes);
    EXPECT_EQ(m_blocks, Host().audioBlocks);
}

TEST_F(BadAudioTest, LongerDatagramsAreCut) {
    Talk(m_station, kIntercom);
    for (const std::size_t length : {5'119U, 5'120U, 5'121U, 8'000U, 10'000U}) {
        ASSERT_NO_FATAL_FAILURE(SendAllTypes(length));
    }
    EXPECT_EQ(m_bytes, Host().audioBytes);
}

TEST_F(BadAudioTest, StateBlocksOutOfRangeAreBorne) {
    Talk(m_station, kIntercom);
    for (unsigned index = 0; index <= 255; ++index) {
        Fill(m_datagram, 341);
        m_datagram[1046] = static_cast<std::uint8_t>(index); // step indices behind 1024 bytes of code
        m_datagram[1047] = static_cast<std::uint8_t>(255 - index);
        m_sender.Send(sim::ByteView(m_datagram).first(1'052), 29002);
        ++m_blocks;
        ASSERT_TRUE(Host().WaitForAudio(m_blocks));
    }
    EXPECT_EQ(256U * 4096, Host().audioBytes);
}

TEST_F(BadAudioTest, EmptyDatagramsAreBorne) {
    Talk(m_station, kIntercom);
    for (int i = 0; i < 3; ++i) { m_sender.Send({}, 29002); }
    SendAllTypes(1'052);
}

} // namespace
} // namespace k740::test
