// k740-sim as a program whose output a test reads.
#pragma once

#include "sim/private_network.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace k740::test {

using Json = nlohmann::json;

/// A k740-sim in `field` with its output on a pipe.
class Program {
public:
    /// @param writer  shell command whose output the program has as its input; without it there is none
    Program(const sim::PrivateNetwork& network, const std::string& arguments, const std::string& writer = "") {
        const std::string command = (writer.empty() ? "exec " : writer + " | ") + K740_SIM_PROGRAM + ' ' + arguments;
        network.RunInField([&] { m_output = ::popen(command.c_str(), "re"); });
    }
    ~Program() {
        if (m_output != nullptr) { ::pclose(m_output); }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] std::string Line() {
        std::string line;
        std::array<char, 4096> part{};
        while (!line.ends_with('\n') && std::fgets(part.data(), static_cast<int>(part.size()), m_output) != nullptr) {
            line += part.data();
        }
        return line;
    }
    /// Reads until the program ends.
    std::vector<Json> RemainingLines() {
        std::vector<Json> lines;
        for (std::string line = Line(); !line.empty(); line = Line()) { lines.push_back(Json::parse(line)); }
        return lines;
    }
    /// Waits for the end; the exit status.
    int End() { return WEXITSTATUS(::pclose(std::exchange(m_output, nullptr))); }

private:
    FILE* m_output = nullptr;
};

inline std::vector<Json> Of(const std::vector<Json>& lines, const std::string& event) {
    std::vector<Json> found;
    for (const Json& line : lines) {
        if (line.at("event") == event) { found.push_back(line); }
    }
    return found;
}

/// Those lines of an event that are about a device.
inline std::vector<Json> Of(const std::vector<Json>& lines, const std::string& event, int device) {
    std::vector<Json> found = Of(lines, event);
    std::erase_if(found, [=](const Json& line) { return line.at("device") != device; });
    return found;
}

} // namespace k740::test
