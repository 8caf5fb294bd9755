#include "player/channel_table.h"

#include <gtest/gtest.h>

namespace k740::test {
namespace {

constexpr const char* kFirstGroup = "225.0.0.1";

class ChannelTableTest : public ::testing::Test {
protected:
    int New(int taskID, const std::string& firstGroup = kFirstGroup) {
        return m_table.NewChannel(taskID, firstGroup, m_group);
    }

    CChannelTable m_table;
    std::string m_group;
};

TEST_F(ChannelTableTest, TheFirstFreeChannelIsGiven) {
    EXPECT_EQ(0, New(11));
    EXPECT_EQ("225.0.0.1", m_group);
    EXPECT_EQ(1, New(12));
    EXPECT_EQ("225.0.0.2", m_group);
    m_table.ReleaseChannel(0);
    EXPECT_EQ(0, New(13));
    EXPECT_EQ(2, New(14));
}

TEST_F(ChannelTableTest, GroupsCountUpAcrossOctets) {
    for (int i = 0; i < 10; ++i) { New(100 + i, "225.0.0.250"); }
    EXPECT_EQ(10, New(110, "225.0.0.250"));
    EXPECT_EQ("225.0.1.4", m_group);
}

TEST_F(ChannelTableTest, ThereAreTwoHundred) {
    for (int i = 0; i < 199; ++i) { New(1 + i); }
    EXPECT_EQ(199, New(200));
    EXPECT_EQ("225.0.0.200", m_group);
    EXPECT_EQ(65535, New(201));
    m_table.ReleaseChannel(123);
    EXPECT_EQ(123, New(201));
}

TEST_F(ChannelTableTest, TheTableIsBuiltOnce) {
    New(1, "225.0.0.1");
    New(2, "226.0.0.1");
    EXPECT_EQ("225.0.0.2", m_group);
}

TEST_F(ChannelTableTest, AnIDBelowOneGetsNoneAndDoesNotBuildTheTable) {
    EXPECT_EQ(65535, New(0, "225.0.0.1"));
    EXPECT_EQ(65535, New(-1, "225.0.0.1"));
    EXPECT_EQ(0, New(1, "226.0.0.1"));
    EXPECT_EQ("226.0.0.1", m_group);
}

TEST_F(ChannelTableTest, TheOwnerIsFoundUntilItReleases) {
    EXPECT_EQ(-1, m_table.GetChannelID(11));
    New(11);
    New(12);
    EXPECT_EQ(1, m_table.GetChannelID(12));
    m_table.ReleaseChannel(1);
    EXPECT_EQ(-1, m_table.GetChannelID(12));
    EXPECT_EQ(0, m_table.GetChannelID(11));
}

TEST_F(ChannelTableTest, FreeChannelsBelongToNobody) {
    New(11);
    m_table.ReleaseChannel(0);
    EXPECT_EQ(-1, m_table.GetChannelID(0));
    EXPECT_EQ(-1, m_table.GetChannelID(-1));
}

TEST_F(ChannelTableTest, ReleasingWhatDoesNotExistChangesNothing) {
    m_table.ReleaseChannel(0); // before there is a table
    New(11);
    for (const int channel : {-1, -32768, 200, 65535}) { m_table.ReleaseChannel(channel); }
    EXPECT_EQ(0, m_table.GetChannelID(11));
}

} // namespace
} // namespace k740::test
