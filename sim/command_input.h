// Commands from a descriptor, one in a line.
#pragma once

#include "sim/command.h"

#include <string>

namespace k740::sim {

/// Reads commands as they come and runs them. At the end of the input nothing more happens. Reactor's thread only.
class CommandInput {
public:
    static constexpr std::size_t kLongestLine = 4096; ///< characters; longer ones are refused

    /// @throws UsageError when the descriptor is something else than a pipe, a terminal, a plain file or /dev/null
    static void Check(int file);

    /// @param file  one that passes the check; a plain file is read whole at once. Stays the caller's
    CommandInput(int file, const CommandContext& context, Stage& stage);
    ~CommandInput();
    CommandInput(const CommandInput&) = delete;
    CommandInput& operator=(const CommandInput&) = delete;

private:
    bool ReadSome();
    void TakeLines();
    void Take(const std::string& line);
    void Refuse(const std::string& line);
    void Forget();

    const int m_file;
    const CommandContext m_context;
    Stage& m_stage;
    std::string m_text;     // that is no whole line yet
    bool m_tooLong = false; // the line at hand, which has been refused
    bool m_watching = false;
};

} // namespace k740::sim
