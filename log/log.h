// The library's log and the log of callback invocations.
#pragma once

#include "common/bounded_table.h"
#include "common/wake_signal.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>

inline constexpr uint8_t kLogInfo = 0;
inline constexpr uint8_t kLogError = 4;
inline constexpr std::size_t kMaxQueuedLogLines = 10'240;
inline constexpr const char* kLogDirectory = "k740log";

/// One line of the callback log.
struct tagLOG_CALLBACK {
    char type[50];   // callback type name, such as "PZCUSTATUS"; at most 49 characters
    char text[2048]; // time stamp, tab and description; at most 2047 characters
};
static_assert(sizeof(tagLOG_CALLBACK) == 2098);

/// Queues lines from any thread and writes them to files in "k740log" on a thread of its own, every 200 ms.
///
/// Files: "k740sdk.log" and one for each callback type. A full queue drops its oldest line for each new one. A file
/// that has grown beyond 50 MiB is deleted and begun anew with a line that says so. Lines that come after the writer's
/// last pass are dropped.
class CLog {
public:
    virtual ~CLog() = default;

    /// @param directory  where "k740log" is; set before Initialization
    void SetBaseDirectory(const std::string& directory) { m_baseDirectory = directory; }
    /// Starts the writer.
    void Initialization();

    /// Queues a line of the library's log.
    /// @param type   the subsystem that speaks; not written
    /// @param level  kLogError puts "*****" before the text
    void PushLog(const std::string& type, uint8_t level, const std::string& text);
    /// Queues a line of the callback log. @param type  the callback's type name, which selects the file
    void PushLog2(const std::string& type, uint8_t level, const std::string& text);

    /// Writes what is queued; called by the writer thread.
    void SaveSDKLog();
    void SaveCallbackLog();
    /// Writes the records of one type.
    void SaveTypeCallback(const std::string& type, const std::deque<tagLOG_CALLBACK>& records);

    /// Makes the writer write what is queued and end. Blocks until it has, for up to 200 ms if the disk is slow.
    void Finish();

private:
    void ThreadSaveLog();
    std::string FilePath(const std::string& name) const;

    std::string m_baseDirectory; // set before the writer starts
    CWakeSignal m_finishRequested;
    std::atomic<bool> m_finishing{false};
    std::atomic<bool> m_finished{false};
    CBoundedTable<std::string, kMaxQueuedLogLines> m_lines;
    CBoundedTable<tagLOG_CALLBACK, kMaxQueuedLogLines> m_callbackLines;
};
