// One device of each kind, and commands to them.
#pragma once

#include "sim/command.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace k740::test {

class CommandFixture : public OnPrivateNetwork {
protected:
    static constexpr std::uint32_t kController = 33;
    static constexpr std::uint32_t kPagingStation = 5000;
    static constexpr std::uint32_t kAux = 7000;
    static constexpr std::uint32_t kClient = 9501;
    static constexpr const char* kControllerIp = "192.168.1.33";
    static constexpr const char* kStationIp = "192.168.8.99";
    static constexpr const char* kAuxIp = "192.168.3.1";
    static constexpr const char* kClientIp = "192.168.4.1";

    CommandFixture() {
        using sim::DeviceKind;
        Network().AddFieldAddresses({kControllerIp, kStationIp, kAuxIp, kClientIp});
        controller = &Field().AddZoneController(kController, kControllerIp);
        paging = &Field().AddPagingStation(kPagingStation, kStationIp);
        Field().AddAuxInterface(kAux, kAuxIp);
        Field().AddClient(kClient, kClientIp);
        roster.Add(DeviceKind::ZoneController, kController, kControllerIp);
        roster.Add(DeviceKind::PagingStation, kPagingStation, kStationIp);
        roster.Add(DeviceKind::AuxInterface, kAux, kAuxIp);
        roster.Add(DeviceKind::Client, kClient, kClientIp);
    }

    /// Runs a command. @return its error, empty when it is done
    std::string Do(const std::string& text) {
        try {
            const sim::Command command = sim::ParseCommand(text, context);
            Field().OnReactor().Run([&] { sim::Execute(command, "test", stage); });
        } catch (const std::exception& error) { return error.what(); }
        return LastCommand().error;
    }
    [[nodiscard]] sim::CommandOutcome LastCommand() const {
        const auto isCommand = [](const sim::Event& event) { return event.command.has_value(); };
        return Field().Events().Events(isCommand).back().command.value();
    }
    /// Waits for something that a device does. @return the event
    [[nodiscard]] std::optional<sim::Event> Await(std::uint32_t device, sim::Event::Kind kind) const {
        return Field().Events().WaitFor(sim::Happened(device, kind), kSoon);
    }
    [[nodiscard]] std::optional<sim::Event> AwaitSent(std::uint32_t device, std::uint16_t command) const {
        return Field().Events().WaitFor(sim::Sent(device, command), kSoon);
    }

    sim::Roster roster;
    const sim::CommandContext context{roster, "."};
    sim::Stage stage{Field()};
    Station station;
    sim::ZoneController* controller = nullptr;
    sim::PagingStation* paging = nullptr;
};

} // namespace k740::test
