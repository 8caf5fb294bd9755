#include "sim/timeline.h"

namespace k740::sim {

void Timeline::Begin(Clock::time_point start) {
    m_stage.installation.OnReactor().Run([&] {
        for (const TimelineEntry& entry : m_entries) { Schedule(entry, start, entry.at); }
    });
}

void Timeline::Schedule(const TimelineEntry& entry, Clock::time_point start, Seconds time) {
    if (entry.until && time > *entry.until) { return; }
    m_stage.installation.OnReactor().At(start + std::chrono::duration_cast<Clock::duration>(time), [=, this, &entry] {
        Execute(entry.command, "timeline", m_stage);
        if (entry.every) { Schedule(entry, start, time + *entry.every); }
    });
}

} // namespace k740::sim
