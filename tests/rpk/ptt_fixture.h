// A host that listens to the push-to-talk audio of paging stations.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/address.h"
#include "tests/monitor/heard_audio.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/support/leftovers.h"
#include "tests/support/noise.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr int kStation = 5000;
inline constexpr int kAudioKind = 3;
inline constexpr const char* kGroup = "225.5.0.0";
inline constexpr const char* kOtherGroup = "225.5.1.0";

/// Noise in datagrams of type 341, at the pace at which stations talk.
inline sim::AudioStream NoiseTalk(std::size_t count, std::uint32_t seed = 1) {
    sim::AudioStream talk;
    talk.pcm = Noise(2048 * count, seed);
    talk.count = count;
    return talk;
}

/// The simulated station kStation is registered.
class PTTTest : public OnPrivateNetwork {
protected:
    PTTTest() {
        RegisterCallback(NotePTTAudio);
        EXPECT_TRUE(WaitUntilListening());
    }
    ~PTTTest() override { RegisterCallback(nullptr); }

    static void RegisterCallback(PRPKPTTAUDIO callback) {
        EXPECT_EQ(0, K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, callback));
    }
    /// Makes a simulated station and registers it.
    sim::PagingStation& AddRegistered(int id) {
        const std::string address = sim::AddressText(0xC0A80800 + static_cast<std::uint32_t>(id - 4999)); // 192.168.8.x
        sim::PagingStation& station = AddPagingStation(static_cast<std::uint32_t>(id), address);
        EXPECT_EQ(0, K740_AddDevice(id, 2, address.c_str()));
        return station;
    }
    /// Sets the station's group and waits until it has been joined.
    static void Listen(const std::string& group, int id = kStation) {
        ASSERT_EQ(0, K740_SetRPKPTTMulticastIP(id, group.c_str()));
        ASSERT_TRUE(WaitUntil([&] { return MembersOf(group) == 1; }));
    }
    static void Blank(int id = kStation) { EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(id, "")); }

    /// Talks to a group and waits until the last block has been handed on.
    void TalkAndHear(const std::string& group, const sim::AudioStream& talk) {
        const std::size_t before = PTTAudio().Count(kStation, kAudioKind);
        m_station.Talk({group, sim::kAudioPort}, talk);
        ASSERT_TRUE(PTTAudio().WaitFor(kStation, kAudioKind, before + *talk.count));
    }
    /// @return what is heard of a talk to a reception that has just begun
    std::vector<std::int16_t> HearAnew(const sim::AudioStream& talk) {
        Listen(kGroup);
        const std::size_t before = Heard().size();
        TalkAndHear(kGroup, talk);
        return HeardFrom(before);
    }
    /// Talks to kGroup without end.
    sim::AudioSource& TalkOn() {
        sim::AudioStream talk;
        talk.pcm = Noise(4096);
        talk.period = std::chrono::milliseconds(10);
        return m_station.Talk({kGroup, sim::kAudioPort}, talk);
    }
    static std::vector<std::int16_t> Heard() { return PTTAudio().Samples(kStation, kAudioKind); }
    static std::vector<std::int16_t> HeardFrom(std::size_t begin) {
        const auto heard = Heard();
        return {heard.begin() + static_cast<std::ptrdiff_t>(begin), heard.end()};
    }
    static void ExpectNothingLeft(const Leftovers& before) {
        EXPECT_TRUE(WaitUntil([&] { return Leftovers() == before; })) << before << "\n" << Leftovers();
    }

    sim::PagingStation& m_station = AddRegistered(kStation);
};

} // namespace k740::test
