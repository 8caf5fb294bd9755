// A log without its writer, so that a test alone decides when it is written.
#pragma once

#include "common/thread.h"
#include "log/log.h"
#include "tests/support/sdk_log.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>

namespace k740::test {

inline constexpr std::uintmax_t kLogFileBound = 52'428'800; // bytes; a larger file is deleted

/// Whether a text is a time stamp with a year of two digits.
inline bool IsTimeStamp(const std::string& text) {
    return ::testing::Matches(
        ::testing::MatchesRegex("[0-9]{2}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}"))(text);
}

inline std::string TimeStampOf(const std::string& line) {
    return line.substr(0, line.find('\t'));
}

/// Makes a log file of this size that takes no room.
inline void MakeLogFile(std::uintmax_t size, const std::string& name = kSDKLog) {
    std::ofstream(LogPath(name)).flush();
    std::filesystem::resize_file(LogPath(name), size);
}

class LogFixture : public ::testing::Test {
protected:
    LogFixture() {
        std::filesystem::create_directory("k740log");
        m_log.SetBaseDirectory(m_directory.Path().string());
    }

    void Push(const std::string& text) { m_log.PushLog("", 0, text); }
    static bool HasFile(const std::string& name = kSDKLog) { return std::filesystem::exists(LogPath(name)); }
    static std::ptrdiff_t CountFiles() {
        return std::distance(std::filesystem::directory_iterator("k740log"), std::filesystem::directory_iterator());
    }

private:
    const TemporaryDirectory m_directory;

protected:
    CLog m_log;
};

} // namespace k740::test
