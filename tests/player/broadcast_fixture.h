// A host that broadcasts: the library in a private network with zone controllers, and what its callback is told.
#pragma once

#include "app/application.h"
#include "app/k740.h"
#include "sim/zone_controller.h"
#include "tests/player/task_reports.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr std::chrono::milliseconds kSoon{5000}; // far beyond what is expected
inline constexpr int kTask = 1001;
inline constexpr std::uint32_t kController = 33;
inline constexpr const char* kZones = "0021FF"; // all zones of kController

inline std::string AddressOf(std::uint32_t controller) {
    return "192.168.1." + std::to_string(controller);
}

/// Arguments of K740_StartAudioStreamTask in its order, all good.
struct StreamArguments {
    int taskID = kTask;
    int volume = 100;
    int priority = 70;
    int recovery = 0;
    const char* zones = kZones;
    int dryContact = 0;
};

inline int Start(const StreamArguments& task = {}) {
    return K740_StartAudioStreamTask(task.taskID, task.volume, task.priority, task.recovery, task.zones,
                                     task.dryContact);
}

/// Arguments of K740_StartNetAUXTask in its order, all good.
struct AUXArguments {
    int taskID = kTask;
    int priority = 70;
    int deviceID = 7001;
    const char* multicastIP = "225.1.2.3";
    int auxPort = 4;
    int recovery = 0;
    const char* zones = kZones;
    int dryContact = 0;
};

inline int StartAUX(const AUXArguments& task = {}) {
    return K740_StartNetAUXTask(task.taskID, task.priority, task.deviceID, task.multicastIP, task.auxPort,
                                task.recovery, task.zones, task.dryContact);
}

/// @return what the library knows of a task
inline tagTASK_STATUS RecordOf(int taskID) {
    tagTASK_STATUS record;
    EXPECT_EQ(0, g_app->Player().Status().GetTaskStatus(taskID, record)) << taskID;
    return record;
}

/// Gives bytes of audio to a task in one call.
inline int PushBytes(int taskID, std::vector<std::uint8_t> bytes) {
    return K740_SendAudioStreamProc(taskID, bytes.data(), static_cast<int>(bytes.size()));
}

/// Gives audio to a task in chunks. @return whether all of them were accepted
inline bool PushAudio(int taskID, const std::vector<std::int16_t>& samples, std::size_t chunkBytes) {
    const sim::Bytes bytes = sim::ByteWriter().PutAll(samples).Get();
    for (std::size_t at = 0; at < bytes.size(); at += chunkBytes) {
        const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + chunkBytes, bytes.size()));
        if (PushBytes(taskID, {bytes.begin() + static_cast<std::ptrdiff_t>(at), end}) != 0) { return false; }
    }
    return true;
}

/// The library, one zone controller kController that is registered with it, and a task-status callback.
class BroadcastTest : public OnPrivateNetwork {
protected:
    BroadcastTest() {
        EXPECT_EQ(0, K740_SetDeviceCallback(nullptr, nullptr, nullptr, NoteTaskReport, nullptr, nullptr, nullptr));
    }
    ~BroadcastTest() override { K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); }

    /// Makes a simulated zone controller and registers it.
    sim::ZoneController& AddRegistered(std::uint32_t id) {
        sim::ZoneController& controller = AddZoneController(id, AddressOf(id));
        EXPECT_EQ(0, K740_AddDevice(static_cast<int>(id), 1, AddressOf(id).c_str()));
        return controller;
    }
    static void Reply(sim::ZoneController& controller, sim::PlayReply reply) {
        sim::PlayBehaviour behaviour;
        behaviour.reply = reply;
        controller.SetBehaviour(behaviour);
    }
    void Reply(sim::PlayReply reply) { Reply(m_controller, reply); }

    static void StartAndBroadcast(const StreamArguments& task = {}) {
        const std::ptrdiff_t before = Reports().Count(task.taskID, 2);
        ASSERT_EQ(0, Start(task));
        ASSERT_TRUE(Reports().WaitFor(task.taskID, 2, before + 1));
    }
    static void StopAndWait(int taskID = kTask) {
        const std::ptrdiff_t before = Reports().Count(taskID, 0);
        ASSERT_EQ(0, K740_StopTask(taskID));
        ASSERT_TRUE(Reports().WaitFor(taskID, 0, before + 1));
    }

    [[nodiscard]] std::vector<sim::Event> ReceivedBy(std::uint32_t controller, std::uint16_t command) const {
        return Field().Events().Events(sim::Received(controller, command));
    }
    /// The command's packet that the controller received, waiting for it.
    sim::Packet WaitForPacket(std::uint32_t controller, std::uint16_t command, std::size_t count = 1) const {
        const auto event = Field().Events().WaitFor(sim::Received(controller, command), kSoon, count);
        EXPECT_TRUE(event) << "no " << count << ". packet " << std::hex << command << " at " << controller;
        return event ? event->packet.value_or(sim::Packet{}) : sim::Packet{};
    }

    sim::ZoneController& m_controller = AddRegistered(kController);
};

} // namespace k740::test
