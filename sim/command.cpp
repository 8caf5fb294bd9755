#include "sim/command.h"

#include "sim/command_table.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace k740::sim {
namespace {

const CommandForm* FindForm(const std::string& name) {
    const auto found =
        std::find_if(Commands().begin(), Commands().end(), [&](const CommandForm& form) { return form.name == name; });
    return found == Commands().end() ? nullptr : &*found;
}

void Note(Stage& stage, CommandOutcome outcome) {
    Event event;
    event.time = Clock::now();
    event.kind = Event::Kind::Command;
    event.command = std::move(outcome);
    stage.installation.Events().Note(std::move(event));
}

} // namespace

const CommandTable& Commands() {
    static const CommandTable commands = [] {
        CommandTable all;
        for (const CommandTable& part :
             {AudioCommands(), CallCommands(), ReplyCommands(), StateCommands(), ClientCommands()}) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }();
    return commands;
}

Command ParseCommand(const std::string& text, const CommandContext& context) {
    Arguments arguments(text);
    const std::string name = arguments.Next("the command");
    const CommandForm* form = FindForm(name);
    if (form == nullptr) { throw std::invalid_argument("\"" + name + "\" is no command"); }
    Action action = form->parse(arguments, context);
    arguments.ExpectEnd();
    return {text, std::move(action)};
}

bool IsDeviceCommand(const std::string& name) {
    const CommandForm* form = FindForm(name);
    return form != nullptr && !form->syntax.empty();
}

void Execute(const Command& command, const std::string& origin, Stage& stage) {
    CommandOutcome outcome{origin, command.text, {}, {}};
    try {
        command.action(stage);
    } catch (const std::exception& error) { outcome.error = error.what(); }
    outcome.lines = std::exchange(stage.said, {});
    Note(stage, std::move(outcome));
}

void NoteRefusal(const std::string& text, const std::string& error, const std::string& origin, Stage& stage) {
    Note(stage, {origin, text, error, {}});
}

std::uint32_t NextDevice(Arguments& arguments, const CommandContext& context, std::initializer_list<DeviceKind> kinds) {
    std::string names;
    for (const DeviceKind kind : kinds) { names += (names.empty() ? "" : " or ") + std::string(TraitsOf(kind).name); }
    const std::uint32_t id = arguments.NextNumber("the " + names, 1, TraitsOf(DeviceKind::Client).lastId);
    const auto kind = context.roster.KindOf(id);
    if (!kind) { throw std::invalid_argument("there is no device " + std::to_string(id)); }
    if (std::find(kinds.begin(), kinds.end(), *kind) == kinds.end()) {
        throw std::invalid_argument("device " + std::to_string(id) + " is no " + names);
    }
    return id;
}

std::chrono::milliseconds NextDelay(Arguments& arguments, const std::string& word) {
    constexpr std::uint32_t kLongestMs = 3'600'000;
    if (!arguments.Skip(word)) { return {}; }
    return std::chrono::milliseconds(arguments.NextNumber("the delay", 0, kLongestMs));
}

} // namespace k740::sim
