// The library at work, and a sender of any bytes in the field.
#pragma once

#include "app/application.h"
#include "sim/raw_sender.h"
#include "sim/records.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace k740::test {

inline constexpr int kDevice = 33;
inline constexpr int kOtherDevice = 34;
inline constexpr int kStation = 5001;

/// The library is initialised and knows two zone controllers and a paging station, none of which is simulated.
class HubFixture : public OnPrivateNetwork {
protected:
    HubFixture() {
        Network().AddFieldAddresses({kSenderIP});
        EXPECT_EQ(0, K740_AddDevice(kDevice, 1, "192.168.1.33"));
        EXPECT_EQ(0, K740_AddDevice(kOtherDevice, 1, "192.168.1.34"));
        EXPECT_EQ(0, K740_AddDevice(kStation, 2, "192.168.1.51"));
    }

    /// A status report whose device status is `status`.
    static sim::Packet Report(std::uint32_t device, std::uint8_t status) {
        sim::StatusReport report;
        report.deviceStatus = status;
        return sim::MakePacket(device, 9500, 0x8126, sim::Payload(report));
    }

    void Send(sim::ByteView bytes, std::uint16_t port = sim::kReplyPort) const {
        sim::RawSender(Network(), kSenderIP).Send(bytes, port);
    }
    void Send(const sim::Packet& packet, std::uint16_t port = sim::kReplyPort) const { Send(sim::Pack(packet), port); }

    /// @return the device status last reported for the device; -1 when it has none
    static int StatusOf(int device) {
        tagZCU_QUERYSTATUS2 record;
        return g_app->ZCU().GetZCUStatus(device, record) == 0 ? record.status.deviceStatus : -1;
    }
    static bool WaitForStatus(int device, int status) {
        return WaitUntil([=] { return StatusOf(device) == status; });
    }
    /// Sends a report of the other device and waits until it has arrived, and so all that was sent before it.
    bool PassMarker(std::uint8_t status, std::uint16_t port = sim::kReplyPort) const {
        Send(Report(kOtherDevice, status), port);
        return WaitForStatus(kOtherDevice, status);
    }

    static constexpr const char* kSenderIP = "192.168.9.9"; // of no registered device
};

} // namespace k740::test
