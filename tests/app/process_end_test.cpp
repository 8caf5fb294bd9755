// The host process may end at any moment, whatever the library's threads are doing.
#include "app/application.h"
#include "app/k740.h"
#include "sim/raw_sender.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

namespace k740::test {
namespace {

constexpr int kDevices = 20;
constexpr const char* kReached = "the end was reached"; // proves that it was not another one

/// Traffic that keeps the library's threads busy until the process is gone.
void FloodForEver(const sim::PrivateNetwork& network) {
    std::thread([sender = std::make_shared<sim::RawSender>(network, "192.168.1.20")] {
        for (std::uint32_t i = 0;; ++i) {
            sim::Bytes payload(85, static_cast<std::uint8_t>(i));
            sender->Send(sim::Pack(sim::MakePacket(1 + i % kDevices, 9500, 0x8126, payload)), 29001);
        }
    }).detach();
}

int Ignore(int, int, int, int*, int, int) {
    return 0;
}

void UseLibrary() {
    K740_SetDeviceCallback(Ignore, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    K740_EnableCallbackLog(1);
    for (int id = 1; id <= kDevices; ++id) { K740_AddDevice(id, 1, ("192.168.2." + std::to_string(id)).c_str()); }
    K740_StartAudioStreamTask(1, 100, 100, 0, "FFFFFF", 0);
}

/// Each moment is a process of its own, which lays out a network of its own.
class ProcessEndTest : public OnPrivateNetwork, public ::testing::WithParamInterface<int> {
protected:
    ProcessEndTest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        Network().AddFieldAddresses({"192.168.1.20"});
    }
    [[noreturn]] void End(bool deinitialise) const {
        UseLibrary();
        FloodForEver(Network());
        std::this_thread::sleep_for(std::chrono::milliseconds(GetParam())); // not a wait: the moment of the end
        if (deinitialise) { K740_Deinitialize(); }
        std::cerr << kReached << std::flush;
        std::exit(0);
    }
};

TEST_P(ProcessEndTest, ExitsWithZeroWithoutDeinitialising) {
    EXPECT_EXIT(End(false), ::testing::ExitedWithCode(0), kReached);
}

TEST_P(ProcessEndTest, ExitsWithZeroAfterDeinitialising) {
    EXPECT_EXIT(End(true), ::testing::ExitedWithCode(0), kReached);
}

INSTANTIATE_TEST_SUITE_P(AfterMilliseconds, ProcessEndTest, ::testing::Range(0, 150, 3),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace k740::test
