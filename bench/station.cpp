#include "bench/station.h"

#include "app/k740.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace k740::bench {
namespace {

constexpr std::uint32_t kController = 33;
constexpr const char* kControllerAddress = "192.168.1.33";
constexpr const char* kZones = "002101";
constexpr std::chrono::milliseconds kPoll{5};

void AwaitTaskStatus(int task, int status) {
    while (K740_GetTaskStatus(task) != status) { std::this_thread::sleep_for(kPoll); }
}

} // namespace

Station::Station() : m_network({{}, {kControllerAddress}}) {
    m_network.RunInField([this] { m_field = std::make_unique<sim::Installation>(); });
    AddController();
}

void Station::AddController() {
    m_field->AddZoneController(kController, kControllerAddress).SetKeep(sim::Keep::Counts);
}

void Station::UseLibrary() {
    if (m_libraryInUse) { return; }
    m_libraryInUse = true;
    const bool ready = K740_Initialize() == 0 && K740_SetNIC(sim::kStationAddress) == 0 &&
                       K740_AddDevice(static_cast<int>(kController), 1, kControllerAddress) == 0;
    if (!ready) { throw std::runtime_error("the library cannot be set up"); }
}

void Station::StartTasks(int count) {
    UseLibrary();
    for (int task = 1; task <= count; ++task) {
        if (K740_StartAudioStreamTask(task, 100, 70, 1, kZones, 0) != 0) {
            throw std::runtime_error("a task cannot be started");
        }
    }
    for (int task = 1; task <= count; ++task) { AwaitTaskStatus(task, 2); }
    m_field->Remove(kController);
}

void Station::StopTasks(int count) {
    for (int task = 1; task <= count; ++task) { K740_StopTask(task); }
    // A stopped task is unknown at once, its thread ends a little later; new tasks need its channel.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    AddController();
}

} // namespace k740::bench
