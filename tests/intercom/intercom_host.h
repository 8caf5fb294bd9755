// A host with intercoms: what its callbacks are told, and what it does in them.
#pragma once

#include "app/k740.h"
#include "tests/app/recording_host.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace k740::test {

enum Message : int { kInvited = 1, kHungUpByStation = 2, kAccepted = 3 };

struct MessageCall {
    int stationID;
    int intercomID;
    int message;

    bool operator==(const MessageCall&) const = default;
};

struct AudioCall {
    int stationID;
    std::vector<std::int16_t> samples;
};

/// The library's threads may call until the process ends, so what they note into is never destroyed.
struct IntercomHost {
    using Reaction = void (*)(const MessageCall&);

    CallList<MessageCall> messages;
    CallList<AudioCall> audio;
    std::atomic<std::size_t> audioBlocks{0};
    std::atomic<std::size_t> audioBytes{0};
    std::atomic<bool> keepAudio{true};
    std::atomic<Reaction> reaction{nullptr}; // runs in the message callback, before the message is noted

    static IntercomHost& Get() {
        static auto* const host = new IntercomHost;
        return *host;
    }

    static int OnMessage(int stationID, int intercomID, int message) {
        const MessageCall call{stationID, intercomID, message};
        if (const Reaction react = Get().reaction) { react(call); }
        Get().messages.Note(call);
        return -1; // of no interest to the library
    }
    static int OnAudio(int stationID, unsigned char* audio, int length) {
        const auto bytes = static_cast<std::size_t>(length);
        if (Get().keepAudio) {
            AudioCall call{stationID, std::vector<std::int16_t>(bytes / 2)};
            std::memcpy(call.samples.data(), audio, bytes);
            Get().audio.Note(call);
        }
        Get().audioBytes += bytes;
        ++Get().audioBlocks;
        return -1;
    }

    bool WaitForMessage(const MessageCall& expected, std::size_t count = 1) const {
        return messages.WaitFor([&](const MessageCall& call) { return call == expected; }, count);
    }
    /// Blocks until that many blocks of audio have come in all.
    bool WaitForAudio(std::size_t count) const {
        return WaitUntil([&] { return audioBlocks >= count; });
    }
};

} // namespace k740::test
