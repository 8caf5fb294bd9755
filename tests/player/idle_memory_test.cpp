// What tasks cost that broadcast nothing. Not built with sanitizers, whose own memory would be measured.
#include "tests/player/broadcast_fixture.h"
#include "tests/support/process_state.h"

namespace k740::test {
namespace {

using IdleMemoryTest = BroadcastTest;

constexpr int kTasks = 200;
constexpr long kMostBytes = 16L * 1024 * 1024;

TEST_F(IdleMemoryTest, TwoHundredBroadcastingTasksTakeLessThan16Megabytes) {
    Reply(sim::PlayReply::AcceptWithoutJoin);
    m_controller.SetKeep(sim::Keep::Counts);
    StartAndBroadcast(); // what the first task brings along stays
    StopAndWait();
    const long before = ResidentBytes();
    ASSERT_GT(before, 0);
    for (int taskID = 1; taskID <= kTasks; ++taskID) { ASSERT_EQ(0, Start({.taskID = taskID})); }
    for (int taskID = 1; taskID <= kTasks; ++taskID) { ASSERT_TRUE(Reports().WaitFor(taskID, 2)); }
    const long added = ResidentBytes() - before;
    RecordProperty("AddedBytes", std::to_string(added));
    EXPECT_LT(added, kMostBytes);
}

TEST_F(IdleMemoryTest, AStreamThatKeepsUpStaysOnTheSamePages) {
    m_controller.SetKeep(sim::Keep::Counts);
    StartAndBroadcast();
    const std::vector<std::uint8_t> chunk(4096);
    const auto push = [&](std::size_t count) {
        const std::size_t sent = m_controller.CountDatagrams();
        for (std::size_t i = 1; i <= count; ++i) {
            ASSERT_EQ(0, PushBytes(kTask, chunk));
            ASSERT_TRUE(m_controller.WaitForDatagrams(sent + i, kSoon));
        }
    };
    push(20);
    const long before = ResidentBytes();
    push(500); // 2 MB, more than the whole slot
    EXPECT_LT(ResidentBytes() - before, 1024 * 1024);
}

TEST(StreamSlotMemoryTest, ABacklogThatHasBeenTakenGoesBackToTheSystem) {
    constexpr std::size_t kBytes = 4UL * 1024 * 1024;
    std::vector<unsigned char> chunk(4096, 0x11);
    CStreamSlot slot;
    ASSERT_TRUE(slot.New(kTask, kBytes));
    const long before = ResidentBytes();
    for (int round = 0; round < 3; ++round) { // from the front, then around the end
        while (slot.Push(kTask, chunk.data(), chunk.size())) {}
        EXPECT_GT(ResidentBytes() - before, static_cast<long>(kBytes) * 9 / 10);
        while (slot.Take(kTask, chunk.data(), chunk.size())) {}
        EXPECT_LT(ResidentBytes() - before, static_cast<long>(kBytes) / 10);
    }
}

} // namespace
} // namespace k740::test
