// The library with one simulated zone controller of each version.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/zone_controller.h"
#include "tests/app/recording_host.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace k740::test {

inline constexpr int kV2 = 34; // device type 0
inline constexpr int kV3 = 33; // device type 1
inline constexpr const char* kV2IP = "192.168.1.34";
inline constexpr const char* kV3IP = "192.168.1.33";
inline constexpr const char* kUnroutableIP = "10.0.0.1"; // the private network has no road to it
inline constexpr std::uint16_t kMarker = 0x7777;         // a command that no device knows

/// @return the 532 bytes of a request of node 9500
inline sim::Bytes RequestBytes(int device, std::uint16_t command, const sim::Bytes& payload = {}) {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(0x4A79).Put<std::uint8_t>(3).Fill(3, 0); // magic, version, reserved
    writer.Put<std::uint32_t>(9500).Put(static_cast<std::uint32_t>(device));
    writer.Put(command).Put(static_cast<std::uint16_t>(payload.size())).PutAll(payload);
    sim::Bytes bytes = writer.Get();
    bytes.resize(532, 0);
    return bytes;
}

// What may be wrong with a device's answers.

inline sim::AnswerFault Silent() {
    sim::AnswerFault fault;
    fault.silent = true;
    return fault;
}
inline sim::AnswerFault Late(std::chrono::milliseconds delay) {
    sim::AnswerFault fault;
    fault.delay = delay;
    return fault;
}
inline sim::AnswerFault Twice() {
    sim::AnswerFault fault;
    fault.twice = true;
    return fault;
}
inline sim::AnswerFault InTheNameOf(int device) {
    sim::AnswerFault fault;
    fault.source = static_cast<std::uint32_t>(device);
    return fault;
}

class ControllerTest : public OnPrivateNetwork {
protected:
    ControllerTest() {
        m_v2.SetGeneration(sim::Generation::V2);
        K740_SetDeviceCallback(nullptr, nullptr, RecordingHost::OnVolumesV2, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(0, K740_AddDevice(kV3, 1, kV3IP));
        EXPECT_EQ(0, K740_AddDevice(kV2, 0, kV2IP));
    }

    /// Waits for that many of a command. @return the last of these
    [[nodiscard]] std::optional<sim::Event> WaitForRequest(int device, std::uint16_t command,
                                                           std::size_t count = 1) const {
        return Field().Events().WaitFor(sim::Received(static_cast<std::uint32_t>(device), command), kPatience, count);
    }
    /// What a device has received of a command, up to a marker that is sent here.
    std::vector<sim::Bytes> RequestsUntilNow(int device, std::uint16_t command) {
        EXPECT_TRUE(g_app->SendToDevice(device, MakePacket(9500, static_cast<std::uint32_t>(device), kMarker)));
        EXPECT_TRUE(WaitForRequest(device, kMarker, ++m_markers[device]));
        std::vector<sim::Bytes> requests;
        for (const auto& event : Field().Events().Events(sim::Received(static_cast<std::uint32_t>(device), command))) {
            requests.push_back(event.bytes);
        }
        return requests;
    }

    sim::ZoneController& m_v2 = AddZoneController(kV2, kV2IP);
    sim::ZoneController& m_v3 = AddZoneController(kV3, kV3IP);

private:
    std::map<int, std::size_t> m_markers; // sent to each device
};

} // namespace k740::test
