// Events and recordings as JSON, one object per line.
#pragma once

#include "sim/intercom_line.h"
#include "sim/journal.h"
#include "sim/recording.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>

namespace k740::sim {

/// Fields: time (s since start), device, event, peer; for command packets also command (hexadecimal text), source,
/// destination, length, name and what is known of the payload; for audio task, datagrams and gaps; for commands to the
/// simulator origin, text, and result or error.
nlohmann::ordered_json ToJson(const Event& event, Clock::time_point start);

/// The line that says that the devices are there: event "ready", time 0, and the wall clock as ISO 8601 text.
nlohmann::ordered_json ReadyJson(Clock::time_point start);

/// Fields: event "recording", device, task, zones (mask), group, node, the counts, and the times in s since start.
nlohmann::ordered_json ToJson(const Recording& recording, std::uint32_t device, Clock::time_point start);

/// Fields: event "intercom", device, node, and the counts.
nlohmann::ordered_json ToJson(const IntercomRecording& recording, std::uint32_t device);

/// Fields: event "cable", receiver, datagrams that were sent to it, missed.
/// @param missed  packets that were not counted, whoever their receiver is
nlohmann::ordered_json CableJson(const Endpoint& receiver, std::size_t datagrams, std::size_t missed);

/// Fields: event "streamed", device, group, datagrams.
nlohmann::ordered_json StreamJson(std::uint32_t device, const Endpoint& group, std::size_t datagrams);

} // namespace k740::sim
