#include "common/clock_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <thread>

namespace k740::test {
namespace {

class ClockTextTest : public ::testing::Test {
protected:
    ClockTextTest() { SetZone("UTC"); }
    static void SetZone(const char* zone) { setenv("TZ", zone, 1); }

    /// @return the present as GetNowString(0) writes it
    static std::string Now() {
        timeval now{};
        gettimeofday(&now, nullptr);
        char milliseconds[8];
        std::snprintf(milliseconds, sizeof(milliseconds), ".%03d", static_cast<int>(now.tv_usec / 1000));
        return TimeToString(now.tv_sec) + milliseconds;
    }
};

TEST_F(ClockTextTest, Mode0IsDateTimeAndMilliseconds) {
    EXPECT_THAT(GetNowString(0),
                ::testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}"));
}

TEST_F(ClockTextTest, Mode0IsThePresent) {
    for (int i = 0; i < 1000; ++i) {
        const std::string before = Now();
        const std::string now = GetNowString(0);
        ASSERT_LE(before, now);
        ASSERT_LE(now, Now());
    }
}

TEST_F(ClockTextTest, Mode3IsTheDate) {
    const std::string before = Now().substr(0, 10);
    const std::string date = GetNowString(3);
    EXPECT_TRUE(date == before || date == Now().substr(0, 10)) << date;
}

TEST_F(ClockTextTest, OtherModesAreEmpty) {
    for (const int mode : {-1, 1, 2, 4}) { EXPECT_EQ("", GetNowString(mode)); }
}

TEST_F(ClockTextTest, TimeToStringIsDateAndTime) {
    EXPECT_EQ("1970-01-01 00:00:00", TimeToString(0));
    EXPECT_EQ("2026-11-15 19:39:09", TimeToString(1'794'771'549));
    EXPECT_EQ("1969-12-31 23:59:59", TimeToString(-1));
}

TEST_F(ClockTextTest, TimesAreLocalAlsoWhenTheZoneChanges) {
    SetZone("XYZ-3"); // three hours before UTC
    EXPECT_EQ("1970-01-01 03:00:00", TimeToString(0));
    SetZone("XYZ5");
    EXPECT_EQ("1969-12-31 19:00:00", TimeToString(0));
}

TEST_F(ClockTextTest, TimesAreRightInSeveralThreadsAtOnce) {
    const auto check = [] {
        for (int i = 0; i < 200; ++i) { ASSERT_EQ("1970-01-01 00:00:00", TimeToString(0)); }
    };
    const std::array<std::jthread, 3> threads{std::jthread(check), std::jthread(check), std::jthread(check)};
}

TEST_F(ClockTextTest, TimeWithoutARepresentableYearIsEmpty) {
    EXPECT_EQ("", TimeToString(std::numeric_limits<long>::max()));
    EXPECT_EQ("", TimeToString(std::numeric_limits<long>::min()));
}

} // namespace
} // namespace k740::test
