// A ringing that nobody answers, in real time.
#include "tests/intercom/call_fixture.h"

namespace k740::test {
namespace {

using RingMinuteTest = CallFixture;

TEST_F(RingMinuteTest, IntercomThatIsLeftAloneIsHungUpAfterAMinute) {
    RingFromStation();
    EXPECT_EQ(0, K740_Invite(kOtherIntercom, kOtherStation));
    const auto begin = std::chrono::steady_clock::now();
    const auto end = sim::Received(kStation, 0x8701);
    ASSERT_TRUE(Field().Events().WaitFor(end, std::chrono::seconds(80), 3));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(59)); // time(2) counts whole seconds
    EXPECT_TRUE(WaitForExactLine("Intercom 5500 hang up for ring is timeout."));
    EXPECT_TRUE(WaitForExactLine("Intercom 5501 hang up for ring is timeout."));
    EXPECT_EQ(Idle(), StateOf());
    EXPECT_EQ(Idle(kOtherStation), StateOf(kOtherIntercom));
    EXPECT_THAT(CodesAt(), ::testing::ElementsAre(0, 2, 2));
    EXPECT_THAT(CodesAt(kOtherStation), ::testing::ElementsAre(2, 2));
    EXPECT_EQ(1U, Messages().size()) << "the invitation";
}

} // namespace
} // namespace k740::test
