// k740-sim as a program whose output a test reads.
#pragma once

#include "sim/private_network.h"
#include "tests/support/child_program.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace k740::test {

using Json = nlohmann::json;

/// A k740-sim in `field`.
class Program {
public:
    /// @param writer  shell command whose output the program has as its input; without it there is none
    Program(const sim::PrivateNetwork& network, const std::string& arguments, const std::string& writer = "") {
        const std::string start = writer.empty() ? "" : writer + " | ";
        network.RunInField([&] { m_program.emplace(start + K740_SIM_PROGRAM + ' ' + arguments); });
    }

    [[nodiscard]] std::string Line() { return m_program->Line(); }
    /// Reads until the program ends.
    std::vector<Json> RemainingLines() {
        std::vector<Json> lines;
        for (std::string line = Line(); !line.empty(); line = Line()) { lines.push_back(Json::parse(line)); }
        return lines;
    }
    /// Waits for the end; the exit status.
    int End() { return m_program->End(); }

private:
    std::optional<ChildProgram> m_program;
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
