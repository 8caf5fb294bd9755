#include "tests/wireshark/tshark.h"

#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <sstream>

namespace k740::test {
namespace {

constexpr int kNotFound = 127; // exit status of a shell that does not find a command
constexpr char kFieldEnd = '\t';

/// @return the exit status
int RunShell(const std::string& command, std::string& output) {
    FILE* pipe = ::popen(command.c_str(), "re");
    if (pipe == nullptr) { return -1; }
    std::array<char, 65536> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe)) {
        output.append(block.data(), count);
    }
    return WEXITSTATUS(::pclose(pipe));
}

/// The user's own settings and plugins are found through these.
std::string WithoutSettings(const std::string& directory) {
    return "HOME=" + directory + " XDG_CONFIG_HOME=" + directory + " WIRESHARK_CONFIG_DIR=" + directory + " ";
}

std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> parts;
    std::istringstream text(line);
    for (std::string part; std::getline(text, part, kFieldEnd);) { parts.push_back(part); }
    return parts;
}

Row MakeRow(const std::vector<std::string>& fields, const std::string& line) {
    const std::vector<std::string> values = Split(line);
    Row row;
    for (std::size_t i = 0; i < fields.size(); ++i) { row[fields[i]] = i < values.size() ? values[i] : ""; }
    return row;
}

} // namespace

std::string RunTshark(const std::string& arguments) {
    static std::atomic<int> runs{0};
    const std::string errors = (std::filesystem::current_path() / ("tshark" + std::to_string(++runs))).string();
    std::string output;
    const std::string command = WithoutSettings(std::filesystem::current_path().string()) +
                                "tshark -X lua_script:" + K740_DISSECTOR + " -n " + arguments + " 2>" + errors;
    const int status = RunShell(command, output);
    EXPECT_NE(kNotFound, status) << "tshark is missing; install the Debian package tshark.";
    EXPECT_EQ(0, status) << ReadTextFile(errors);
    EXPECT_EQ(std::string::npos, ReadTextFile(errors).find("Lua")) << ReadTextFile(errors);
    return output;
}

std::vector<Row> Dissect(const std::string& capture, const std::vector<std::string>& fields,
                         const std::string& options) {
    std::string arguments = "-r " + capture + " -T fields -E aggregator=';' " + options;
    for (const std::string& field : fields) { arguments += " -e " + field; }
    std::istringstream lines(RunTshark(arguments));
    std::vector<Row> rows;
    for (std::string line; std::getline(lines, line);) { rows.push_back(MakeRow(fields, line)); }
    return rows;
}

std::vector<std::string> Column(const std::vector<Row>& rows, const std::string& field) {
    std::vector<std::string> values;
    for (const Row& row : rows) { values.push_back(row.at(field)); }
    return values;
}

std::string DissectAsText(const std::string& capture, const std::string& options) {
    return RunTshark("-r " + capture + " -V " + options);
}

} // namespace k740::test
