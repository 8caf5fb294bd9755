#include "player/file_task.h"

#include "app/application.h"
#include "app/k740.h"
#include "common/format.h"
#include "common/qbstring.h"
#include "common/stopwatch.h"

#include <array>
#include <cstdio>
#include <memory>

namespace {

constexpr unsigned kPollMs = 20;
constexpr unsigned kChunkMs = 20;
constexpr std::size_t kChunkBytes = 1764;  // 20 ms of 44.1 kHz
constexpr std::size_t kSkippedBytes = 100; // taken for a header, of whatever format
constexpr unsigned kStatusCheckMs = 199;   // the state is read once more than this has passed
constexpr unsigned kEmptyPassPauseMs = 20; // after a pass that pushed nothing

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

} // namespace

bool CFileTask::AwaitBroadcast() {
    const CTaskStatusTable& table = m_app.Player().Status();
    int status = kTaskAccepted;
    while (status == kTaskAccepted && !m_app.Lifetime().IsExiting()) {
        m_app.Lifetime().Pause(kPollMs);
        status = table.GetTaskStatus(m_taskID);
    }
    return status > kTaskAccepted;
}

void CFileTask::Play(const std::vector<std::string>& files, int repeat) {
    // The passes alone count, whether or not the task goes on; after a stop or the shutdown a file takes 200 ms at
    // most.
    for (unsigned pass = 1; repeat == 0 || pass <= static_cast<unsigned>(repeat); ++pass) {
        bool pushed = false;
        for (const std::string& file : files) {
            pushed |= PlayFile(qbstring::trimString(file), static_cast<int>(pass), repeat);
        }
        if (!pushed) { m_app.Lifetime().Pause(kEmptyPassPauseMs); }
    }
}

bool CFileTask::PlayFile(const std::string& path, int pass, int repeat) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
    if (file == nullptr) {
        m_app.Log().PushLog("", kLogError, Format("Failed to open %s", path.c_str()));
        return false;
    }
    std::array<unsigned char, kChunkBytes> chunk{};
    [[maybe_unused]] const std::size_t skipped = std::fread(chunk.data(), 1, kSkippedBytes, file.get());
    m_app.Log().PushLog("", kLogInfo, Format("Start to play file %s, repeat %d/%d, ...", path.c_str(), pass, repeat));

    bool pushed = false;
    K740_PACING pacing{};
    CQBTime sinceCheck;
    sinceCheck.TimeStart();
    while (true) {
        K740_SleepStart(&pacing);
        if (sinceCheck.TimeEnd() > kStatusCheckMs) {
            if (m_app.Player().Status().GetTaskStatus(m_taskID) != kTaskBroadcasting) { break; }
            sinceCheck.TimeStart();
        }
        chunk.fill(0);
        if (std::fread(chunk.data(), 1, chunk.size(), file.get()) == 0) { break; }
        K740_SendAudioStreamProc(m_taskID, chunk.data(), static_cast<int>(chunk.size()));
        pushed = true;
        K740_SleepEnd(kChunkMs, &pacing);
    }
    return pushed;
}
