// What is refused before anything is sent to the station.
#include "app/application.h"
#include "app/k740.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

constexpr int kStation = 5000;
constexpr int kVirtualStation = 5001;
constexpr int kOtherDevice = 5002;
constexpr const char* kZones = "0001FF";

class RPKTaskChecksTest : public OnPrivateNetwork {
protected:
    RPKTaskChecksTest() {
        AddPagingStation(kStation, "192.168.8.99");
        K740_AddDevice(kStation, 2, "192.168.8.99");
        K740_AddDevice(kVirtualStation, 10, "");
        K740_AddDevice(kOtherDevice, 5, "192.168.8.98");
        K740_AddDevice(1, 1, "192.168.1.20");
    }
    /// Nothing that was refused has reached the station: its greeting and a marker are all it gets.
    ~RPKTaskChecksTest() override {
        g_app->SendToDevice(kStation, MakePacket(1, 1, 0x7777, 0));
        EXPECT_TRUE(Field().Events().WaitFor(sim::Received(kStation, 0x7777), kPatience));
        EXPECT_EQ(0U, Field().Events().Count(sim::Received(kStation, 0x0702)));
    }
    /// @return what the log says to a start that is refused, behind the line of the call
    static std::string ErrorOf(int id, int task, int priority, const char* zones) {
        return ErrorOf([=] { return K740_StartRPKTask(id, task, priority, zones); });
    }
    static std::string ErrorOfStop(int id, int task) {
        return ErrorOf([=] { return K740_StopRPKTask(id, task); });
    }

private:
    template <typename Call> static std::string ErrorOf(Call call) {
        static int marker = 9500;
        EXPECT_EQ(-1, call());
        K740_SetNodeID(++marker);
        EXPECT_TRUE(WaitForLogLine("K740_SetNodeID(" + std::to_string(marker) + ")"));
        const Texts texts = LogTexts();
        return texts.at(texts.size() - 2);
    }
};

TEST_F(RPKTaskChecksTest, IDsBeyond5000To5999AreRefused) {
    for (int id : {4999, 6000, 0, -1, INT_MIN, INT_MAX, 1}) {
        EXPECT_EQ("*****rpk device id is error.", ErrorOf(id, 3, 100, kZones)) << id;
    }
    EXPECT_EQ("*****rpk device id is error.", ErrorOfStop(4999, 3));
    EXPECT_EQ("*****rpk device id is error.", ErrorOfStop(6000, 3));
}

TEST_F(RPKTaskChecksTest, DevicesThatAreNoPagingStationsAreRefused) {
    for (int id : {kVirtualStation, kOtherDevice, 5999}) {
        EXPECT_EQ("*****rpk device type is error.", ErrorOf(id, 3, 100, kZones)) << id;
        EXPECT_EQ("*****rpk device type is error.", ErrorOfStop(id, 3)) << id;
    }
}

TEST_F(RPKTaskChecksTest, TasksOtherThan3And7AreRefused) {
    for (int task : {2, 4, 5, 6, 8, 0, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ("*****rpk task id is error.", ErrorOf(kStation, task, 100, kZones)) << task;
        EXPECT_EQ("*****rpk task id is error.", ErrorOfStop(kStation, task)) << task;
    }
}

TEST_F(RPKTaskChecksTest, ZonesMustBeValidForAStart) {
    const std::string overlong(200'000, '0');
    for (const char* zones : {"", "   ", "0001", "000100", "0002FF", "%s%n%d", "0001FF;;", overlong.c_str()}) {
        EXPECT_EQ("*****zone is error.", ErrorOf(kStation, 3, 100, zones));
    }
    EXPECT_EQ("*****zone is error.", ErrorOf(kStation, 3, 100, nullptr));
}

TEST_F(RPKTaskChecksTest, PrioritiesBeyond56To255AreRefusedForAStart) {
    for (int priority : {55, 256, 0, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ("*****priority is error.", ErrorOf(kStation, 3, priority, kZones)) << priority;
    }
}

TEST_F(RPKTaskChecksTest, ChecksAreMadeInTheirOrder) {
    EXPECT_EQ("*****rpk device id is error.", ErrorOf(1, 5, 0, ""));
    EXPECT_EQ("*****rpk device type is error.", ErrorOf(5999, 5, 0, ""));
    EXPECT_EQ("*****rpk task id is error.", ErrorOf(kStation, 5, 0, ""));
    EXPECT_EQ("*****zone is error.", ErrorOf(kStation, 3, 0, ""));
    EXPECT_EQ("*****priority is error.", ErrorOf(kStation, 3, 0, kZones));
}

TEST_F(RPKTaskChecksTest, ZoneTextsOfMoreThan488CharactersAreRefused) {
    std::string zones; // 93 items of five characters and 4 of six: 489
    for (int i = 0; i < 93; ++i) { zones += "0001FF;"; }
    for (int i = 0; i < 4; ++i) { zones += "1001FF;"; }
    EXPECT_EQ("*****zone is error 2.", ErrorOf(kStation, 3, 100, zones.c_str()));
    std::string items; // 98 of five characters: 490
    for (int i = 0; i < 98; ++i) { items += "0001FF;"; }
    EXPECT_EQ("*****zone is error 2.", ErrorOf(kStation, 3, 100, items.c_str()));
    EXPECT_EQ("*****zone is error 2.", ErrorOf(kStation, 3, 0, items.c_str())) << "before the priority";
}

TEST_F(RPKTaskChecksTest, EveryCallIsLoggedAsItWasMade) {
    K740_StartRPKTask(1, 2, 3, " %s%n%d ");
    K740_StartRPKTask(1, 2, 3, nullptr);
    K740_StopRPKTask(1, 2);
    ASSERT_TRUE(WaitForLogLine("K740_StopRPKTask"));
    Texts texts = LogTexts();
    std::erase_if(texts, [](const std::string& text) { return text.find("RPKTask") == std::string::npos; });
    EXPECT_THAT(texts, ElementsAre("K740_StartRPKTask(1, 2, 3, ' %s%n%d ')", "K740_StartRPKTask(1, 2, 3, '')",
                                   "K740_StopRPKTask(1, 2)"));
}

} // namespace
} // namespace k740::test
