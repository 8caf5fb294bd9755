// Who may include whom.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::set<std::string> kManagerHeaders{
    "app/application.h", "devices/device.h",         "intercom/talker.h", "log/log.h",     "monitor/monitor.h",
    "player/player.h",   "protocol/communication.h", "rpk/rpk.h",         "train/train.h", "zcu/zcu.h"};

/// @return the project's own files that a file includes, as paths from the root
std::vector<std::string> IncludesOf(const fs::path& file) {
    const std::string start = "#include \"";
    std::vector<std::string> includes;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with(start)) { continue; }
        includes.push_back(line.substr(start.size(), line.find('"', start.size()) - start.size()));
    }
    return includes;
}

std::vector<fs::path> SourcesIn(const std::string& folder) {
    std::vector<fs::path> sources;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(K740_SOURCE_DIR) / folder)) {
        const std::string extension = entry.path().extension();
        if (extension == ".h" || extension == ".cpp") { sources.push_back(entry.path()); }
    }
    return sources;
}

std::string FolderOf(const std::string& include) {
    return include.substr(0, include.find('/'));
}

void ExpectIncludesOnly(const std::string& folder, const std::set<std::string>& allowed) {
    const std::vector<fs::path> sources = SourcesIn(folder);
    ASSERT_FALSE(sources.empty());
    for (const fs::path& source : sources) {
        for (const std::string& include : IncludesOf(source)) {
            EXPECT_TRUE(allowed.contains(FolderOf(include))) << source << " includes " << include;
        }
    }
}

TEST(IncludesTest, CommonCodecAndPublicStandAlone) {
    ExpectIncludesOnly("common", {"common"});
    ExpectIncludesOnly("codec", {"codec"});
    ExpectIncludesOnly("public", {"public"});
}

TEST(IncludesTest, TheLogStandsOnCommon) {
    ExpectIncludesOnly("log", {"log", "common"});
}

TEST(IncludesTest, ThePacketStandsOnCommon) {
    for (const std::string file : {"cmd_packet.h", "cmd_packet.cpp", "commands.h"}) {
        for (const std::string& include : IncludesOf(fs::path(K740_SOURCE_DIR) / "protocol" / file)) {
            EXPECT_TRUE(include == "protocol/cmd_packet.h" || FolderOf(include) == "common") << file << ": " << include;
        }
    }
}

TEST(IncludesTest, TheSimulatorSharesNothingWithTheLibrary) {
    ExpectIncludesOnly("sim", {"sim"});
}

TEST(IncludesTest, TheSampleHostSeesTheExportedHeaderAndAFewCommonPieces) {
    const std::set<std::string> allowed{"app/k740.h", "common/clock_text.h", "common/sem.h", "common/stopwatch.h",
                                        "player/pacing.h"};
    for (const fs::path& source : SourcesIn("demo")) {
        for (const std::string& include : IncludesOf(source)) {
            EXPECT_TRUE(allowed.contains(include) || FolderOf(include) == "demo") << source << ": " << include;
        }
    }
}

TEST(IncludesTest, TheHeaderOfAManagerDoesNotPullInAnother) {
    for (const std::string folder :
         {"devices", "intercom", "log", "monitor", "player", "protocol", "rpk", "train", "zcu"}) {
        for (const fs::path& source : SourcesIn(folder)) {
            if (source.extension() != ".h") { continue; }
            for (const std::string& include : IncludesOf(source)) {
                const bool foreign = kManagerHeaders.contains(include) && FolderOf(include) != folder;
                EXPECT_FALSE(foreign) << source << " includes " << include;
            }
        }
    }
}

} // namespace
