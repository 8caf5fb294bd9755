// Command line of k740-sim.
#pragma once

#include "sim/wire.h"

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::sim {

/// A device as written on the command line: ID@ADDRESS or ID@ADDRESS/GROUP.
struct DeviceOption {
    std::uint32_t id = 0;
    std::string address;
    std::string group; // to which it streams a tone; empty: none
};

struct SimOptions {
    std::vector<DeviceOption> zoneControllers;
    std::vector<DeviceOption> pagingStations;
    std::vector<DeviceOption> auxInterfaces;
    bool acceptCalls = false; // of intercoms
    std::string stationAddress = kStationAddress;
    std::string recordDirectory; // empty: no WAV files
    std::string eventsFile = "-";
    double statusPeriod = 2;       // s; 0: no status reports
    std::size_t untilClose = 0;    // close-audio requests; 0: any number
    double duration = 0;           // s; 0: for ever
    std::vector<std::string> host; // program to run as the station, in a private network; empty: none
};

/// Declares the options to the parser, which fills them in.
void DeclareOptions(CLI::App& app, SimOptions& options);

} // namespace k740::sim
