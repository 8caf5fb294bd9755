#include "sim/reactor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

namespace k740::sim {
namespace {

using namespace std::chrono_literals;

TEST(ReactorTest, RunWorksOnTheReactorsThreadAndWaits) {
    Reactor reactor;
    std::thread::id worker;
    reactor.Run([&] { worker = std::this_thread::get_id(); });
    EXPECT_NE(std::thread::id(), worker);
    EXPECT_NE(std::this_thread::get_id(), worker);
}

TEST(ReactorTest, RunInsideRunWorksAtOnce) {
    Reactor reactor;
    bool inner = false;
    reactor.Run([&] { reactor.Run([&] { inner = true; }); });
    EXPECT_TRUE(inner);
}

TEST(ReactorTest, RunThrowsWhatTheWorkThrows) {
    Reactor reactor;
    EXPECT_THROW(reactor.Run([] { throw std::out_of_range("work"); }), std::out_of_range);
    EXPECT_NO_THROW(reactor.Run([] {}));
}

TEST(ReactorTest, TimersRunInTheOrderOfTheirTimes) {
    Reactor reactor;
    std::string order;
    reactor.Run([&] {
        reactor.After(20ms, [&] { order += 'c'; });
        reactor.After(0ms, [&] { order += 'a'; });
        reactor.After(10ms, [&] { order += 'b'; });
    });
    EXPECT_TRUE(reactor.WaitUntil([&] { return order.size() == 3; }, 5s));
    EXPECT_EQ("abc", order);
}

TEST(ReactorTest, WaitUntilHoldsAtOnceOrGivesUp) {
    Reactor reactor;
    EXPECT_TRUE(reactor.WaitUntil([] { return true; }, 5s));
    EXPECT_FALSE(reactor.WaitUntil([] { return false; }, 10ms));
}

TEST(ReactorTest, NothingRunsAfterStop) {
    Reactor reactor;
    bool ran = false;
    reactor.Run([&] { reactor.After(1ms, [&] { ran = true; }); });
    reactor.Stop();
    const bool ranBefore = ran;
    reactor.Run([] {});
    EXPECT_EQ(ranBefore, ran);
}

TEST(ReactorTest, WhatATimerThrowsIsKeptForWhoAsks) {
    Reactor reactor;
    reactor.CatchFailures();
    EXPECT_NO_THROW(reactor.RethrowFailure());
    bool after = false;
    reactor.Run([&] {
        reactor.After(0ms, [] { throw std::runtime_error("first"); });
        reactor.After(1ms, [] { throw std::runtime_error("second"); });
        reactor.After(2ms, [&] { after = true; });
    });
    ASSERT_TRUE(reactor.WaitUntil([&] { return after; }, 5s));
    try {
        reactor.RethrowFailure();
        FAIL();
    } catch (const std::runtime_error& error) { EXPECT_STREQ("first", error.what()); }
    EXPECT_NO_THROW(reactor.RethrowFailure());
}

} // namespace
} // namespace k740::sim
