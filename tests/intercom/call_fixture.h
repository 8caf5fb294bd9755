// The library with two intercoms, and two simulated paging stations to call and be called by.
#pragma once

#include "app/application.h"
#include "sim/paging_station.h"
#include "sim/records.h"
#include "tests/intercom/intercom_host.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr std::chrono::milliseconds kSoon{10'000}; // far beyond what is expected
inline constexpr int kStation = 5000;
inline constexpr int kOtherStation = 5001;
inline constexpr int kIntercom = 5500;
inline constexpr int kOtherIntercom = 5501;
inline constexpr const char* kStationIP = "192.168.8.99";
inline constexpr const char* kOtherStationIP = "192.168.8.98";

/// What the host sees of a call.
struct CallState {
    int status; // 1 ringing, 2 talking, 3 idle
    int peer;

    bool operator==(const CallState&) const = default;
};
inline void PrintTo(const CallState& state, std::ostream* out) {
    *out << "{" << state.status << ", " << state.peer << "}";
}

inline CallState Ringing(int peer = kStation) {
    return {1, peer};
}
inline CallState Talking(int peer = kStation) {
    return {2, peer};
}
inline CallState Idle(int peer = kStation) {
    return {3, peer};
}

inline CallState StateOf(int intercomID = kIntercom) {
    CallState state{-7, -7};
    EXPECT_EQ(0, K740_GetIntercomStatus(intercomID, &state.status, &state.peer));
    return state;
}

/// All 532 bytes of a packet of an intercom to a paging station.
inline sim::Bytes PacketBytes(int intercomID, int stationID, std::uint16_t command, const sim::Bytes& payload) {
    sim::ByteWriter writer;
    writer.Put<std::uint16_t>(0x4A79).Put<std::uint8_t>(3).Fill(3, 0); // magic, version, reserved
    writer.Put(static_cast<std::uint32_t>(intercomID)).Put(static_cast<std::uint32_t>(stationID));
    writer.Put(command).Put(static_cast<std::uint16_t>(payload.size())).PutAll(payload);
    sim::Bytes bytes = writer.Get();
    bytes.resize(532, 0);
    return bytes;
}
inline sim::Bytes AnswerBytes(std::uint8_t code, int intercomID = kIntercom, int stationID = kStation) {
    return PacketBytes(intercomID, stationID, 0x8701, {code, 0, 0, 0, 0, 0, 0, 0, 0});
}

class CallFixture : public OnPrivateNetwork {
protected:
    CallFixture() {
        EXPECT_EQ(0, K740_SetIntercomCallback(IntercomHost::OnMessage, IntercomHost::OnAudio));
        EXPECT_EQ(0, K740_AddDevice(kStation, 2, kStationIP));
        EXPECT_EQ(0, K740_AddDevice(kOtherStation, 2, kOtherStationIP));
        EXPECT_EQ(0, K740_AddDevice(kIntercom, 10, ""));
        EXPECT_EQ(0, K740_AddDevice(kOtherIntercom, 10, ""));
    }
    ~CallFixture() override { K740_SetIntercomCallback(nullptr, nullptr); }

    /// What came to a station, in the order of arrival.
    [[nodiscard]] std::vector<sim::Event> ReceivedBy(int stationID, std::uint16_t command) const {
        return Field().Events().Events(sim::Received(static_cast<std::uint32_t>(stationID), command));
    }
    /// The call answers that came to a station, by their codes.
    [[nodiscard]] std::vector<int> CodesAt(int stationID = kStation) const {
        std::vector<int> codes;
        for (const sim::Event& event : ReceivedBy(stationID, 0x8701)) { codes.push_back(event.packet->payload[0]); }
        return codes;
    }
    bool WaitForAnswers(std::size_t count, int stationID = kStation) const {
        const auto filter = sim::Received(static_cast<std::uint32_t>(stationID), 0x8701);
        return Field().Events().WaitFor(filter, kSoon, count).has_value();
    }
    /// Blocks until the library has handled all that the stations have sent so far, and they what it sent then.
    void PassMarker() {
        const auto filter = sim::Received(kOtherStation, 0x8700);
        const std::size_t before = Field().Events().Count(filter);
        m_otherStation.Handshake(kOtherIntercom);
        EXPECT_TRUE(Field().Events().WaitFor(filter, kSoon, before + 1));
        EXPECT_TRUE(Field().WaitUntil([] { return true; }, kSoon)); // the sockets of this round have been read
    }

    void RingFromStation() {
        m_station.Invite(kIntercom);
        EXPECT_TRUE(Host().WaitForMessage({kStation, kIntercom, kInvited}));
    }
    void RingAndAccept() {
        RingFromStation();
        EXPECT_EQ(0, K740_Accept(kIntercom, kStation));
        EXPECT_TRUE(WaitForAnswers(2));
    }
    /// @return the messages that the host has been told
    static std::vector<MessageCall> Messages() { return Host().messages.All(); }
    static IntercomHost& Host() { return IntercomHost::Get(); }

    sim::PagingStation& m_station = AddPagingStation(kStation, kStationIP);
    sim::PagingStation& m_otherStation = AddPagingStation(kOtherStation, kOtherStationIP);
};

} // namespace k740::test
