#include "sim/installation.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kControllers = 500;

std::string AddressOf(std::uint32_t controller) {
    return "192.168." + std::to_string(10 + controller / 250) + '.' + std::to_string(1 + controller % 250);
}

class InstallationTest : public OnPrivateNetwork {
protected:
    void AddControllers() {
        std::vector<std::string> addresses;
        for (std::uint32_t id = 1; id <= kControllers; ++id) { addresses.push_back(AddressOf(id)); }
        Network().AddFieldAddresses(addresses);
        for (std::uint32_t id = 1; id <= kControllers; ++id) {
            m_controllers.push_back(&Field().AddZoneController(id, AddressOf(id)));
        }
    }

    std::vector<const sim::ZoneController*> m_controllers;
};

TEST_F(InstallationTest, AddressThatDoesNotExistIsRefusedByName) {
    try {
        Field().AddZoneController(33, "192.168.1.33");
        FAIL() << "a device sits at an address that does not exist";
    } catch (const std::system_error& error) {
        EXPECT_STREQ("bind 192.168.1.33:28001: Cannot assign requested address", error.what());
    }
}

TEST_F(InstallationTest, IdInUseIsRefused) {
    AddZoneController(33, "192.168.1.33");
    EXPECT_THROW(AddPagingStation(33, "192.168.1.34"), std::invalid_argument);
}

TEST_F(InstallationTest, FiveHundredControllersHearOneBroadcastWhole) {
    AddControllers();
    const Station station;
    for (std::uint32_t id = 1; id <= kControllers; ++id) { station.Play(AddressOf(id), id, 1001, 1); }
    ASSERT_TRUE(Field().Events().WaitFor(sim::Sent(sim::command::kJoinReport), 20s, kControllers));
    sim::AdpcmState sender;
    for (const std::uint8_t code : sim::Bytes{0x12, 0xA5, 0x34}) { station.Multicast(AudioBytes(code, sender)); }
    for (std::uint32_t id = 1; id <= kControllers; ++id) { station.CloseAudio(AddressOf(id), id, 1001); }
    const auto leaves = [](const sim::Event& event) { return event.kind == sim::Event::Kind::LeftGroup; };
    ASSERT_TRUE(Field().Events().WaitFor(leaves, 20s, kControllers));
    for (const sim::ZoneController* controller : m_controllers) {
        EXPECT_EQ(3U, controller->CountDatagrams());
        EXPECT_EQ(0U, controller->Recordings().at(0).gaps);
    }
}

TEST_F(InstallationTest, WaitUntilHoldsAsSoonAsADeviceHasActed) {
    const sim::ZoneController& controller = AddZoneController(33, "192.168.1.33");
    Station().Play("192.168.1.33", 33, 1001, 1);
    EXPECT_TRUE(Field().WaitUntil([&] { return controller.IsListening(1001); }, kSoon));
    EXPECT_FALSE(Field().WaitUntil([&] { return controller.IsListening(1002); }, 20ms));
}

} // namespace
} // namespace k740::test
