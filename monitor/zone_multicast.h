// The multicast group of a zone, as a zone controller's answer tells it.
#pragma once

#include "zcu/query_records.h"

#include <cstdint>

/// Reads the group of a zone out of a controller's answer. Controllers send a table of eight entries; virtual ones send
/// a 1 before it, and are read so when the entry is no group otherwise.
/// @param zone  1..8
/// @return      zeroes when there is no group
_zone_mcast_t ZoneMulticast(const tagQUERY_ZONE_MCAST_IP_RSP& answer, uint32_t zone);
