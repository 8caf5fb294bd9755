// A host that listens to zones: the library in a private network with a zone controller that circulates audio.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/address.h"
#include "sim/zone_controller.h"
#include "tests/monitor/heard_audio.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/support/leftovers.h"
#include "tests/support/noise.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace k740::test {

inline constexpr int kController = 33;
inline constexpr std::chrono::milliseconds kSoon{20'000}; // far beyond what is expected

inline std::string GroupOfZone(int zone) {
    return sim::AddressText(0xE1010000 + static_cast<std::uint32_t>(zone)); // 225.1.0.zone
}

/// Noise, coded as the type says.
inline sim::AudioStream NoiseStream(std::size_t count, std::uint16_t type = 341, std::uint32_t seed = 1) {
    sim::AudioStream stream;
    stream.pcm = Noise(2048 * count, seed);
    stream.count = count;
    stream.type = type;
    return stream;
}

/// The simulated controller kController is registered, and each of its zones has the group GroupOfZone.
class ZoneMonitorTest : public OnPrivateNetwork {
protected:
    ZoneMonitorTest() {
        for (int zone = 1; zone <= sim::kZones; ++zone) { m_controller.SetZoneGroup(zone, GroupOfZone(zone)); }
        EXPECT_EQ(0, K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, NoteZoneAudio, nullptr, nullptr));
        EXPECT_EQ(0, K740_AddDevice(kController, 1, "192.168.1.33"));
        EXPECT_TRUE(WaitUntilListening());
    }
    ~ZoneMonitorTest() override {
        K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    }

    /// Starts to monitor a zone of kController and waits until its group has been joined.
    static void Monitor(int zone) {
        ASSERT_EQ(0, K740_MonitorZone(kController, zone, 1));
        ASSERT_TRUE(WaitUntil([=] { return MembersOf(GroupOfZone(zone)) == 1; }));
    }
    static void Stop(int zone) { EXPECT_EQ(0, K740_MonitorZone(kController, zone, 0)); }

    /// The controller answers no more queries for its zones' groups.
    void Silence() {
        sim::AnswerFault fault;
        fault.silent = true;
        m_controller.SetAnswerFault(sim::command::kGetZoneGroups, fault);
    }
    /// Streams all of a stream to the zone and waits until its last block has been handed on.
    void StreamAndHear(int zone, const sim::AudioStream& stream) {
        const std::size_t before = ZoneAudio().Count(kController, zone);
        m_controller.StreamZone(zone, stream);
        ASSERT_TRUE(ZoneAudio().WaitFor(kController, zone, before + *stream.count));
    }

    /// Waits for the count-th query for the zones' groups. @return when it came
    sim::Clock::time_point WaitForQuery(std::size_t count) const {
        const auto query =
            Field().Events().WaitFor(sim::Received(kController, sim::command::kGetZoneGroups), kSoon, count);
        EXPECT_TRUE(query) << "no query number " << count;
        return query ? query->time : sim::Clock::time_point{};
    }
    [[nodiscard]] std::size_t CountQueries() const {
        return Field().Events().Count(sim::Received(kController, sim::command::kGetZoneGroups));
    }

    sim::ZoneController& m_controller = AddZoneController(kController, "192.168.1.33");
};

} // namespace k740::test
