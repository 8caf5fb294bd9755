#include "sim/device_kind.h"

#include "sim/address.h"

#include <stdexcept>

namespace k740::sim {
namespace {

constexpr std::uint32_t kFirstMulticast = 224; // first number of a group
constexpr std::uint32_t kLastMulticast = 239;

std::uint32_t DeviceAddress(const std::string& text) {
    const std::uint32_t address = AddressNumber(text);
    const std::uint32_t first = address >> 24;
    if (first == 0 || first >= kFirstMulticast) { throw std::invalid_argument("no device address: \"" + text + '"'); }
    return address;
}

} // namespace

const KindTraits& TraitsOf(DeviceKind kind) {
    static const std::map<DeviceKind, KindTraits> traits{{DeviceKind::ZoneController, {"zone controller", 1, 999}},
                                                         {DeviceKind::PagingStation, {"paging station", 5000, 5999}},
                                                         {DeviceKind::AuxInterface, {"AUX interface", 7000, 7999}},
                                                         {DeviceKind::Client, {"client", 9500, 9999}}};
    return traits.at(kind);
}

void Roster::Add(DeviceKind kind, std::uint32_t id, const std::string& address) {
    const KindTraits& traits = TraitsOf(kind);
    const std::string name = std::string(traits.name) + ' ' + std::to_string(id);
    if (id < traits.firstId || id > traits.lastId) {
        throw std::invalid_argument(name + ": the ID is not in " + std::to_string(traits.firstId) + ".." +
                                    std::to_string(traits.lastId));
    }
    const std::uint32_t number = DeviceAddress(address);
    if (m_kinds.contains(id)) { throw std::invalid_argument(name + ": the ID is there twice"); }
    if (!m_addresses.insert(number).second) {
        throw std::invalid_argument(name + ": another device has the address " + address);
    }
    m_kinds.emplace(id, kind);
}

const std::string& CheckedHostAddress(const std::string& address) {
    DeviceAddress(address);
    return address;
}

std::optional<DeviceKind> Roster::KindOf(std::uint32_t id) const {
    const auto found = m_kinds.find(id);
    return found == m_kinds.end() ? std::nullopt : std::optional(found->second);
}

const std::string& CheckedGroup(const std::string& group) {
    const std::uint32_t first = AddressNumber(group) >> 24;
    if (first < kFirstMulticast || first > kLastMulticast) {
        throw std::invalid_argument("no multicast group: \"" + group + '"');
    }
    return group;
}

} // namespace k740::sim
