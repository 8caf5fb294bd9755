#include "log/log.h"

#include "common/clock_text.h"
#include "common/qbstring.h"
#include "common/stopwatch.h"
#include "common/text_file.h"
#include "common/worker.h"
#include "log/callback_types.h"

namespace {

constexpr unsigned kWritePeriodMs = 200;
constexpr unsigned kLastPassWaitMs = 200;
constexpr const char* kSDKLogName = "k740sdk";
constexpr const char* kLogExtension = ".log";
constexpr const char* kErrorMark = "*****";
constexpr const char* kRemovedLine = "------------remove log------------\n";

// The year has two digits.
std::string TimeStamp() {
    return GetNowString(kDateAndMilliseconds).substr(2);
}

void AppendToFile(const std::string& path, const std::string& text) {
    if (WriteLog(path, text) == 1) { WriteLog(path, TimeStamp() + "\t" + kRemovedLine); }
}

} // namespace

void CLog::Initialization() {
    StartThread("k740-log", [this] { ThreadSaveLog(); });
}

void CLog::PushLog(const std::string& /*type*/, uint8_t level, const std::string& text) {
    if (m_finished) { return; }
    m_lines.Append(TimeStamp() + "\t" + (level == kLogError ? kErrorMark : "") + text);
}

void CLog::PushLog2(const std::string& type, uint8_t /*level*/, const std::string& text) {
    if (m_finished) { return; }
    tagLOG_CALLBACK record;
    Xstrcpy(record.type, type, sizeof(record.type) - 1);
    Xstrcpy(record.text, TimeStamp() + "\t" + text, sizeof(record.text) - 1);
    m_callbackLines.Append(record);
}

void CLog::SaveSDKLog() {
    std::string text;
    for (const std::string& line : m_lines.TakeAll()) { text += line + "\n"; }
    if (!text.empty()) { AppendToFile(FilePath(kSDKLogName), text); }
}

void CLog::SaveCallbackLog() {
    const std::deque<tagLOG_CALLBACK> records = m_callbackLines.TakeAll();
    for (const char* type : kCallbackTypes) { SaveTypeCallback(type, records); }
}

void CLog::SaveTypeCallback(const std::string& type, const std::deque<tagLOG_CALLBACK>& records) {
    std::string text;
    for (const tagLOG_CALLBACK& record : records) {
        if (type == record.type) { text += std::string(record.text) + "\n"; }
    }
    if (!text.empty()) { AppendToFile(FilePath(type), text); }
}

std::string CLog::FilePath(const std::string& name) const {
    return m_baseDirectory + "/" + kLogDirectory + "/" + name + kLogExtension;
}

void CLog::ThreadSaveLog() {
    bool lastPass = false;
    while (!lastPass) {
        m_finishRequested.Wait(kWritePeriodMs);
        lastPass = m_finishing;
        ContainExceptions([this] {
            SaveSDKLog();
            SaveCallbackLog();
        });
    }
    m_finished = true;
}

void CLog::Finish() {
    m_finishing = true;
    m_finishRequested.Raise();
    AwaitCondition([this] { return m_finished.load(); }, kLastPassWaitMs);
}
