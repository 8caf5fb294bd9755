// 100,000 datagrams that were spoiled at random: the dissector takes every one of them and never fails.
#include "tests/wireshark/packets.h"

#include <algorithm>
#include <random>

namespace k740::test {
namespace {

constexpr int kParts = 8; // each a test of its own, so that they run side by side
constexpr int kDatagramsOfAPart = 12'500;

constexpr std::uint16_t kCodes[] = {
    0x0101, 0x0102, 0x0109, 0x8109, 0x0123, 0x0124, 0x0125, 0x8125, 0x8126, 0x0127, 0x8127, 0x0132,
    0x8132, 0x0205, 0x8205, 0x8206, 0x0301, 0x8301, 0x0302, 0x8302, 0x0303, 0x8303, 0x030A, 0x830A,
    0x0313, 0x8313, 0x0314, 0x8314, 0x0700, 0x8700, 0x0701, 0x8701, 0x0702, 0x8702,
};
constexpr std::uint16_t kTypes[] = {341, 342, 343, 344, 345, 352, 353, 354, 355, 356, 357, 359, 360, 0x8112};
constexpr std::uint16_t kPorts[] = {28001, 29001, 28100, 29002};
constexpr std::uint32_t kIDs[] = {kNode, kController, kStation, kIntercom, kAux, 0, 0xFFFFFFFF};

class Spoiler {
public:
    explicit Spoiler(unsigned seed) : m_random(seed) {}

    sim::Bytes Next() {
        sim::Bytes datagram = Below(3) == 0 ? Audio(OneOf(kTypes)) : RandomCommand();
        for (unsigned times = 1 + Below(3); times > 0; --times) { Spoil(datagram); }
        return datagram;
    }
    std::uint16_t Port() { return OneOf(kPorts); }
    /// How much of a datagram the capture lacks: of one in ten some bytes, never all.
    std::size_t Cut(const sim::Bytes& datagram) { return Below(10) == 0 ? Below(datagram.size()) : 0; }

private:
    unsigned Below(std::size_t bound) {
        return std::uniform_int_distribution<unsigned>(0, static_cast<unsigned>(bound) - 1)(m_random);
    }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(Below(256)); }
    template <typename Value, std::size_t kCount> Value OneOf(const Value (&values)[kCount]) {
        return values[Below(kCount)];
    }

    sim::Bytes RandomCommand() {
        sim::Bytes payload(Below(sim::kPayloadCapacity + 1));
        std::ranges::generate(payload, [this] { return Byte(); });
        return Command(OneOf(kIDs), OneOf(kIDs), OneOf(kCodes), payload);
    }

    void Spoil(sim::Bytes& datagram) {
        switch (Below(5)) {
        case 0:
            for (unsigned flips = 1 + Below(20); flips > 0; --flips) {
                datagram[Below(datagram.size())] ^= static_cast<std::uint8_t>(1U << Below(8));
            }
            return;
        case 1:
            datagram.resize(1 + Below(datagram.size()));
            return;
        case 2:
            datagram.resize(datagram.size() + Below(100), Byte());
            return;
        case 3:
            return Put(datagram, 16);
        default:
            return Put(datagram, 14);
        }
    }
    /// A random number in place of the code or the length.
    void Put(sim::Bytes& datagram, std::size_t at) {
        if (datagram.size() < at + 2) { return; }
        datagram[at] = Byte();
        datagram[at + 1] = Byte();
    }

    std::mt19937 m_random;
};

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) { ++count; }
    return count;
}

class MutationTest : public DissectorTest, public ::testing::WithParamInterface<int> {};

TEST_P(MutationTest, EverySpoiledDatagramIsDissected) {
    {
        Spoiler spoiler(static_cast<unsigned>(GetParam()));
        CaptureFile capture(kCapture);
        for (int i = 0; i < kDatagramsOfAPart; ++i) {
            const sim::Bytes datagram = spoiler.Next();
            capture.Add(datagram, kHost, {kDevice.ip, spoiler.Port()}, spoiler.Cut(datagram));
        }
    }
    const std::string text = DissectAsText(kCapture, "-2");
    EXPECT_EQ(kDatagramsOfAPart, Count(text, "\nK740 public address"));
    for (const char* failure : {"Lua Error", "issector bug", "Malformed Packet"}) {
        EXPECT_EQ(0U, Count(text, failure)) << failure;
    }
}

INSTANTIATE_TEST_SUITE_P(InParts, MutationTest, ::testing::Range(0, kParts));

} // namespace
} // namespace k740::test
