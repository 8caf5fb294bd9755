// What the requests to paging stations share: whose a record is, and how a station's answer is awaited.
#pragma once

#include "common/answer_wait.h"
#include "rpk/rpk_records.h"

#include <cstdint>

inline constexpr AnswerTiming kStationTiming{20, 3999};

/// @return whether a record is the device's
inline auto OfDevice(int id) {
    return [id](const auto& record) { return record.deviceID == static_cast<uint32_t>(id); };
}

/// Takes the station's newest answer out of the table as soon as it is there. An answer names neither its request nor
/// what it was about, so the device alone decides.
/// @return 0 done; kStationSilent; kStationRefused
template <typename Answers> int AwaitStation(CLifetime& lifetime, Answers& answers, int id) {
    const auto answer = WaitForAnswer(lifetime, answers, kStationTiming, OfDevice(id));
    if (!answer) { return kStationSilent; }
    return answer->result == kStationSuccess ? 0 : kStationRefused;
}
