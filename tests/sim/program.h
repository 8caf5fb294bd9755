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

/// Before a program: it has not the right to unshare; of all rights it keeps the one to map the user it runs as.
inline constexpr const char* kWithoutRights = "setpriv --securebits=+noroot --inh-caps=-all,+setfcap "
                                              "--ambient-caps=-all,+setfcap ";

/// A k740-sim in `field`.
class Program {
public:
    /// @param start  what precedes the program in a shell: "printf help |" or the rights that it shall have
    Program(const sim::PrivateNetwork& network, const std::string& arguments, const std::string& start = "") {
        network.RunInField([&] { m_program.emplace(start + " '" K740_SIM_PROGRAM "' " + arguments); });
    }

    [[nodiscard]] std::string Line() { return m_program->Line(); }
    [[nodiscard]] std::string LineWith(const std::string& text) { return m_program->LineWith(text); }
    /// Reads until the program ends.
    [[nodiscard]] std::string Rest() { return m_program->Rest(); }
    void Signal(int number) const { m_program->Signal(number); }
    [[nodiscard]] bool HasEnded() const { return m_program->HasEnded(); }
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
