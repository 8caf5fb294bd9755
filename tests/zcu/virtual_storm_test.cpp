// Very many play requests: everything they take is given back.
#include "common/thread.h"
#include "sim/raw_sender.h"
#include "tests/support/process_state.h"
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// What the library holds of this process.
struct Held {
    int threads = RunningThreads();
    std::ptrdiff_t descriptors = CountDescriptors();
    int memberships = CountMembers();

    bool operator==(const Held&) const = default;
};

class VirtualStormTest : public VirtualTest {
protected:
    /// The library's threads run and the log's files are there.
    VirtualStormTest() {
        EXPECT_TRUE(WaitForLogLine("PTRAINAUDIO"));
        m_before = Held();
    }
    void SendRequest(std::uint32_t task) {
        const auto request = sim::MakePacket(kClient, kVirtual, 0x0205, sim::Payload(PlayRequestOf(task)));
        m_sender.Send(sim::Pack(request), sim::kReplyPort);
    }
    static bool WaitForAll(int message, std::size_t count) {
        return WaitUntil([=] { return CountMessages(message) == count; }, 30s);
    }

    Held m_before;
    const sim::RawSender m_sender{Network(), kClientIP};
};

TEST_F(VirtualStormTest, AStormOfRequestsTakesNoMoreThreadsThanItsLastSecondHasRequests) {
    constexpr std::uint32_t kRequests = 2000;
    constexpr auto kPeriod = 1ms;
    std::vector<Clock::time_point> sent;
    const auto start = Clock::now();
    for (std::uint32_t i = 0; i < kRequests; ++i) {
        std::this_thread::sleep_until(start + i * kPeriod); // the pace of the storm
        SendRequest(1 + i);
        sent.push_back(Clock::now());
        if (i % 50 == 0) {
            const int threads = RunningThreads() - m_before.threads;
            const auto recent = std::upper_bound(sent.begin(), sent.end(), Clock::now() - 1s);
            EXPECT_LE(threads, sent.end() - recent);
        }
    }
    ASSERT_TRUE(WaitForAll(1, kRequests)) << "every request was met";
    const auto met = Clock::now();
    EXPECT_TRUE(WaitUntil([this] { return Held() == m_before; }));
    EXPECT_LT(Clock::now() - met, 6s);
    EXPECT_EQ(kRequests, CountMessages(2)) << "and has ended";
}

TEST_F(VirtualStormTest, TwoHundredQuickRequestsLeaveNothingBehind) {
    constexpr std::uint32_t kRequests = 200;
    for (std::uint32_t i = 0; i < kRequests; ++i) { SendRequest(kTask + i % 2); }
    ASSERT_TRUE(WaitForAll(1, kRequests));
    m_client.CloseZones(kVirtual, 0xFF);
    EXPECT_TRUE(WaitForAll(2, kRequests));
    EXPECT_TRUE(WaitUntil([this] { return Held() == m_before; }));
}

} // namespace
} // namespace k740::test
