// What holds for every example.
#include "tests/examples/example_fixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace k740::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::size_t kExamples = 8;
constexpr std::size_t kMostLines = 99;

std::vector<fs::path> Sources() {
    std::vector<fs::path> sources;
    for (const auto& entry : fs::directory_iterator(K740_EXAMPLE_SOURCES)) {
        const std::string extension = entry.path().extension();
        if (extension == ".c" || extension == ".cpp" || extension == ".py") { sources.push_back(entry.path()); }
    }
    return sources;
}

std::vector<std::string> LinesOf(const fs::path& file) {
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) { lines.push_back(line); }
    return lines;
}

TEST(AllExamplesTest, EachHasFewerThanAHundredLines) {
    const std::vector<fs::path> sources = Sources();
    EXPECT_EQ(kExamples, sources.size());
    for (const fs::path& source : sources) { EXPECT_LE(LinesOf(source).size(), kMostLines) << source; }
}

TEST(AllExamplesTest, EachUsesTheExportedHeaderAlone) {
    for (const fs::path& source : Sources()) {
        for (const std::string& line : LinesOf(source)) {
            EXPECT_FALSE(line.starts_with("#include \"")) << source << ": " << line;
        }
    }
}

TEST(AllExamplesTest, TheReadmeNamesEach) {
    const std::vector<std::string> readme = LinesOf(fs::path(K740_EXAMPLE_SOURCES) / "README.md");
    for (const fs::path& source : Sources()) {
        const std::string name = '`' + source.filename().string() + '`';
        EXPECT_TRUE(std::any_of(readme.begin(), readme.end(), [&](const std::string& line) {
            return line.find(name) != std::string::npos;
        })) << name;
    }
}

class EachExampleTest : public ExampleTest, public ::testing::WithParamInterface<std::string> {
protected:
    [[nodiscard]] static std::string Name() { return GetParam().substr(0, GetParam().find(' ')); }
};

TEST_P(EachExampleTest, WithoutArgumentsPrintsItsUsage) {
    Example host(Name());
    EXPECT_THAT(host.Rest(), StartsWith("usage: " + Name() + ' '));
    EXPECT_EQ(1, host.End());
}

TEST_P(EachExampleTest, AnAddressThatIsNoNetworkCardsIsRefused) {
    Example host(GetParam() + " 127.0.0.1");
    EXPECT_THAT(host.Rest(), HasSubstr("k740log/k740sdk.log"));
    EXPECT_EQ(1, host.End());
}

INSTANTIATE_TEST_SUITE_P(Hosts, EachExampleTest,
                         ::testing::Values("answer_call speech.wav heard.raw", "broadcast_file speech.wav",
                                           "live_stream speech.wav", "monitor_zone heard.wav 0", "train 0 heard.raw",
                                           "voice_alarm 0", "volume_and_version 5"),
                         [](const auto& host) { return host.param.substr(0, host.param.find(' ')); });

} // namespace
} // namespace k740::test
