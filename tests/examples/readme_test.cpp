// The commands of the examples' README, as they stand there but for the build directory.
#include "tests/examples/example_fixture.h"

#include <cctype>
#include <filesystem>
#include <fstream>

namespace k740::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCommands = 8; // one for each example

std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    std::ifstream readme(fs::path(K740_EXAMPLE_SOURCES) / "README.md");
    for (std::string line; std::getline(readme, line);) {
        if (line.starts_with("build/release/k740-sim ")) { commands.push_back(line); }
    }
    return commands;
}

/// The name of the host, which follows "-- " and folders.
std::string HostOf(const std::string& command) {
    const std::size_t begin = command.rfind("examples/") + sizeof("examples/") - 1;
    std::string name = command.substr(begin, command.find(' ', begin) - begin);
    for (char& character : name) { character = std::isalnum(character) != 0 ? character : '_'; }
    return name;
}

class ReadmeTest : public ExampleTest, public ::testing::WithParamInterface<std::string> {
protected:
    /// The working directory looks like the root of the repository after a build.
    ReadmeTest() {
        const fs::path sources = fs::path(K740_EXAMPLE_SOURCES).parent_path();
        for (const char* folder : {"demo", "examples"}) { fs::create_directory_symlink(sources / folder, folder); }
        fs::create_directory("build");
        fs::create_directory_symlink(fs::path(K740_EXAMPLES).parent_path(), "build/release");
    }
};

TEST(ReadmeCommandsTest, ThereIsOneForEachExample) {
    EXPECT_EQ(kCommands, Commands().size());
}

TEST_P(ReadmeTest, TheCommandWorks) {
    Example host("", GetParam());
    const std::string output = host.Rest();
    EXPECT_EQ(0, host.End()) << output;
    EXPECT_FALSE(fs::is_empty("heard.jsonl"));
}

INSTANTIATE_TEST_SUITE_P(Examples, ReadmeTest, ::testing::ValuesIn(Commands()),
                         [](const auto& command) { return HostOf(command.param); });

} // namespace
} // namespace k740::test
