#include "sim/command_input.h"
#include "tests/sim/command_fixture.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>

namespace k740::test {
namespace {

class CommandInputTest : public CommandFixture {
protected:
    ~CommandInputTest() override {
        Field().OnReactor().Run([this] { m_input.reset(); });
    }
    void Listen(int file) {
        m_file = sim::FileDescriptor(file);
        Field().OnReactor().Run([&] { m_input = std::make_unique<sim::CommandInput>(file, context, stage); });
    }
    /// Listens to a pipe. @return where to write
    sim::FileDescriptor ListenToPipe() {
        std::array<int, 2> ends{};
        EXPECT_EQ(0, ::pipe2(ends.data(), O_CLOEXEC));
        Listen(ends[0]);
        return sim::FileDescriptor(ends[1]);
    }
    static void Write(const sim::FileDescriptor& file, const std::string& text) {
        EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(file.Get(), text.data(), text.size()));
    }
    /// Waits for that many commands. @return the texts, with errors behind a colon
    [[nodiscard]] std::vector<std::string> Outcomes(std::size_t count) const {
        const auto isCommand = [](const sim::Event& event) { return event.command.has_value(); };
        Field().Events().WaitFor(isCommand, kSoon, count);
        std::vector<std::string> outcomes;
        for (const sim::Event& event : Field().Events().Events(isCommand)) {
            outcomes.push_back(event.command->text + ':' + event.command->error);
        }
        return outcomes;
    }

private:
    sim::FileDescriptor m_file;
    std::unique_ptr<sim::CommandInput> m_input;
};

TEST_F(CommandInputTest, LinesRunAsTheyCome) {
    const sim::FileDescriptor pipe = ListenToPipe();
    Write(pipe, "quiet 33\nqui");
    EXPECT_EQ((std::vector<std::string>{"quiet 33:"}), Outcomes(1));
    Write(pipe, "et 5000\n");
    EXPECT_EQ((std::vector<std::string>{"quiet 33:", "quiet 5000:"}), Outcomes(2));
}

TEST_F(CommandInputTest, WhatIsWrongIsToldAndNothingEnds) {
    const sim::FileDescriptor pipe = ListenToPipe();
    Write(pipe, "sing\nquiet 34\n\n  # a remark\nquiet 33\r\n");
    EXPECT_EQ((std::vector<std::string>{"sing:\"sing\" is no command", "quiet 34:there is no device 34", "quiet 33:"}),
              Outcomes(3));
}

TEST_F(CommandInputTest, TheEndOfTheInputEndsTheLastLineOnly) {
    {
        const sim::FileDescriptor pipe = ListenToPipe();
        Write(pipe, "quiet 33");
    }
    EXPECT_EQ((std::vector<std::string>{"quiet 33:"}), Outcomes(1));
    EXPECT_FALSE(stage.ended);
    EXPECT_EQ("", Do("quiet 33"));
}

TEST_F(CommandInputTest, ALineThatIsTooLongIsRefusedWhole) {
    const sim::FileDescriptor pipe = ListenToPipe();
    Write(pipe, std::string(sim::CommandInput::kLongestLine + 1, 'x'));
    Write(pipe, std::string(5000, 'x') + "\nquiet 33\n");
    EXPECT_EQ((std::vector<std::string>{std::string(20, 'x') + "...:the line is too long", "quiet 33:"}), Outcomes(2));
}

TEST_F(CommandInputTest, ALineThatIsTooLongIsRefusedHoweverItComes) {
    const sim::FileDescriptor pipe = ListenToPipe();
    Write(pipe, "quiet 33 " + std::string(3991, ' '));
    Write(pipe, std::string(95, ' ') + "\nquiet 33" + std::string(sim::CommandInput::kLongestLine - 8, ' ') + '\n');
    Write(pipe, "quiet 33" + std::string(2000, ' '));
    EXPECT_EQ("", Do("quiet 5000")); // the reactor may have read so far
    Write(pipe, std::string(sim::CommandInput::kLongestLine - 2007, ' ') + "\nquiet 5000\n");
    const std::vector<std::string> outcomes = Outcomes(5);
    EXPECT_EQ(1, std::count(outcomes.begin(), outcomes.end(), "quiet 33            ...:the line is too long"));
    EXPECT_EQ(2, std::count(outcomes.begin(), outcomes.end(), "quiet 33:"));
}

TEST_F(CommandInputTest, APlainFileIsReadAtOnce) {
    std::ofstream("commands.txt") << "quiet 33\nquiet 5000";
    Listen(::open("commands.txt", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ((std::vector<std::string>{"quiet 33:", "quiet 5000:"}), Outcomes(0));
}

} // namespace
} // namespace k740::test
