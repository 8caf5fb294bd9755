// Where k740-sim tells what happens: a file or standard output, one JSON object per line.
#pragma once

#include "sim/file_descriptor.h"
#include "sim/journal.h"
#include "sim/periodic_filter.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace k740::sim {

/// @param file  "-" for standard output
/// @return      a descriptor that no other program inherits; for a named pipe once it has a reader
/// @throws UsageError when it cannot be written
FileDescriptor OpenEvents(const std::string& file);

/// One thread only. SIGPIPE must be ignored.
class EventWriter {
public:
    /// @param start  from which times count
    EventWriter(FileDescriptor file, PeriodicLines lines, Clock::time_point start);

    void Write(const nlohmann::ordered_json& line);
    /// Writes what passes the filter, and how many events the journal had no room for.
    void Write(const Journal::Batch& batch);
    /// Lines are written by now: scripts wait for them. A reader may be as slow as it likes until the run is over; then
    /// it may pause for 2 s.
    /// @param isOver  looked at ten times a second while nobody reads
    /// @throws std::runtime_error when they cannot be written
    void Flush(const std::function<bool()>& isOver);

    /// Events that were held back because they only repeat.
    [[nodiscard]] std::size_t Held() const { return m_filter.Held(); }

private:
    [[nodiscard]] bool IsWritable() const;
    void WriteSome();

    const FileDescriptor m_file;
    const Clock::time_point m_start;
    PeriodicFilter m_filter;
    std::string m_text;        // lines that are not all written yet
    std::size_t m_written = 0; // bytes of it
};

} // namespace k740::sim
