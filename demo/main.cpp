// k740demo: a sample host. It broadcasts a WAV file to one zone and shows the states of the task.
#include "app/k740.h"
#include "demo/options.h"
#include "demo/wav_file.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr int kZoneController = 33;
constexpr int kZoneControllerType = 1;
constexpr const char* kZones = "002101"; // zone 1 of controller 33
constexpr int kTask = 1001;
constexpr int kVolume = 100;
constexpr int kPriority = 70;
constexpr unsigned kBlockMs = 20;
constexpr std::size_t kBlockBytes = 1764; // kBlockMs of audio
constexpr std::size_t kFrameBytes = 4096; // the library sends whole frames
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

/// The last state that the library has reported of the task.
class TaskState {
public:
    void Set(int status) {
        const std::lock_guard lock(m_mutex);
        m_status = status;
        m_changed.notify_all();
    }
    /// @return the first state that satisfies the condition
    template <typename Condition> int WaitUntil(Condition condition) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return condition(m_status); });
        return m_status;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_status = 1;
};

TaskState g_task;

int OnTaskStatus(int taskID, int status) {
    std::printf("task %d: state %d\n", taskID, status);
    if (taskID == kTask) { g_task.Set(status); }
    return 0;
}

int OnZCUStatus(int deviceID, int status, int fault, int* /*amplifiers*/, int /*extraA*/, int /*extraB*/) {
    std::printf("zone controller %d: status %d, fault %d\n", deviceID, status, fault);
    return 0;
}

bool SetUp(const DemoOptions& options) {
    return K740_Initialize() == 0 && K740_SetAudioStreamFormat(0) == 0 && K740_SetNIC(options.nic.c_str()) == 0 &&
           K740_SetNodeID(std::atoi(options.node.c_str())) == 0 &&
           K740_SetFirstMulticastIP(options.firstMulticast.c_str()) == 0 && K740_EnableCallbackLog(1) == 0 &&
           K740_SetDeviceCallback(OnZCUStatus, nullptr, nullptr, OnTaskStatus, nullptr, nullptr, nullptr) == 0 &&
           K740_AddDevice(kZoneController, kZoneControllerType, options.zcuIP.c_str()) == 0;
}

/// Gives the audio to the task at the pace at which it is heard.
void Stream(std::vector<unsigned char>& pcm) {
    K740_PACING pacing{};
    for (std::size_t at = 0; at < pcm.size(); at += kBlockBytes) {
        K740_SleepStart(&pacing);
        const std::size_t length = std::min(kBlockBytes, pcm.size() - at);
        const int result = K740_SendAudioStreamProc(kTask, pcm.data() + at, static_cast<int>(length));
        if (result != 0) { std::printf("audio refused: %d\n", result); }
        K740_SleepEnd(kBlockMs, &pacing);
    }
}

int Broadcast(const DemoOptions& options, std::vector<unsigned char> pcm) {
    pcm.resize((pcm.size() + kFrameBytes - 1) / kFrameBytes * kFrameBytes); // silence up to a whole frame
    const int started =
        K740_StartAudioStreamTask(kTask, kVolume, kPriority, std::atoi(options.recovery.c_str()), kZones, 0);
    if (started != 0) {
        std::printf("failed to start: %d\n", started);
        return kExitFailure;
    }
    const int state = g_task.WaitUntil([](int status) { return status != 1; });
    if (state < 1) {
        std::printf("failed to play: %d\n", state);
        return kExitFailure;
    }
    Stream(pcm);
    K740_StopTask(kTask);
    g_task.WaitUntil([](int status) { return status == 0; });
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // what is printed shall be seen at once, through a pipe too
    DemoOptions options;
    if (!ParseOptions(argc, argv, options)) {
        std::fputs(kDemoUsage, stderr);
        return kExitUsage;
    }
    if (options.help) {
        std::fputs(kDemoUsage, stdout);
        return 0;
    }
    std::vector<unsigned char> pcm;
    try {
        pcm = ReadPcm(options.taskFile);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "k740demo: %s\n", error.what());
        return kExitFailure;
    }
    const int result = SetUp(options) ? Broadcast(options, std::move(pcm)) : kExitFailure;
    K740_Deinitialize();
    return result;
}
