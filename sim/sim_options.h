// What k740-sim is to play: from its command line and from a scenario file.
#pragma once

#include "sim/device_kind.h"
#include "sim/periodic_filter.h"
#include "sim/wire.h"

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace k740::sim {

/// The command line or a scenario file cannot be used; the text says where and why.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A device; on the command line ID@ADDRESS or ID@ADDRESS/GROUP.
struct DeviceOption {
    DeviceKind kind = DeviceKind::ZoneController;
    std::uint32_t id = 0;
    std::string address;
    std::string group; // to which it streams a tone; empty: none
    std::string place; // where it is written, for messages
};

struct CommandText {
    std::string text;
    std::string place;
};

struct TimelineText {
    double at = 0;               // s
    std::optional<double> every; // s
    std::optional<double> until; // s
    CommandText command;
};

struct ReactionText {
    std::string on;
    std::optional<std::uint32_t> device; // any without
    double after = 0;                    // s
    CommandText command;
};

struct SimOptions {
    std::vector<DeviceOption> devices;
    std::vector<CommandText> settings; // of devices, before the run
    std::vector<TimelineText> timeline;
    std::vector<ReactionText> reactions;
    std::filesystem::path wavDirectory; // from which paths in commands start
    std::string scenarioFile;           // empty: none
    bool acceptCalls = false;           // of intercoms
    bool readCommands = false;          // from standard input
    std::optional<std::string> stationAddress;
    std::optional<std::uint32_t> stationNode;
    std::optional<std::string> recordDirectory; // none: no WAV files
    std::string eventsFile = "-";
    PeriodicLines periodicLines = PeriodicLines::Changes;
    std::optional<double> statusPeriod; // s; 0: no status reports
    std::size_t untilClose = 0;         // close-audio requests; 0: any number
    std::optional<double> duration;     // s; 0: for ever
    std::vector<std::string> host;      // program to run as the station, in a private network; empty: none
};

/// Takes the host out of main's arguments: what stands behind the first "--", as it is.
/// @return how many arguments stand before
/// @throws UsageError when nothing stands behind it
int TakeHost(int argc, const char* const* argv, SimOptions& options);

/// Declares the options to the parser, which fills them in.
void DeclareOptions(CLI::App& app, SimOptions& options);

} // namespace k740::sim
