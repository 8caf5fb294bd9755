// Fixture of every test that opens a socket.
#pragma once

#include "sim/installation.h"
#include "sim/private_network.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <memory>

namespace k740::test {

/// Runs a test in a private network (this thread is in `station`) and in a fresh working directory, where the library
/// may keep its log.
class OnPrivateNetwork : public ::testing::Test {
protected:
    OnPrivateNetwork() {
        m_network.RunInField([this] { m_field = std::make_unique<sim::Installation>(); });
    }

    [[nodiscard]] const sim::PrivateNetwork& Network() const { return m_network; }

    /// The simulated devices; their addresses must have been added to the network's field before.
    [[nodiscard]] sim::Installation& Field() const { return *m_field; }

    /// Adds the address to the field and a zone controller there.
    sim::ZoneController& AddZoneController(std::uint32_t id, const std::string& address) {
        m_network.AddFieldAddresses({address});
        return m_field->AddZoneController(id, address);
    }

    /// Adds the address to the field and a paging station there.
    sim::PagingStation& AddPagingStation(std::uint32_t id, const std::string& address) {
        m_network.AddFieldAddresses({address});
        return m_field->AddPagingStation(id, address);
    }

private:
    const TemporaryDirectory m_directory;
    const sim::PrivateNetwork m_network;
    std::unique_ptr<sim::Installation> m_field;
};

} // namespace k740::test
