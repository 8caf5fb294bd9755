// What the library and simulated devices really send, captured and dissected.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/zone_controller.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/support/noise.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"
#include "tests/wireshark/live_capture.h"
#include "tests/wireshark/tshark.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr const char* kTraffic = "traffic.pcap";

/// Captures from the start of the test on.
class TrafficTest : public OnPrivateNetwork {
protected:
    TrafficTest() {
        K740_GetTaskStatus(1); // initialises the library
        EXPECT_TRUE(WaitUntilListening());
    }

    /// Waits until a device has received a request, or sent an answer.
    void AwaitReceived(std::uint32_t device, std::uint16_t command, std::size_t count = 1) const {
        EXPECT_TRUE(Field().Events().WaitFor(sim::Received(device, command), kPatience, count))
            << std::hex << command << " has not come to " << std::dec << device;
    }
    void AwaitSent(std::uint32_t device, std::uint16_t command, std::size_t count = 1) const {
        EXPECT_TRUE(Field().Events().WaitFor(sim::Sent(device, command), kPatience, count))
            << std::hex << command << " has not been sent by " << std::dec << device;
        EXPECT_TRUE(Field().WaitUntil([] { return true; }, kPatience)); // it was noted before it was sent
    }

    /// Ends the capture. Expects everything of the protocol in it to be well formed.
    /// @return all frames of the protocol
    std::vector<Row> Captured() {
        m_capture.Finish();
        std::vector<Row> rows = Dissect(
            kTraffic, {kFrame, kInfo, kExpert, "k740.command", "k740.answer_to", "k740.audio.type"}, "-2 -Y udp");
        for (const Row& row : rows) { EXPECT_EQ("", row.at(kExpert)) << row.at(kFrame) << ' ' << row.at(kInfo); }
        return rows;
    }

private:
    LiveCapture m_capture{kTraffic};
};

inline std::vector<std::string> Infos(const std::vector<Row>& rows) {
    return Column(rows, kInfo);
}

/// @return the frame that says this first, an empty row when there is none
inline Row FindInfo(const std::vector<Row>& rows, const std::string& info) {
    const auto found = std::ranges::find_if(rows, [&](const Row& row) { return row.at(kInfo) == info; });
    EXPECT_NE(rows.end(), found) << info << "\nis not among\n" << ::testing::PrintToString(Infos(rows));
    return found == rows.end() ? Row{} : *found;
}

/// Expects both frames and the link between them.
inline void ExpectAnswered(const std::vector<Row>& rows, const std::string& request, const std::string& answer) {
    const Row asked = FindInfo(rows, request);
    const Row answered = FindInfo(rows, answer);
    if (asked.empty() || answered.empty()) { return; }
    EXPECT_EQ(asked.at(kFrame), answered.at("k740.answer_to")) << request << " / " << answer;
}

} // namespace k740::test
