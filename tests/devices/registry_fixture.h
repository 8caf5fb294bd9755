// An application without threads whose registry a test fills.
#pragma once

#include "app/application.h"
#include "tests/support/private_network_fixture.h"

#include <memory>
#include <string>

namespace k740::test {

/// On a private network, because a device that is added is sent a heartbeat at once.
class OnRegistry : public OnPrivateNetwork {
protected:
    OnRegistry() {
        m_app->Configuration().SetDefaults();
        m_app->Lifetime().Begin();
    }

    /// @return an address of its own for each number from 0
    static std::string Address(int number) {
        return "192.168." + std::to_string(2 + number / 250) + "." + std::to_string(1 + number % 250);
    }

    /// @return an address that no other call has returned and that is not among the first 500 of Address
    std::string NextAddress() { return Address(m_nextAddress++); }

    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
    CDevice& m_devices = m_app->Devices();

private:
    int m_nextAddress = 1000;
};

} // namespace k740::test
