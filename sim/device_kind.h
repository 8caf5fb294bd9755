// The kinds of simulated devices and which devices there are.
#pragma once

#include "sim/wire.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace k740::sim {

enum class DeviceKind { ZoneController, PagingStation, AuxInterface, Client };

/// What tells a kind from the others.
struct KindTraits {
    const char* name;
    std::uint32_t firstId;
    std::uint32_t lastId;
};
const KindTraits& TraitsOf(DeviceKind kind);

/// The devices of an installation by ID: no ID and no address twice.
class Roster {
public:
    /// @throws std::invalid_argument with one sentence when the ID is not one of the kind or in use, or the address is
    /// none or in use
    void Add(DeviceKind kind, std::uint32_t id, const std::string& address);

    [[nodiscard]] std::optional<DeviceKind> KindOf(std::uint32_t id) const;

private:
    std::map<std::uint32_t, DeviceKind> m_kinds;
    std::set<std::uint32_t> m_addresses;
};

/// @return the address
/// @throws std::invalid_argument when no host can have it, as 0.0.0.0 or a group
const std::string& CheckedHostAddress(const std::string& address);

/// @return the group
/// @throws std::invalid_argument when it is no multicast address (224.0.0.0 to 239.255.255.255)
const std::string& CheckedGroup(const std::string& group);

} // namespace k740::sim
