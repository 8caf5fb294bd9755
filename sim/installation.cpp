#include "sim/installation.h"

#include <stdexcept>
#include <utility>

namespace k740::sim {

Installation::Installation(const Options& options)
    : m_surroundings{m_reactor, m_journal, options.stationAddress, options.stationNode} {}

Installation::~Installation() {
    m_reactor.Stop();
}

template <typename Kind> Kind& Installation::Add(std::uint32_t id, const std::string& address) {
    Kind* added = nullptr;
    m_reactor.Run([&] {
        if (m_devices.contains(id)) { throw std::invalid_argument("device ID in use: " + std::to_string(id)); }
        auto device = std::make_unique<Kind>(m_surroundings, id, address);
        added = device.get();
        m_devices.emplace(id, std::move(device));
    });
    return *added;
}

ZoneController& Installation::AddZoneController(std::uint32_t id, const std::string& address) {
    return Add<ZoneController>(id, address);
}

PagingStation& Installation::AddPagingStation(std::uint32_t id, const std::string& address) {
    return Add<PagingStation>(id, address);
}

AuxInterface& Installation::AddAuxInterface(std::uint32_t id, const std::string& address) {
    return Add<AuxInterface>(id, address);
}

Client& Installation::AddClient(std::uint32_t id, const std::string& address) {
    return Add<Client>(id, address);
}

void Installation::Remove(std::uint32_t id) {
    m_reactor.Run([&] { m_devices.erase(id); });
}

Device* Installation::FindDevice(std::uint32_t id) {
    Device* device = nullptr;
    m_reactor.Run([&] {
        const auto found = m_devices.find(id);
        if (found != m_devices.end()) { device = found->second.get(); }
    });
    return device;
}

bool Installation::WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    return m_reactor.WaitUntil(condition, timeout);
}

} // namespace k740::sim
