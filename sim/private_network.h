// A network of its own for one process: two network namespaces, one for the station and one for the devices' field.
#pragma once

#include "sim/arrival_stamps.h"
#include "sim/file_descriptor.h"
#include "sim/wire.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace k740::sim {

/// Two network namespaces joined by one cable (a veth pair), with no other way out.
///
/// Namespaces belong to threads. After construction the calling thread, and every thread that it starts later, is in
/// `station` (192.168.1.166/16, multicast route); RunInField works in `field`, which has the devices' addresses.
/// A socket stays in the namespace in which it was opened, whatever thread uses it.
///
/// The cable resolves no addresses (both ends have the same hardware address and ARP is off), so that no first packet
/// waits for an answer and none of a burst is lost. The network vanishes with the last thread and socket in it.
class PrivateNetwork {
public:
    struct Options {
        std::vector<std::string> extraStationAddresses; ///< IPv4 texts beside 192.168.1.166, each as /16
        std::vector<std::string> fieldAddresses;        ///< IPv4 texts, each as /16
    };

    /// @throws std::runtime_error with one sentence that says why, when the machine refuses the namespaces
    explicit PrivateNetwork(const Options& options = {});

    /// Adds device addresses to `field`, /16 each, in 192.168.0.0/16; some milliseconds for 500.
    /// @throws std::runtime_error for a text that is no address, or one that is there already
    void AddFieldAddresses(const std::vector<std::string>& addresses) const;

    /// Runs the work on a thread in `field` and waits for its end. What the work throws is thrown here.
    void RunInField(const std::function<void()>& work) const;

    /// The station's first address.
    static std::string StationAddress() { return kStationAddress; }

private:
    FileDescriptor m_field;
    std::optional<ArrivalStamps> m_stamps; // made once the station's loopback is up
};

} // namespace k740::sim
