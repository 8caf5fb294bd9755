// A client of a virtual zone controller that falls silent, in real time.
#include "tests/support/status_records.h"
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

class VirtualClientLifeTest : public VirtualTest {
protected:
    static bool IsForgotten() { return g_app->ZCU().GetVirtualClients().empty(); }
};

TEST_F(VirtualClientLifeTest, ItGetsReportsForSixtySecondsAtMost) {
    g_app->ZCU().UpdateZCUStatus(ZCURecord(33, CountingReport())); // never put off line, as it is not registered
    m_client.SendHeartbeat(33);
    ASSERT_TRUE(WaitForAnswer(0x8126));
    ASSERT_TRUE(WaitUntil(IsForgotten, 80s));
    const auto forgotten = std::chrono::steady_clock::now();
    const auto heard = Field().Events().Events(sim::Sent(kClient, 0x0125)).at(0).time;
    EXPECT_GE(forgotten - heard, 59s);   // both ends are cut to seconds
    g_app->ZCU().SendVirtualZCUStatus(); // to nobody
    m_client.SendHeartbeat(901);
    ASSERT_TRUE(WaitForAnswer(0x8125, 2)); // after whatever was sent before
    const auto reports = Field().Events().Events(sim::Received(kClient, 0x8126));
    EXPECT_GE(reports.size(), 25U); // every 2 s
    EXPECT_LE(reports.back().time - heard, 61s);
}

} // namespace
} // namespace k740::test
