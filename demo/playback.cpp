#include "demo/playback.h"

#include "app/k740.h"
#include "common/stopwatch.h"
#include "demo/looped_file.h"
#include "player/pacing.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

constexpr int kVolume = 100;
constexpr int kPriority = 70;
constexpr int kRecovery = 1;
constexpr int kAccepted = 1;
constexpr int kBlocksPerReport = 50;
constexpr unsigned kBlockMs = 20;
constexpr std::chrono::milliseconds kPoll{20};
constexpr std::chrono::seconds kBeforeStart{1};
constexpr int kIntercom = 5500;
constexpr std::size_t kBlockBytes = 1764;         // 20 ms at 44.1 kHz
constexpr std::size_t kIntercomBlockBytes = 3528; // 40 ms
constexpr int kSilentPeriods = 5;
constexpr const char* kSecondTaskFile = "/home/test442.wav";

int g_blocks1 = 0; // sent since the last report
int g_blocks2 = 0;

/// Pushes blocks to a task and counts them.
class BlockSender {
public:
    BlockSender(int task, int& blocks) : m_task(task), m_blocks(blocks) { m_stopwatch.TimeStart(); }

    void Send(LoopedFile& file) {
        file.Read(m_block.data(), m_block.size());
        K740_SendAudioStreamProc(m_task, m_block.data(), static_cast<int>(m_block.size()));
        if (++m_blocks < kBlocksPerReport) { return; }
        std::printf("send task audio stream cost:%f\n", m_stopwatch.TimeEnd() / static_cast<double>(kBlocksPerReport));
        m_stopwatch.TimeStart();
        m_blocks = 0;
    }

private:
    const int m_task;
    int& m_blocks;
    CQBTime m_stopwatch;
    std::array<unsigned char, kBlockBytes> m_block{};
};

/// @return the state after which a task is no longer merely accepted
int AwaitTask(int task) {
    int status = kAccepted;
    while (status == kAccepted) {
        std::this_thread::sleep_for(kPoll);
        status = K740_GetTaskStatus(task);
    }
    return status;
}

} // namespace

DemoOptions& Options() {
    static auto& options = *new DemoOptions;
    return options;
}

void ThreadPlay1() {
    constexpr int kTask = 1001;
    std::this_thread::sleep_for(kBeforeStart);
    const int result = K740_StartAudioStreamTask(kTask, kVolume, kPriority, kRecovery, "002101", 0);
    if (result != 0) {
        std::printf("failed to start:%d, %d\n", kTask, result);
        return;
    }
    const int status = AwaitTask(kTask);
    if (status < kAccepted) {
        std::printf("failed to play:%d, %d\n", kTask, status);
        return;
    }
    std::printf("play is ok:%d\n", status);
    LoopedFile file(Options().taskFile);
    if (!file.IsOpen()) {
        std::printf("failed to open the wav file");
        return;
    }
    BlockSender sender(kTask, g_blocks1);
    K740_PACING pacing{};
    K740_SleepStart(&pacing);
    while (true) {
        sender.Send(file);
        K740_SleepEnd(kBlockMs, &pacing);
        K740_SleepStart(&pacing);
    }
}

void ThreadPlay2() {
    constexpr int kTask = 1002;
    std::this_thread::sleep_for(kBeforeStart);
    if (K740_StartAudioStreamTask(kTask, kVolume, kPriority, kRecovery, "038401", 0) != 0) { return; }
    if (AwaitTask(kTask) < kAccepted) { return; }
    LoopedFile file(kSecondTaskFile);
    if (!file.IsOpen()) { return; }
    BlockSender sender(kTask, g_blocks2);
    K740_PACING pacing{};
    while (true) {
        K740_SleepStart(&pacing);
        sender.Send(file);
        K740_SleepEnd(kBlockMs, &pacing);
    }
}

void ThreadIntercom() {
    LoopedFile file(Options().intercomFile);
    if (!file.IsOpen()) { return; }
    std::array<unsigned char, kIntercomBlockBytes> block{};
    file.Read(block.data(), block.size());
    CQBTime stopwatch;
    int drift = 0;
    std::array<unsigned char, kIntercomBlockBytes> silence{};
    for (int i = 0; i < kSilentPeriods; ++i) {
        stopwatch.TimeStart();
        K740_SendIntercomAudio(kIntercom, silence.data(), static_cast<int>(silence.size()));
        MultiCastSleep20(drift, stopwatch);
    }
    while (true) {
        stopwatch.TimeStart();
        file.Read(block.data(), block.size());
        // Twice as fast as the station hears it: the library refuses what it has no room for.
        K740_SendIntercomAudio(kIntercom, block.data(), static_cast<int>(block.size()));
        MultiCastSleep20(drift, stopwatch);
    }
}
