#include "common/deadline.h"
#include "common/stopwatch.h"
#include "common/wake_list.h"

#include <gtest/gtest.h>

#include <optional>

namespace k740::test {
namespace {

constexpr unsigned kShortMs = 20;
constexpr unsigned kLongMs = 60'000;

class WakeListTest : public ::testing::Test {
protected:
    static bool IsRaised(CWakeList::Entry& entry) {
        CQBTime watch;
        watch.TimeStart();
        entry.Wait(kShortMs);
        return watch.TimeEnd_us() < kShortMs * kMicrosecondsPerMillisecond;
    }
    static void ExpectRaised(CWakeList::Entry& entry) {
        CQBTime watch;
        watch.TimeStart();
        entry.Wait(kLongMs);
        EXPECT_LT(watch.TimeEnd(), kLongMs / 2);
    }

    CWakeList m_list;
    CWakeList::Entry m_first{m_list, 1};
    CWakeList::Entry m_second{m_list, 2};
};

TEST_F(WakeListTest, AnIDWakesItsOwnAndNoOther) {
    m_list.Raise(1);
    EXPECT_FALSE(IsRaised(m_second));
    ExpectRaised(m_first);
}

TEST_F(WakeListTest, EveryEntryOfAnIDIsWoken) {
    CWakeList::Entry another(m_list, 1);
    m_list.Raise(1);
    ExpectRaised(m_first);
    ExpectRaised(another);
}

TEST_F(WakeListTest, AllAreWoken) {
    m_list.RaiseAll();
    ExpectRaised(m_first);
    ExpectRaised(m_second);
}

TEST_F(WakeListTest, EntryThatIsGoneLeavesTheOthersInTheList) {
    std::optional<CWakeList::Entry> leaving;
    leaving.emplace(m_list, 1);
    leaving.reset();
    m_list.Raise(1);
    ExpectRaised(m_first);
}

TEST_F(WakeListTest, UnknownIDWakesNobody) {
    m_list.Raise(3);
    EXPECT_FALSE(IsRaised(m_first));
    EXPECT_FALSE(IsRaised(m_second));
}

} // namespace
} // namespace k740::test
