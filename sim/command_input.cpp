#include "sim/command_input.h"

#include "sim/sim_options.h"
#include "sim/system_error.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

namespace k740::sim {
namespace {

constexpr const char* kOrigin = "input";
constexpr std::size_t kQuotedCharacters = 20; // of a line that is too long

bool IsNothing(const struct stat& state) {
    return S_ISCHR(state.st_mode) && state.st_rdev == ::makedev(1, 3); // null(4)
}

} // namespace

void CommandInput::Check(int file) {
    struct stat state {};
    Checked(::fstat(file, &state), "fstat");
    const bool canBeRead = S_ISFIFO(state.st_mode) || S_ISSOCK(state.st_mode) || S_ISREG(state.st_mode);
    if (canBeRead || ::isatty(file) != 0 || IsNothing(state)) { return; }
    throw UsageError("--commands: standard input is no pipe, no terminal and no plain file");
}

CommandInput::CommandInput(int file, const CommandContext& context, Stage& stage)
    : m_file(file), m_context(context), m_stage(stage) {
    try {
        m_stage.installation.OnReactor().Watch(m_file, [this] { ReadSome(); });
        m_watching = true;
    } catch (const std::system_error&) { // epoll takes no plain files, which never make anybody wait
        m_stage.installation.OnReactor().Forget(m_file);
        Check(m_file);
        while (ReadSome()) {}
    }
}

CommandInput::~CommandInput() {
    Forget();
}

void CommandInput::Forget() {
    if (m_watching) { m_stage.installation.OnReactor().Forget(m_file); }
    m_watching = false;
}

bool CommandInput::ReadSome() {
    std::array<char, 4096> buffer{};
    const ssize_t size = ::read(m_file, buffer.data(), buffer.size());
    if (size > 0) {
        m_text.append(buffer.data(), static_cast<std::size_t>(size));
        TakeLines();
        return true;
    }
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) { return true; } // another process set it not to block
    Take(m_text);                                                         // the last line needs no end
    m_text.clear();
    Forget();
    return false;
}

void CommandInput::TakeLines() {
    for (std::size_t end = m_text.find('\n'); end != std::string::npos; end = m_text.find('\n')) {
        const std::string line = m_text.substr(0, end);
        m_text.erase(0, end + 1);
        Take(line);
        m_tooLong = false;
    }
    if (m_text.size() <= kLongestLine) { return; }
    Refuse(m_text);
    m_text.clear();
}

void CommandInput::Refuse(const std::string& line) {
    if (std::exchange(m_tooLong, true)) { return; }
    NoteRefusal(line.substr(0, kQuotedCharacters) + "...", "the line is too long", kOrigin, m_stage);
}

void CommandInput::Take(const std::string& line) {
    if (m_tooLong) { return; }
    if (line.size() > kLongestLine) { return Refuse(line); }
    const std::size_t begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '#') { return; }
    const std::string text = line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin);
    try {
        Execute(ParseCommand(text, m_context), kOrigin, m_stage);
    } catch (const std::exception& error) { NoteRefusal(text, error.what(), kOrigin, m_stage); }
}

} // namespace k740::sim
