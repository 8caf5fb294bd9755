// The library's log files, as they lie below the test's working directory.
#pragma once

#include "tests/support/wait_until.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr const char* kSDKLog = "k740sdk";

/// @param name  "k740sdk" or the name of a callback type
inline std::string LogPath(const std::string& name = kSDKLog) {
    return "k740log/" + name + ".log";
}

/// @return the whole file as it is now; empty when there is none
inline std::string ReadTextFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline std::string ReadLog(const std::string& name = kSDKLog) {
    return ReadTextFile(LogPath(name));
}

/// @return the complete lines of a log, time stamps included
inline std::vector<std::string> LogLines(const std::string& name = kSDKLog) {
    std::vector<std::string> lines;
    std::istringstream text(ReadLog(name));
    for (std::string line; std::getline(text, line) && !text.eof();) { lines.push_back(line); }
    return lines;
}

/// @return what follows the time stamp and the tab: the text, behind "*****" for an error
inline std::string TextOfLine(const std::string& line) {
    const std::size_t tab = line.find('\t');
    return tab == std::string::npos ? line : line.substr(tab + 1);
}

/// @return the complete lines of a log without their time stamps and tabs
inline std::vector<std::string> LogTexts(const std::string& name = kSDKLog) {
    std::vector<std::string> texts = LogLines(name);
    std::transform(texts.begin(), texts.end(), texts.begin(), TextOfLine);
    return texts;
}

/// @return how many lines contain the text
inline std::ptrdiff_t CountLogLines(const std::string& text, const std::string& name = kSDKLog) {
    const std::vector<std::string> lines = LogLines(name);
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

/// Blocks until that many lines of the SDK log contain the text; the library writes every 200 ms.
/// @return whether they came in time
inline bool WaitForLogLine(const std::string& text, std::ptrdiff_t count = 1) {
    return WaitUntil([&] { return CountLogLines(text) >= count; });
}

/// @return how many lines of the SDK log are exactly this text, error mark included, behind their time stamps
inline std::ptrdiff_t CountExactLines(const std::string& text) {
    const std::vector<std::string> texts = LogTexts();
    return std::count(texts.begin(), texts.end(), text);
}

/// Blocks until there are that many of these. @return whether they came in time
inline bool WaitForExactLine(const std::string& text, std::ptrdiff_t count = 1) {
    return WaitUntil([&] { return CountExactLines(text) >= count; });
}

/// WaitForLogLine for the log of a callback type.
inline bool WaitForCallbackLogLine(const std::string& type, const std::string& text, std::ptrdiff_t count = 1) {
    return WaitUntil([&] { return CountLogLines(text, type) >= count; });
}

} // namespace k740::test
