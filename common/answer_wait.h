// Waiting for the answer to a request that was sent once.
#pragma once

#include "common/lifetime.h"
#include "common/stopwatch.h"

#include <time.h>

#include <optional>

/// Answers of this age or older are dropped before a new request, in seconds.
inline constexpr double kStaleAnswerSeconds = 120;

/// How an answer is awaited, both in milliseconds: it is looked for after every pause of pollMs, and given up at the
/// first look that finds more than timeoutMs on the stopwatch.
struct AnswerTiming {
    unsigned pollMs;
    unsigned timeoutMs;
};

inline bool IsStaleAnswer(time_t receivedAt, time_t now) {
    return difftime(now, receivedAt) >= kStaleAnswerSeconds;
}

/// Drops what nobody claimed, so that an answer to a request long given up cannot meet a new one.
/// @param answers  table of records with a member receivedAt (time(2))
template <typename Answers> void PurgeStaleAnswers(Answers& answers, time_t now) {
    answers.EraseIf([now](const auto& answer) { return IsStaleAnswer(answer.receivedAt, now); });
}

/// Takes the newest answer that matches out of the table as soon as it is there. Blocks the caller; the table's lock
/// is held only for each look.
/// @return the answer, or nothing when the time has run out
template <typename Answers, typename Match>
std::optional<typename Answers::value_type> WaitForAnswer(CLifetime& lifetime, Answers& answers, AnswerTiming timing,
                                                          Match match) {
    CQBTime waited;
    waited.TimeStart();
    while (true) {
        lifetime.Pause(timing.pollMs);
        if (auto answer = answers.TakeNewest(match)) { return answer; }
        if (waited.TimeEnd() > timing.timeoutMs) { return std::nullopt; }
    }
}
