// Commands that run when their time has come.
#pragma once

#include "sim/command.h"
#include "sim/script.h"

#include <vector>

namespace k740::sim {

class Timeline {
public:
    /// @param stage  outlives the installation's reactor, or is left by then
    Timeline(const std::vector<TimelineEntry>& entries, Stage& stage) : m_entries(entries), m_stage(stage) {}

    /// Any thread. Times count from the start; what is past by now runs at once.
    void Begin(Clock::time_point start);

private:
    void Schedule(const TimelineEntry& entry, Clock::time_point start, Seconds time);

    const std::vector<TimelineEntry> m_entries;
    Stage& m_stage;
};

} // namespace k740::sim
