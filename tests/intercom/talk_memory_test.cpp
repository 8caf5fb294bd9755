// What intercom audio costs while it waits. Not built with sanitizers, whose own memory would be measured.
#include "app/application.h"
#include "intercom/talk_streams.h"
#include "tests/support/process_state.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace k740::test {
namespace {

constexpr long kMebibyte = 1024 * 1024;
constexpr auto kAllowed = [] { return 0; };

TEST(TalkMemoryTest, BuffersTakeWhatWaitsInThemAndGiveItBack) {
    CTalkStreams streams;
    const std::vector<unsigned char> block(4096, 0x11);
    const long before = ResidentBytes();
    for (int intercom = 0; intercom < static_cast<int>(kMaxTalkStreams); ++intercom) {
        ASSERT_EQ(0, streams.Push(intercom, block.data(), block.size(), kAllowed));
    }
    EXPECT_LT(ResidentBytes() - before, 8 * kMebibyte); // 4 KiB waits in each of 1024
    for (int intercom = 0; intercom < static_cast<int>(kMaxTalkStreams); ++intercom) { streams.Remove(intercom); }
    EXPECT_LT(ResidentBytes() - before, 2 * kMebibyte);
}

TEST(TalkMemoryTest, AFullQueueOfDatagramsIsGivenBackWhenItHasBeenRead) {
    const auto app = std::make_unique<CK740ControlApp>();
    const std::vector<unsigned char> datagram(kRPKAudioBytes, 0x11);
    const long before = ResidentBytes();
    for (int i = 0; i < 10'000; ++i) { app->Talker().NewIntercomRPKAudio(datagram.data(), datagram.size()); }
    EXPECT_GT(ResidentBytes() - before, 12 * kMebibyte);
    tagINTERCOM_RPK_AUDIO oldest;
    while (app->Talker().GetFirstIntercomRPKAudio(oldest) == 0) {}
    EXPECT_LT(ResidentBytes() - before, 4 * kMebibyte);
}

} // namespace
} // namespace k740::test
