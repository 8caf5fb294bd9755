// Switching a zone controller into and out of the emergency (voice-alarm) mode.
#include "tests/zcu/controller_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using EmergencyTest = ControllerTest;

TEST_F(EmergencyTest, EnteringCarriesTheNodeIDAndThePriorityTakenFrom256) {
    EXPECT_EQ(0, K740_EnterVAMode(kV3, 70));
    EXPECT_EQ(RequestBytes(kV3, 0x0123, {0x1C, 0x25, 0, 0, 186, 0}), WaitForRequest(kV3, 0x0123)->bytes);
    EXPECT_EQ(186, m_v3.EmergencyPriority());
}

TEST_F(EmergencyTest, ExitingCarriesTheSame) {
    EXPECT_EQ(0, K740_EnterVAMode(kV2, 255));
    EXPECT_EQ(0, K740_ExitVAMode(kV2, 255));
    EXPECT_EQ(RequestBytes(kV2, 0x0124, {0x1C, 0x25, 0, 0, 1, 0}), WaitForRequest(kV2, 0x0124)->bytes);
    EXPECT_FALSE(m_v2.EmergencyPriority());
}

TEST_F(EmergencyTest, ThePriorityIs1To255) {
    for (const int priority : {-1, 0, 256, 257, 65'537}) {
        EXPECT_EQ(-1, K740_EnterVAMode(kV3, priority)) << priority;
        EXPECT_EQ(-1, K740_ExitVAMode(kV3, priority)) << priority;
    }
    EXPECT_EQ(0, K740_EnterVAMode(kV3, 1));
    EXPECT_EQ(0, K740_EnterVAMode(kV3, 255));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0123), ElementsAre(RequestBytes(kV3, 0x0123, {0x1C, 0x25, 0, 0, 0xFF, 0}),
                                                           RequestBytes(kV3, 0x0123, {0x1C, 0x25, 0, 0, 1, 0})));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0124), IsEmpty());
}

TEST_F(EmergencyTest, OnlyRegisteredControllersAreTold) {
    ASSERT_EQ(0, K740_AddDevice(1000, 4, "192.168.1.51"));
    for (const int id : {-1, 0, 999, 1000, 5000}) {
        EXPECT_EQ(-1, K740_EnterVAMode(id, 100)) << id;
        EXPECT_EQ(-1, K740_ExitVAMode(id, 100)) << id;
    }
    ASSERT_EQ(0, K740_AddDevice(999, 1, "192.168.1.99"));
    EXPECT_EQ(0, K740_EnterVAMode(999, 100));
}

TEST_F(EmergencyTest, WhatTheSystemRefusesToSendIsAFailure) {
    ASSERT_EQ(0, K740_AddDevice(50, 1, kUnroutableIP));
    EXPECT_EQ(-1, K740_EnterVAMode(50, 100));
    EXPECT_EQ(-1, K740_ExitVAMode(50, 100));
}

TEST_F(EmergencyTest, ADeviceForWhichThereIsNoSocketIsRegisteredAndCannotBeReached) {
    rlimit before{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &before));
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none)); // what is open stays open
    EXPECT_EQ(0, K740_AddDevice(50, 1, "192.168.1.50"));
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
    EXPECT_EQ(-1, K740_EnterVAMode(50, 100));
    EXPECT_EQ(-3, K740_GetDeviceVersion(50, nullptr, 0));
}

TEST_F(EmergencyTest, TheNodeIDIsTheHosts) {
    ASSERT_EQ(0, K740_SetNodeID(9999));
    EXPECT_EQ(0, K740_EnterVAMode(kV3, 100));
    const auto request = WaitForRequest(kV3, 0x0123)->packet;
    EXPECT_EQ(9999U, request->source);
    EXPECT_EQ(9999U, sim::ReadAt<std::uint32_t>(request->payload, 0));
}

TEST_F(EmergencyTest, NothingIsLogged) {
    EXPECT_EQ(0, K740_EnterVAMode(kV3, 100));
    EXPECT_EQ(-1, K740_ExitVAMode(kV3, 0));
    ASSERT_EQ(0, K740_SetNodeID(9999)); // the log's next line
    EXPECT_TRUE(WaitForExactLine("K740_SetNodeID(9999)"));
    EXPECT_EQ(0, CountLogLines("VAMode"));
}

} // namespace
} // namespace k740::test
