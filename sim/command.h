// The commands of k740-sim: lines of text, given on its standard input, by a scenario's timeline and by its reactions.
#pragma once

#include "sim/device_kind.h"
#include "sim/installation.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace k740::sim {

/// What commands act on.
struct Stage {
    Installation& installation;
    std::atomic<bool> ended = false; // the run shall end
    std::vector<std::string> said{}; // lines that the command at hand tells; reactor's thread
};

using Action = std::function<void(Stage&)>;

/// A line that has been understood: whatever can be checked without the devices has been.
struct Command {
    std::string text;
    Action action;
};

/// What a line is understood with.
struct CommandContext {
    const Roster& roster;
    std::filesystem::path directory; ///< from which relative WAV paths start
};

/// @throws std::invalid_argument with what is wrong; std::runtime_error for a WAV that cannot be used
Command ParseCommand(const std::string& text, const CommandContext& context);

/// Whether there is a command of this name whose first word is a device.
bool IsDeviceCommand(const std::string& name);

/// Runs a command and notes in the journal what became of it. Reactor's thread.
void Execute(const Command& command, const std::string& origin, Stage& stage);

/// Notes that a line was not understood.
void NoteRefusal(const std::string& text, const std::string& error, const std::string& origin, Stage& stage);

} // namespace k740::sim
