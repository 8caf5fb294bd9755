// What command packets say, as JSON.
#pragma once

#include "sim/journal.h"

#include <nlohmann/json.hpp>

namespace k740::sim {

/// The packet's name and its fields.
/// @param event  with a packet
nlohmann::ordered_json PacketFields(const Event& event);

} // namespace k740::sim
