#include "sim/timeline.h"
#include "tests/sim/command_fixture.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

class TimelineTest : public CommandFixture {
protected:
    [[nodiscard]] sim::TimelineEntry Entry(double at, const std::string& text) const {
        sim::TimelineEntry entry;
        entry.at = sim::Seconds(at);
        entry.command = sim::ParseCommand(text, context);
        return entry;
    }
    /// The events of the commands, once there are that many.
    [[nodiscard]] std::vector<sim::Event> Commands(std::size_t count,
                                                   std::chrono::milliseconds patience = kSoon) const {
        const auto isCommand = [](const sim::Event& event) { return event.command.has_value(); };
        Field().Events().WaitFor(isCommand, patience, count);
        return Field().Events().Events(isCommand);
    }
};

TEST_F(TimelineTest, CommandsRunAtTheirTimes) {
    sim::Timeline timeline({Entry(0.05, "quiet 5000"), Entry(0.02, "quiet 33")}, stage);
    const auto start = sim::Clock::now();
    timeline.Begin(start);
    const auto commands = Commands(2);
    ASSERT_EQ(2U, commands.size());
    EXPECT_EQ("quiet 33", commands[0].command->text);
    EXPECT_EQ("timeline", commands[0].command->origin);
    EXPECT_GE(commands[0].time - start, 20ms);
    EXPECT_GE(commands[1].time - start, 50ms);
    Field().OnReactor().Stop();
}

TEST_F(TimelineTest, RepeatedOnesRunUntilTheirEnd) {
    sim::TimelineEntry entry = Entry(0.01, "quiet 33");
    entry.every = sim::Seconds(0.01);
    entry.until = sim::Seconds(0.045);
    sim::Timeline timeline({entry}, stage);
    const auto start = sim::Clock::now();
    timeline.Begin(start);
    const auto commands = Commands(4);
    ASSERT_EQ(4U, commands.size());
    EXPECT_GE(commands[3].time - start, 40ms);
    EXPECT_EQ(4U, Commands(5, 50ms).size());
    Field().OnReactor().Stop();
}

} // namespace
} // namespace k740::test
