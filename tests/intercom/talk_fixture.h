// Calls in which audio flows.
#pragma once

#include "sim/audio_datagram.h"
#include "sim/audio_encoder.h"
#include "tests/intercom/call_fixture.h"
#include "tests/support/noise.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr std::size_t kPriming = 12;             // datagrams at the beginning of a call
inline constexpr std::size_t kFrameSamplesHeard = 2048; // of one datagram

inline int PushBytes(int intercomID, sim::Bytes bytes) {
    return K740_SendIntercomAudio(intercomID, bytes.data(), static_cast<int>(bytes.size()));
}
inline int PushSamples(int intercomID, const std::vector<std::int16_t>& samples) {
    return PushBytes(intercomID, sim::ByteWriter().PutAll(samples).Get());
}

class TalkFixture : public CallFixture {
protected:
    /// The station calls the intercom, which accepts.
    void Talk(sim::PagingStation& station, int intercomID) {
        const int stationID = static_cast<int>(station.Id());
        const std::size_t before = CountInvitations(stationID, intercomID);
        station.Invite(static_cast<std::uint32_t>(intercomID));
        ASSERT_TRUE(Host().WaitForMessage({stationID, intercomID, kInvited}, before + 1));
        ASSERT_EQ(0, K740_Accept(intercomID, stationID));
    }
    /// Fills the intercom's buffer, so that nothing more fits in until it is discarded at the beginning of the audio.
    static void FillBuffer(int intercomID) {
        ASSERT_EQ(0, PushBytes(intercomID, sim::Bytes(1'048'575, 0x55)));
        ASSERT_EQ(0, PushBytes(intercomID, {0x55}));
        ASSERT_EQ(-3, PushBytes(intercomID, {0x55}));
    }
    /// Pushes as soon as the full buffer has been discarded.
    static bool PushAfterDiscard(int intercomID, const std::vector<std::int16_t>& samples) {
        return WaitUntil([&] { return PushSamples(intercomID, samples) == 0; });
    }
    /// The datagrams that an intercom makes of samples, in whole frames.
    static std::vector<sim::Bytes> Datagrams(const std::vector<std::int16_t>& samples, int intercomID = kIntercom,
                                             int stationID = kStation) {
        sim::AudioEncoder encoder(static_cast<std::uint32_t>(intercomID), static_cast<std::uint32_t>(stationID), 341);
        std::vector<sim::Bytes> datagrams;
        for (std::size_t at = 0; at + kFrameSamplesHeard <= samples.size(); at += kFrameSamplesHeard) {
            datagrams.push_back(sim::Pack(encoder.Encode(sim::SampleView(samples).subspan(at, kFrameSamplesHeard))));
        }
        return datagrams;
    }
    /// The bytes of what a station has heard, without the first `from`.
    static std::vector<sim::Bytes> HeardFrom(const sim::PagingStation& station, std::size_t from) {
        std::vector<sim::Bytes> heard;
        for (const sim::Datagram& datagram : station.IntercomAudio().kept) { heard.push_back(datagram.bytes); }
        heard.erase(heard.begin(), heard.begin() + static_cast<std::ptrdiff_t>(std::min(from, heard.size())));
        return heard;
    }
    static std::string EndLine(int intercomID = kIntercom) {
        return "Intercom " + std::to_string(intercomID) + " stop send audio.";
    }

private:
    static std::size_t CountInvitations(int stationID, int intercomID) {
        const MessageCall invitation{stationID, intercomID, kInvited};
        return Host().messages.Matching([&](const MessageCall& call) { return call == invitation; }).size();
    }
};

} // namespace k740::test
