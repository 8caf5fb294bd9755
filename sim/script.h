// What k740-sim is to play, checked and understood before anything is started.
#pragma once

#include "sim/command.h"
#include "sim/sim_options.h"
#include "sim/triggers.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace k740::sim {

using Seconds = std::chrono::duration<double>;

struct PlacedCommand {
    Command command;
    std::string place;
};

struct TimelineEntry {
    Seconds at{};
    std::optional<Seconds> every;
    std::optional<Seconds> until;
    Command command;
};

struct Reaction {
    EventFilter trigger;
    Seconds after{};
    Command command;
};

struct Script {
    Roster roster;
    std::vector<PlacedCommand> settings;
    std::vector<TimelineEntry> timeline;
    std::vector<Reaction> reactions;
};

/// @throws UsageError for the first thing that is wrong
Script MakeScript(const SimOptions& options);

} // namespace k740::sim
