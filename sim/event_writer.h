// Where k740-sim tells what happens: a file or standard output, one JSON object per line.
#pragma once

#include "sim/journal.h"
#include "sim/periodic_filter.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

namespace k740::sim {

/// One thread only.
class EventWriter {
public:
    /// @param file   "-" for standard output
    /// @param start  from which times count
    /// @throws std::runtime_error when the file cannot be written
    EventWriter(const std::string& file, PeriodicLines lines, Clock::time_point start);

    void Write(const nlohmann::ordered_json& line);
    /// Writes what passes the filter, and how many events the journal had no room for.
    void Write(const Journal::Batch& batch);
    /// Lines are written by now: scripts wait for them.
    void Flush();

    /// Events that were held back because they only repeat.
    [[nodiscard]] std::size_t Held() const { return m_filter.Held(); }

private:
    std::ostream& Out();

    const Clock::time_point m_start;
    PeriodicFilter m_filter;
    std::ofstream m_file;
};

} // namespace k740::sim
