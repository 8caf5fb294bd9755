// What a reaction waits for.
#pragma once

#include "sim/journal.h"

#include <cstdint>
#include <optional>
#include <string>

namespace k740::sim {

/// @param on      play, close, call, ring, accept or hang-up (received), the name of a received packet, or the name of
///                an event about audio
/// @param device  to which it happens; any without
/// @throws std::invalid_argument when there is nothing of that name
EventFilter MakeTrigger(const std::string& on, std::optional<std::uint32_t> device);

/// The name that an event has in JSON lines and in reactions.
std::string EventName(Event::Kind kind);

} // namespace k740::sim
