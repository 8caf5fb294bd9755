// The library in a private network with one simulated zone controller, for the benchmarks of whole paths.
#pragma once

#include "sim/installation.h"
#include "sim/private_network.h"

#include <memory>
#include <string>

namespace k740::bench {

/// Made once, in main; the library is initialised by the first benchmark that asks for it.
class Station {
public:
    /// @throws std::runtime_error when the machine refuses network namespaces
    Station();

    /// Initialises the library and registers the controller, once.
    void UseLibrary();
    /// Makes the tasks 1..count broadcast and takes the controller away, so that only the library works from then on.
    void StartTasks(int count);
    /// Ends the tasks and brings the controller back.
    void StopTasks(int count);

    [[nodiscard]] const sim::PrivateNetwork& Network() const { return m_network; }

private:
    void AddController();

    const sim::PrivateNetwork m_network;
    std::unique_ptr<sim::Installation> m_field;
    bool m_libraryInUse = false;
};

/// @return the one of this process
Station& TheStation();

} // namespace k740::bench
