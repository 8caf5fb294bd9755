// A simulated network AUX interface: a device that only streams what is plugged into it.
#pragma once

#include "sim/device.h"

namespace k740::sim {

/// Takes heartbeats, answers version queries and streams (Device::Stream).
class AuxInterface : public Device {
public:
    using Device::Device;

protected:
    void Handle(const Packet&, const Datagram&) override {} // noted in the journal already
};

} // namespace k740::sim
