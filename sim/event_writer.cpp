#include "sim/event_writer.h"

#include "sim/event_json.h"

#include <iostream>
#include <stdexcept>

namespace k740::sim {

EventWriter::EventWriter(const std::string& file, PeriodicLines lines, Clock::time_point start)
    : m_start(start), m_filter(lines) {
    if (file == "-") { return; }
    m_file.open(file);
    if (!m_file) { throw std::runtime_error("cannot write " + file); }
}

std::ostream& EventWriter::Out() {
    return m_file.is_open() ? m_file : std::cout;
}

void EventWriter::Write(const nlohmann::ordered_json& line) {
    // Names that came from a device may be no text at all.
    Out() << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void EventWriter::Write(const Journal::Batch& batch) {
    for (const Event& event : batch.events) {
        if (m_filter.Passes(event)) { Write(ToJson(event, m_start)); }
    }
    if (batch.dropped > 0) { Write({{"event", "dropped"}, {"count", batch.dropped}}); }
}

void EventWriter::Flush() {
    Out().flush();
}

} // namespace k740::sim
