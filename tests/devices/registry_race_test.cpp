// Devices come and go while others send to them.
#include "app/application.h"
#include "app/k740.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/process_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

constexpr int kRounds = 300;

std::string Address(int id) {
    return "192.168.2." + std::to_string(id);
}

/// Runs the work again and again on a thread of its own until it is destroyed.
class Hammer {
public:
    explicit Hammer(std::function<void()> work)
        : m_thread([this, work = std::move(work)] {
              while (!m_stop) { work(); }
          }) {}
    ~Hammer() {
        m_stop = true;
        m_thread.join();
    }
    Hammer(const Hammer&) = delete;
    Hammer& operator=(const Hammer&) = delete;

private:
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class RegistryRaceTest : public OnPrivateNetwork {
protected:
    RegistryRaceTest() { K740_Initialize(); }
};

TEST_F(RegistryRaceTest, RemovingADeviceAmidSendsToItIsSafe) {
    const auto before = CountDescriptors();
    {
        const Hammer all([] { g_app->ZCU().SendHeartBeat(0); });
        const Hammer one([] { g_app->ZCU().SendHeartBeat(1); });
        const Hammer emergency([] { K740_EnterVAMode(1, 255); });
        const Hammer reader([] {
            K740_GetDeviceList(nullptr, 0);
            std::string zones = "FFFFFF";
            g_app->Devices().IsZoneStringValid(zones);
        });
        for (int i = 0; i < kRounds; ++i) {
            EXPECT_EQ(0, K740_AddDevice(1, 1, Address(1).c_str()));
            EXPECT_EQ(0, K740_RemoveDevice(1));
        }
    }
    EXPECT_EQ(before, CountDescriptors());
    EXPECT_EQ(0, K740_GetDeviceList(nullptr, 0));
}

TEST_F(RegistryRaceTest, OfTwoThreadsThatAddOneDeviceOneSucceeds) {
    std::atomic<int> added{0};
    for (int i = 0; i < 50; ++i) {
        std::vector<std::thread> hosts;
        for (int host = 0; host < 2; ++host) {
            hosts.emplace_back([&] { added += K740_AddDevice(1, 1, Address(1).c_str()) == 0 ? 1 : 0; });
        }
        std::for_each(hosts.begin(), hosts.end(), [](std::thread& host) { host.join(); });
        EXPECT_EQ(0, K740_RemoveDevice(1));
    }
    EXPECT_EQ(50, added);
}

TEST_F(RegistryRaceTest, ThreadsThatAddAndRemoveDevicesOfTheirOwnAllSucceed) {
    std::vector<std::thread> hosts;
    std::atomic<int> failures{0};
    for (int id = 1; id <= 4; ++id) {
        hosts.emplace_back([id, &failures] {
            for (int i = 0; i < kRounds / 4; ++i) {
                failures -= K740_AddDevice(id, id % 2, Address(id).c_str());
                failures -= K740_RemoveDevice(id);
            }
        });
    }
    std::for_each(hosts.begin(), hosts.end(), [](std::thread& host) { host.join(); });
    EXPECT_EQ(0, failures);
    EXPECT_EQ(0, K740_GetDeviceList(nullptr, 0));
}

} // namespace
} // namespace k740::test
