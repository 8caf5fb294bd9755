// All simulated devices of a test or of k740-sim, on one thread.
#pragma once

#include "sim/aux_interface.h"
#include "sim/client.h"
#include "sim/device.h"
#include "sim/journal.h"
#include "sim/paging_station.h"
#include "sim/reactor.h"
#include "sim/zone_controller.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace k740::sim {

/// Owns simulated devices, the thread on which they live, and the journal of what they do. Make it in the network
/// namespace in which the devices shall be (PrivateNetwork::RunInField); devices may then be added in any thread.
class Installation {
public:
    struct Options {
        std::string stationAddress = kStationAddress; ///< where reports go
        std::uint32_t stationNode = kDefaultStationNode;
    };

    Installation() : Installation(Options{}) {}
    explicit Installation(const Options& options);
    ~Installation();
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    /// The reference holds until the device is removed or the installation ends.
    /// @throws std::system_error when the address does not exist here, std::invalid_argument for an ID in use
    ZoneController& AddZoneController(std::uint32_t id, const std::string& address);
    PagingStation& AddPagingStation(std::uint32_t id, const std::string& address);
    AuxInterface& AddAuxInterface(std::uint32_t id, const std::string& address);
    Client& AddClient(std::uint32_t id, const std::string& address);
    void Remove(std::uint32_t id);
    /// @return nothing for an unknown ID, or for a device of another kind
    template <typename Kind> [[nodiscard]] Kind* Find(std::uint32_t id) { return dynamic_cast<Kind*>(FindDevice(id)); }

    /// Blocks until the condition holds; it is examined after everything that devices do, on their thread.
    bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

    [[nodiscard]] const Journal& Events() const { return m_journal; }
    [[nodiscard]] Journal& Events() { return m_journal; }
    /// On which the devices live.
    [[nodiscard]] Reactor& OnReactor() { return m_reactor; }

private:
    [[nodiscard]] Device* FindDevice(std::uint32_t id);
    template <typename Kind> Kind& Add(std::uint32_t id, const std::string& address);

    Journal m_journal;
    Reactor m_reactor;
    const Surroundings m_surroundings;
    std::map<std::uint32_t, std::unique_ptr<Device>> m_devices; // of the reactor's thread
};

} // namespace k740::sim
