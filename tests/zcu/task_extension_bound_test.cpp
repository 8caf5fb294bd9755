// The bound of the list of zones that join a task later. Not built with sanitizers, under which it takes minutes.
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

namespace k740::test {
namespace {

using TaskExtensionBoundTest = VirtualTest;

TEST_F(TaskExtensionBoundTest, Holds50000AndDropsTheOldestForTheNext) {
    CZCU zcu(*g_app);
    const auto add = [&](std::uint32_t key) {
        const _vxa_cmd_packet_t packet = MakePacket(kClient, kVirtual, 0x0313, key);
        zcu.ReceiveAddTaskExtend(&packet, "127.0.0.1");
    };
    for (std::uint32_t key = 1; key <= 50'000; ++key) { add(key); }
    EXPECT_EQ(50'000U, zcu.GetTaskExtensions().size());
    add(50'001);
    const auto known = zcu.GetTaskExtensions();
    EXPECT_EQ(50'000U, known.size());
    EXPECT_EQ(2, known.front().key[0]);
    EXPECT_EQ(0x51, known.back().key[0]); // 50001 is C351
}

} // namespace
} // namespace k740::test
