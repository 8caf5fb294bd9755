// Answers an intercom call of a paging station: plays a file to the caller, records the caller, ends with the call.
#include <k740/k740.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace {

constexpr const char* kUsage = "usage: answer_call FILE RECORDING [HOST [STATION [ID]]]\n"
                               "  FILE       played to the caller: 44.1 kHz, 16 bit, mono\n"
                               "  RECORDING  of the caller, samples of the same kind without a header\n"
                               "  HOST       address of this machine, 192.168.1.166\n"
                               "  STATION, ID  of the paging station, 192.168.8.99 and 5000\n";
constexpr int kPagingStation = 2, kVirtualPagingStation = 10; // device types
constexpr int kIntercom = 5500;
constexpr int kInvites = 1, kHungUp = 2; // messages
constexpr int kNotTalking = -2;          // result
constexpr unsigned kBlockMs = 20;
constexpr int kBlockBytes = 1764;              // kBlockMs of audio
constexpr int kMostBlocks = 30'000;            // ten minutes
constexpr std::chrono::seconds kPatience{60};  // for a call
constexpr std::chrono::seconds kUntilHeard{4}; // from accepting; what is sent in the first three is dropped

/// What the threads of the library tell main.
struct Call {
    std::mutex mutex;
    std::condition_variable changed;
    enum { Awaited, Talking, Over } state = Awaited;
    std::FILE* recording = nullptr; // null when nothing is to be recorded any more
    bool WaitFor(decltype(state) wanted, std::chrono::seconds patience) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, [&] { return state >= wanted; });
    }
};
Call& g_call = *new Call; // never destroyed: threads of the library may still call back when main has returned

/// Runs on the thread that receives, so it must be short; K740_Accept may be called here.
int OnMessage(int stationID, int intercomID, int message) {
    const std::lock_guard lock(g_call.mutex);
    if (message == kInvites && K740_Accept(intercomID, stationID) == 0) { g_call.state = Call::Talking; }
    if (message == kHungUp) { g_call.state = Call::Over; }
    std::printf("station %d %s\n", stationID, message == kHungUp ? "hung up" : "calls");
    g_call.changed.notify_all();
    return 0;
}

/// Runs on a thread of the library; the audio is valid during the call only.
int OnAudio(int /*stationID*/, unsigned char* audio, int length) {
    const std::lock_guard lock(g_call.mutex);
    if (g_call.recording != nullptr) { std::fwrite(audio, 1, static_cast<std::size_t>(length), g_call.recording); }
    return 0;
}

/// Plays the file and then silence, until the caller hangs up.
void Play(std::FILE* file) {
    K740_PACING pacing{};
    for (int i = 0; i < kMostBlocks; ++i) {
        std::array<unsigned char, kBlockBytes> block{};
        static_cast<void>(std::fread(block.data(), 1, block.size(), file)); // what is not read stays silence
        K740_SleepStart(&pacing);
        if (K740_SendIntercomAudio(kIntercom, block.data(), kBlockBytes) == kNotTalking) { return; }
        K740_SleepEnd(kBlockMs, &pacing);
    }
}

const char* Answer(int id, std::FILE* file) {
    if (K740_GetDeviceVersion(id, nullptr, 0) < 0) { return "The paging station does not answer."; }
    if (!g_call.WaitFor(Call::Talking, kPatience)) { return "Nobody called."; }
    if (!g_call.WaitFor(Call::Over, kUntilHeard)) { Play(file); }
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    std::FILE* file = argc < 3 || argc > 6 ? nullptr : std::fopen(argv[1], "rb");
    if (file != nullptr) { g_call.recording = std::fopen(argv[2], "wb"); }
    if (g_call.recording == nullptr) {
        std::fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    const int id = argc > 5 ? std::atoi(argv[5]) : 5000;
    const bool ready = K740_Initialize() == 0 && K740_SetNIC(argc > 3 ? argv[3] : "192.168.1.166") == 0 &&
                       K740_SetIntercomCallback(OnMessage, OnAudio) == 0 &&
                       K740_AddDevice(id, kPagingStation, argc > 4 ? argv[4] : "192.168.8.99") == 0 &&
                       K740_AddDevice(kIntercom, kVirtualPagingStation, "") == 0;
    const char* error = ready ? Answer(id, file) : "An argument was refused: see k740log/k740sdk.log";
    K740_HangUp(kIntercom);
    K740_Deinitialize();
    const std::lock_guard lock(g_call.mutex);
    std::fclose(std::exchange(g_call.recording, nullptr));
    if (error != nullptr) { std::fprintf(stderr, "%s\n", error); }
    return error == nullptr ? EXIT_SUCCESS : EXIT_FAILURE;
}
