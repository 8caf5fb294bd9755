// A station of its own, which broadcasts to the virtual zone controller of another one. Its argument is the directory
// to work in; its exit status tells which of its steps failed.
#include "tests/zcu/second_station.h"

#include "app/k740.h"
#include "sim/wire.h"
#include "tests/support/wait_until.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>

namespace k740::test {
namespace {

constexpr int kPeriodMs = 20;
constexpr std::size_t kPeriodSamples = 882;

std::atomic<int> g_controllerStatus{-1};
std::atomic<int> g_taskStatus{-1};

int NoteController(int device, int status, int, int*, int, int) {
    if (device == kSharedController) { g_controllerStatus = status; }
    return 0;
}

int NoteTask(int, int status) {
    g_taskStatus = status;
    return 0;
}

bool WaitFor(const std::atomic<int>& value, int expected) {
    return WaitUntil([&] { return value == expected; });
}

bool SetUp() {
    return K740_SetNIC(kSecondStationIP) == 0 && K740_SetNodeID(kSecondNode) == 0 &&
           K740_SetDeviceCallback(NoteController, nullptr, nullptr, NoteTask, nullptr, nullptr, nullptr) == 0 &&
           K740_AddDevice(kSharedController, 1, sim::kStationAddress) == 0;
}

std::string Version() {
    std::string text(64, '\0');
    K740_GetDeviceVersion(kSharedController, text.data(), static_cast<int>(text.size()));
    return text.c_str();
}

/// Pushes the audio as a host does that makes it in real time.
bool Broadcast(std::vector<std::int16_t> audio) {
    K740_PACING pacing{};
    for (std::size_t at = 0; at < audio.size(); at += kPeriodSamples) {
        K740_SleepStart(&pacing);
        const std::size_t samples = std::min(kPeriodSamples, audio.size() - at);
        auto* bytes = reinterpret_cast<unsigned char*>(audio.data() + at);
        if (K740_SendAudioStreamProc(kSharedTask, bytes, static_cast<int>(2 * samples)) != 0) { return false; }
        K740_SleepEnd(kPeriodMs, &pacing);
    }
    return true;
}

int Run() {
    if (!SetUp()) { return 2; }
    if (!WaitFor(g_controllerStatus, kWorking)) { return 3; }
    if (Version() != "APP:1.0.4, MCU:, Kernel:") { return 4; }
    if (K740_StartAudioStreamTask(kSharedTask, 100, 70, 0, "0384FF", 0) != 0) { return 5; }
    if (!WaitFor(g_taskStatus, 2)) { return 6; }
    if (!WaitUntil([] { return std::filesystem::exists(kMayPlay); })) { return 7; }
    if (!Broadcast(SharedAudio())) { return 8; }
    K740_StopTask(kSharedTask);
    if (!WaitFor(g_taskStatus, 0)) { return 9; }
    K740_Deinitialize();
    return 0;
}

} // namespace
} // namespace k740::test

int main(int argc, char** argv) {
    if (argc != 2 || chdir(argv[1]) != 0) { return 1; }
    return k740::test::Run();
}
