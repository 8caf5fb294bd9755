// A port whose thread cannot be made.
#include "app/application.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <utility>

namespace k740::test {
namespace {

using PortReceiverTest = OnPrivateNetwork;

thread_local bool t_fails = false;

/// Fails the next allocation of a thread that has asked for it.
bool FailsNext() {
    return std::exchange(t_fails, false);
}

TEST_F(PortReceiverTest, WithoutItsThreadThePortStaysClosedAndTheLogSaysSo) {
    ASSERT_EQ(0, K740_Initialize());
    const auto ignore = [](const ReceiveBuffer&, std::size_t, const sockaddr_in&) { return true; };
    CPortReceiver receiver(*g_app, {29'100, "k740-test", 5, [](bool) {}, ignore});
    {
        const AllocationFailure failure(FailsNext);
        t_fails = true;
        receiver.Start();
    }
    EXPECT_TRUE(WaitForExactLine("*****No thread k740-test."));
    EXPECT_FALSE(receiver.HoldsPort());
    EXPECT_TRUE(receiver.IsSettled());
}

} // namespace
} // namespace k740::test
