#include "sim/event_writer.h"

#include "sim/event_json.h"
#include "sim/sim_options.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace k740::sim {
namespace {

constexpr int kLongestWaitMs = 100;                // between looks whether the run is over
constexpr std::chrono::seconds kLongestPause{2};   // of a reader, once it is
constexpr std::size_t kMostAtOnceBytes = PIPE_BUF; // a pipe that is ready takes as many and makes nobody wait
constexpr const char* kFailure = "cannot write the events";
constexpr mode_t kFileMode = 0666; // less the umask

} // namespace

FileDescriptor OpenEvents(const std::string& file) {
    const bool toOutput = file == "-";
    FileDescriptor events(toOutput ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                   : ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode));
    if (!events.IsOpen()) {
        throw UsageError("--events: cannot write " + file + ": " + std::generic_category().message(errno));
    }
    return events;
}

EventWriter::EventWriter(FileDescriptor file, PeriodicLines lines, Clock::time_point start)
    : m_file(std::move(file)), m_start(start), m_filter(lines) {}

void EventWriter::Write(const nlohmann::ordered_json& line) {
    // Names that came from a device may be no text at all.
    m_text += line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    m_text += '\n';
}

void EventWriter::Write(const Journal::Batch& batch) {
    for (const Event& event : batch.events) {
        if (m_filter.Passes(event)) { Write(ToJson(event, m_start)); }
    }
    if (batch.dropped > 0) { Write({{"event", "dropped"}, {"count", batch.dropped}}); }
}

void EventWriter::Flush(const std::function<bool()>& isOver) {
    Clock::time_point lastWritten = Clock::now();
    while (m_written < m_text.size()) {
        if (IsWritable()) {
            WriteSome();
            lastWritten = Clock::now();
        } else if (isOver() && Clock::now() - lastWritten > kLongestPause) {
            throw std::runtime_error(std::string(kFailure) + ": nobody reads them");
        }
    }
    m_text.clear();
    m_written = 0;
}

bool EventWriter::IsWritable() const {
    pollfd file{m_file.Get(), POLLOUT, 0};
    return ::poll(&file, 1, kLongestWaitMs) > 0;
}

void EventWriter::WriteSome() {
    const std::string_view rest = std::string_view(m_text).substr(m_written, kMostAtOnceBytes);
    const ssize_t written = ::write(m_file.Get(), rest.data(), rest.size());
    if (written < 0 && errno != EINTR && errno != EAGAIN) {
        throw std::system_error(errno, std::generic_category(), kFailure);
    }
    m_written += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
}

} // namespace k740::sim
