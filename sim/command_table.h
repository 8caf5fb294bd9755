// The commands that there are, by subject.
#pragma once

#include "sim/arguments.h"
#include "sim/command.h"

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace k740::sim {

/// One command: how it is written, what it does, and how its words become an action.
struct CommandForm {
    std::string name;
    std::string syntax; ///< of the words behind the name
    std::string help;
    Action (*parse)(Arguments& arguments, const CommandContext& context);
};
using CommandTable = std::vector<CommandForm>;

CommandTable AudioCommands();
CommandTable CallCommands();
CommandTable ReplyCommands();
CommandTable StateCommands();
CommandTable ClientCommands();

/// All of them.
const CommandTable& Commands();

/// Reads a device's ID.
/// @throws std::invalid_argument unless it is one of the kinds
std::uint32_t NextDevice(Arguments& arguments, const CommandContext& context, std::initializer_list<DeviceKind> kinds);

/// Reads an optional time in milliseconds behind a word. @return 0 without it
std::chrono::milliseconds NextDelay(Arguments& arguments, const std::string& word = "delay");

/// @throws std::invalid_argument when the device has no power
template <typename Kind> Kind& Acting(Stage& stage, std::uint32_t id) {
    Kind* device = stage.installation.Find<Kind>(id);
    if (device == nullptr || !device->HasPower()) {
        throw std::invalid_argument("device " + std::to_string(id) + " is off");
    }
    return *device;
}

} // namespace k740::sim
