// A station whose push-to-talk thread does not end must not hold up the others.
#include "tests/rpk/ptt_fixture.h"

#include <atomic>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

using PTTSideBySideTest = PTTTest;

TEST_F(PTTSideBySideTest, ASetterThatWaitsForItsStationDoesNotHoldUpAnother) {
    static std::atomic<bool> isWaiting{false};
    AddRegistered(5001);
    Listen(kGroup);
    PTTAudio().OnNext([] {
        isWaiting = true;
        EXPECT_EQ(-3, K740_SetRPKPTTMulticastIP(kStation, ""));
        isWaiting = false;
    });
    TalkOn();
    ASSERT_TRUE(WaitUntil([] { return isWaiting.load(); }));
    EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(5001, kOtherGroup));
    EXPECT_TRUE(isWaiting);
    EXPECT_TRUE(WaitUntil([] { return !isWaiting; }));
}

} // namespace
} // namespace k740::test
