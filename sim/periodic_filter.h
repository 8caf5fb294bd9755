// Which of the packets that come and go all the time are told.
#pragma once

#include "sim/bytes.h"
#include "sim/journal.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>

namespace k740::sim {

/// Of heartbeats and status reports: all, only those that differ from the one before, or none.
enum class PeriodicLines { All, Changes, None };

class PeriodicFilter {
public:
    explicit PeriodicFilter(PeriodicLines lines) : m_lines(lines) {}

    /// @return whether the event is to be told; events that are not periodic are
    bool Passes(const Event& event);

    /// Events that did not pass.
    [[nodiscard]] std::size_t Held() const { return m_held; }

private:
    using Key = std::tuple<std::uint32_t, Event::Kind, std::uint16_t, std::uint32_t>; // device, kind, code, other side

    bool Differs(const Event& event);

    const PeriodicLines m_lines;
    std::map<Key, Bytes> m_latest; // payloads
    std::size_t m_held = 0;
};

} // namespace k740::sim
