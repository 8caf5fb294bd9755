// Tells the version and the volumes of a zone controller, sets all its volumes and reads them back.
#include <k740/k740.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <utility>

namespace {

using Volumes = std::array<int, 8>; // 0 quiet to 19 loud, -1 for a channel that the controller does not have

constexpr const char* kUsage = "usage: volume_and_version LEVEL [HOST [CONTROLLER [ID]]]\n"
                               "  LEVEL  0 quiet to 19 loud\n"
                               "  HOST   address of this machine, 192.168.1.166\n"
                               "  CONTROLLER, ID  of the zone controller, 192.168.1.33 and 33\n";
constexpr int kZoneController = 1; // device type
constexpr std::chrono::seconds kPatience{4};

/// The volumes that the library has told last.
class Inbox {
public:
    void Put(const Volumes& volumes) {
        const std::lock_guard lock(m_mutex);
        m_volumes = volumes;
        m_changed.notify_one();
    }
    /// Waits for volumes and takes them out. @return nothing when none came: volumes are asked for once, without retry
    std::optional<Volumes> Take() {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, kPatience, [this] { return m_volumes.has_value(); });
        return std::exchange(m_volumes, std::nullopt);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Volumes> m_volumes;
};

Inbox& g_inbox = *new Inbox; // never destroyed: threads of the library may still call back when main has returned

/// Runs on a thread of the library; the array is valid during the call only.
int OnVolume(int /*deviceID*/, int* volumes) {
    Volumes copy{};
    std::copy_n(volumes, copy.size(), copy.begin());
    g_inbox.Put(copy);
    return 0;
}

void Print(const char* title, const Volumes& volumes) {
    std::printf("%s:", title);
    for (const int volume : volumes) { std::printf(" %d", volume); }
    std::printf("\n");
}

/// @return what went wrong, null when nothing did
const char* SetVolumes(int id, int level) {
    std::array<char, 128> version{};
    if (K740_GetDeviceVersion(id, version.data(), version.size() - 1) < 0) { return "No version came."; }
    std::printf("version: %s\n", version.data());

    if (K740_GetVolume(id) != 0) { return "The controller was not asked for its volumes."; }
    const std::optional<Volumes> before = g_inbox.Take();
    if (!before) { return "No volumes came."; }
    Print("volumes before", *before);

    Volumes wanted{};
    wanted.fill(level);
    if (K740_SetVolume(id, wanted.data()) != 0) { return "The volumes were refused."; }
    const std::optional<Volumes> after = g_inbox.Take(); // the library reads them back by itself
    if (!after) { return "The controller has not acknowledged the volumes."; }
    Print("volumes after", *after);
    const bool taken = std::all_of(after->begin(), after->end(), [=](int v) { return v == level || v == -1; });
    return taken ? nullptr : "The controller has not taken the volumes.";
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 5) {
        std::fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    const int id = argc > 4 ? std::atoi(argv[4]) : 33;
    const bool ready = K740_Initialize() == 0 && K740_SetNIC(argc > 2 ? argv[2] : "192.168.1.166") == 0 &&
                       K740_SetDeviceCallback(nullptr, nullptr, OnVolume, nullptr, nullptr, nullptr, nullptr) == 0 &&
                       K740_AddDevice(id, kZoneController, argc > 3 ? argv[3] : "192.168.1.33") == 0;
    const char* error = ready ? SetVolumes(id, std::atoi(argv[1])) : "An argument was refused: see k740log/k740sdk.log";
    if (error != nullptr) { std::fprintf(stderr, "%s\n", error); }
    K740_Deinitialize();
    return error == nullptr ? EXIT_SUCCESS : EXIT_FAILURE;
}
