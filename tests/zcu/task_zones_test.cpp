// The table of what virtual zone controllers play.
#include "app/application.h"
#include "zcu/task_zones.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kSource = 9500;

_vxa_play_task_req_t_V2 Request(std::uint32_t task) {
    _vxa_play_task_req_t_V2 request{};
    request.taskID = task;
    request.zoneMask = 0xFF;
    request.multicastIP = 0xE1000000 + task;
    request.multicastPort = 28100 + task;
    return request;
}

class TaskZonesTest : public ::testing::Test {
protected:
    void New(int source, int controller, std::uint32_t task) { m_zcu.NewTaskZones(source, controller, Request(task)); }
    std::vector<int> Of(int source, int task) const { return m_zcu.GetTaskZCU(source, task); }

    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
    CZCU& m_zcu = m_app->ZCU();
};

TEST_F(TaskZonesTest, ATaskIsKnownByItsSourceAndItsID) {
    New(kSource, 1, 7);
    New(kSource, 2, 7);
    New(kSource + 1, 3, 7);
    New(kSource, 4, 8);
    EXPECT_THAT(Of(kSource, 7), ElementsAre(1, 2));
    EXPECT_THAT(Of(kSource + 1, 7), ElementsAre(3));
    EXPECT_THAT(Of(kSource, 8), ElementsAre(4));
    EXPECT_THAT(Of(kSource, 9), IsEmpty());
}

TEST_F(TaskZonesTest, Mode1TakesOneControllerOutOfOneTask) {
    New(kSource, 1, 7);
    New(kSource, 2, 7);
    New(kSource, 1, 8);
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(kSource, 9, 1, RemoveZones::OfTask));
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(kSource + 1, 7, 1, RemoveZones::OfTask));
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(kSource, 7, 3, RemoveZones::OfTask));
    EXPECT_EQ(1, m_zcu.RemoveTaskZones(kSource, 7, 1, RemoveZones::OfTask));
    EXPECT_THAT(Of(kSource, 7), ElementsAre(2));
    EXPECT_THAT(Of(kSource, 8), ElementsAre(1));
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(kSource, 7, 1, RemoveZones::OfTask));
}

TEST_F(TaskZonesTest, Mode2TakesAWholeTask) {
    New(kSource, 1, 7);
    New(kSource, 2, 7);
    New(kSource + 1, 1, 7);
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(kSource, 8, 1, RemoveZones::WholeTask));
    EXPECT_EQ(1, m_zcu.RemoveTaskZones(kSource, 7, 99, RemoveZones::WholeTask));
    EXPECT_THAT(Of(kSource, 7), IsEmpty());
    EXPECT_THAT(Of(kSource + 1, 7), ElementsAre(1));
}

TEST_F(TaskZonesTest, Mode3TakesAControllerOutOfEveryTask) {
    New(kSource, 1, 7);
    New(kSource, 1, 7); // twice in one
    New(kSource, 2, 7);
    New(kSource + 1, 1, 8);
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(kSource, 7, 3, RemoveZones::OfEveryTask));
    EXPECT_EQ(1, m_zcu.RemoveTaskZones(1, -1, 1, RemoveZones::OfEveryTask));
    EXPECT_THAT(Of(kSource, 7), ElementsAre(2));
    EXPECT_THAT(Of(kSource + 1, 8), IsEmpty());
    EXPECT_EQ(0, m_zcu.RemoveTaskZones(1, -1, 1, RemoveZones::OfEveryTask));
}

TEST_F(TaskZonesTest, WhatAControllerPlaysIsReadInSixteenBits) {
    New(0x12345, 1, 0x54321);
    std::uint16_t source = 0;
    std::uint16_t task = 0;
    std::uint32_t group = 0;
    std::uint32_t port = 0;
    EXPECT_EQ(0, m_zcu.GetZoneTask(1, source, task, group, port));
    EXPECT_EQ(0x2345, source);
    EXPECT_EQ(0x4321, task);
    EXPECT_EQ(0xE1054321U, group);
    EXPECT_EQ(28100U + 0x54321, port);
}

TEST_F(TaskZonesTest, TheFirstTaskOfAControllerIsTheOneThatItPlays) {
    New(kSource, 1, 7);
    New(kSource, 1, 8);
    std::uint16_t source = 0;
    std::uint16_t task = 0;
    std::uint32_t group = 0;
    std::uint32_t port = 0;
    EXPECT_EQ(0, m_zcu.GetZoneTask(1, source, task, group, port));
    EXPECT_EQ(7, task);
}

TEST_F(TaskZonesTest, AControllerThatPlaysNothingIsMinus1) {
    New(kSource, 1, 7);
    std::uint16_t word = 0;
    std::uint32_t value = 0;
    EXPECT_EQ(-1, m_zcu.GetZoneTask(2, word, word, value, value));
    m_zcu.RemoveTaskZones(kSource, 7, 1, RemoveZones::OfTask);
    EXPECT_EQ(-1, m_zcu.GetZoneTask(1, word, word, value, value));
}

TEST_F(TaskZonesTest, Holds10240TasksAndDropsTheOldestForTheNext) {
    for (std::uint32_t task = 1; task <= 10'240; ++task) { New(kSource, 1, task); }
    EXPECT_THAT(Of(kSource, 1), ElementsAre(1));
    New(kSource, 2, 10'240); // known
    EXPECT_THAT(Of(kSource, 1), ElementsAre(1));
    New(kSource, 1, 10'241);
    EXPECT_THAT(Of(kSource, 1), IsEmpty());
    EXPECT_THAT(Of(kSource, 2), ElementsAre(1));
    EXPECT_THAT(Of(kSource, 10'241), ElementsAre(1));
}

} // namespace
} // namespace k740::test
