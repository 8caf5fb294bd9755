// A host whose callbacks note what they are told.
#pragma once

#include "app/k740.h"
#include "tests/support/wait_until.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <vector>

namespace k740::test {

using Eight = std::array<int, 8>;

struct ZCUStatusCall {
    int deviceID;
    int status;
    int fault;
    Eight amplifiers;
    int extraA;
    int extraB;
    std::chrono::steady_clock::time_point time{};

    bool operator==(const ZCUStatusCall& other) const {
        return deviceID == other.deviceID && status == other.status && fault == other.fault &&
               amplifiers == other.amplifiers && extraA == other.extraA && extraB == other.extraB;
    }
};

struct ZoneStatusCall {
    int deviceID;
    Eight states;
    std::array<unsigned, 8> tasks;

    bool operator==(const ZoneStatusCall&) const = default;
};

struct VolumeCall {
    int deviceID;
    std::vector<int> volumes;

    bool operator==(const VolumeCall&) const = default;
};

struct RPKStatusCall {
    std::array<int, 6> values; // as the callback got them, the device ID first
    std::chrono::steady_clock::time_point time{};

    bool operator==(const RPKStatusCall& other) const { return values == other.values; }
};

struct TrainMessageCall {
    int sourceID;
    int deviceID;
    int message;
    std::chrono::steady_clock::time_point time{};

    bool operator==(const TrainMessageCall& other) const {
        return sourceID == other.sourceID && deviceID == other.deviceID && message == other.message;
    }
};

struct TrainAudioCall {
    int sourceID;
    int taskID;
    std::vector<unsigned char> audio;

    bool operator==(const TrainAudioCall&) const = default;
};

/// The calls of one callback, in the order in which they came. Any thread.
template <typename Call> class CallList {
public:
    void Note(const Call& call) {
        const std::lock_guard lock(m_lock);
        m_calls.push_back(call);
    }
    [[nodiscard]] std::vector<Call> All() const {
        const std::lock_guard lock(m_lock);
        return m_calls;
    }
    template <typename Match> [[nodiscard]] std::vector<Call> Matching(Match match) const {
        std::vector<Call> calls = All();
        std::erase_if(calls, [&](const Call& call) { return !match(call); });
        return calls;
    }
    /// Blocks until that many calls match. @return whether they came in time
    template <typename Match> bool WaitFor(Match match, std::size_t count = 1) const {
        return WaitUntil([&] { return Matching(match).size() >= count; });
    }

private:
    mutable std::mutex m_lock;
    std::vector<Call> m_calls;
};

/// The library's threads may call until the process ends, so what they note into is never destroyed.
struct RecordingHost {
    CallList<ZCUStatusCall> zcuStatus;
    CallList<ZoneStatusCall> zoneStatus;
    CallList<VolumeCall> volumes;
    CallList<RPKStatusCall> rpkStatus;
    CallList<TrainMessageCall> trainMessages;
    CallList<TrainAudioCall> trainAudio;

    static RecordingHost& Get() {
        static auto* const host = new RecordingHost;
        return *host;
    }

    static int OnZCUStatus(int deviceID, int status, int fault, int* amplifiers, int extraA, int extraB) {
        ZCUStatusCall call{deviceID, status, fault, {}, extraA, extraB, std::chrono::steady_clock::now()};
        std::copy_n(amplifiers, 8, call.amplifiers.begin());
        Get().zcuStatus.Note(call);
        return -1; // of no interest to the library
    }
    static int OnZoneStatus(int deviceID, int* states, unsigned* tasks) {
        ZoneStatusCall call{deviceID, {}, {}};
        std::copy_n(states, 8, call.states.begin());
        std::copy_n(tasks, 8, call.tasks.begin());
        Get().zoneStatus.Note(call);
        return -1;
    }
    /// For controllers of version 2, which have eight volumes.
    static int OnVolumesV2(int deviceID, int* volumes) {
        Get().volumes.Note({deviceID, {volumes, volumes + 8}});
        return -1;
    }
    /// For controllers of version 3, which have ten volumes.
    static int OnVolumesV3(int deviceID, int* volumes) {
        Get().volumes.Note({deviceID, {volumes, volumes + 10}});
        return -1;
    }
    static int OnRPKStatus(int deviceID, int state, int activity, int wordA, int extra, int wordB) {
        Get().rpkStatus.Note({{deviceID, state, activity, wordA, extra, wordB}, std::chrono::steady_clock::now()});
        return -1;
    }
    static int OnTrainMessage(int sourceID, int deviceID, int message) {
        Get().trainMessages.Note({sourceID, deviceID, message, std::chrono::steady_clock::now()});
        return -1;
    }
    static int OnTrainAudio(int sourceID, int taskID, unsigned char* audio, int length) {
        Get().trainAudio.Note({sourceID, taskID, {audio, audio + length}});
        return -1;
    }
};

} // namespace k740::test
