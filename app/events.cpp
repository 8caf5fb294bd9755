// The two event threads: they tell the host about statuses and volumes.
#include "app/application.h"
#include "common/stopwatch.h"
#include "common/worker.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr unsigned kFullPassPeriodMs = 4999; // a full pass comes once more than this has passed
constexpr unsigned kChangePassPauseMs = 500;
constexpr unsigned kAfterStatusMs = 2;
constexpr unsigned kAfterChangeMs = 1;
constexpr unsigned kVolumePassPauseMs = 50;
constexpr unsigned kAfterVolumeV2Ms = 3;
constexpr unsigned kAfterVolumeV3Ms = 2;
constexpr int kZoneFault = 64; // added to a zone's state
constexpr uint8_t kNoChannel = 255;
constexpr int kVolumesV2 = 8;
constexpr int kVolumesV3 = 10;

/// Devices report attenuation in steps, the host is told loudness.
int VolumeOf(uint8_t raw) {
    return raw == kNoChannel ? -1 : kQuietestLevel - raw;
}

/// @param volumes  receives the loudness of each raw level, then -1 for the rest
template <std::size_t kLevels, std::size_t kVolumes>
void FillVolumes(const uint8_t (&levels)[kLevels], int (&volumes)[kVolumes]) {
    std::fill(std::begin(volumes), std::end(volumes), -1);
    std::transform(std::begin(levels), std::end(levels), std::begin(volumes), VolumeOf);
}

} // namespace

void CK740ControlApp::StartEventThreads() {
    StartServiceThread("k740-events1", [this] { ThreadTriggerEvents1(); });
    StartServiceThread("k740-events2", [this] { ThreadTriggerEvents2(); });
}

void CK740ControlApp::ThreadTriggerEvents1() {
    CQBTime sinceFullPass;
    sinceFullPass.TimeStart();
    std::deque<tagZCU_QUERYSTATUS2> previous;
    RunWorker(m_lifetime, kChangePassPauseMs, [&] {
        if (sinceFullPass.TimeEnd() > kFullPassPeriodMs) {
            sinceFullPass.TimeStart();
            PostAllStatus();
        }
        PostChangedStatus(previous);
    });
}

void CK740ControlApp::PostAllStatus() {
    for (const tagZCU_QUERYSTATUS2& record : m_zcu.GetAllZCUStatus()) {
        PostZCUDeviceStatus(record);
        m_lifetime.Pause(kAfterStatusMs);
    }
    for (const tagRPK_QUERYSTATUS& record : m_rpk.GetAllRPKStatus()) {
        PostRPKDeviceStatus(record);
        m_lifetime.Pause(kAfterStatusMs);
    }
}

void CK740ControlApp::PostChangedStatus(std::deque<tagZCU_QUERYSTATUS2>& previous) {
    std::deque<tagZCU_QUERYSTATUS2> current = m_zcu.GetAllZCUStatus();
    for (const tagZCU_QUERYSTATUS2& record : current) {
        const auto before = std::find(previous.begin(), previous.end(), record.DeviceID());
        if (before == previous.end()) {
            PostZCUDeviceStatus(record);
        } else if (!record.HasSameStatus(*before)) {
            PostZCUDeviceStatus(record);
            m_lifetime.Pause(kAfterChangeMs);
        }
    }
    previous = std::move(current);
}

int CK740ControlApp::PostZCUDeviceStatus(const tagZCU_QUERYSTATUS2& record) {
    const int id = record.DeviceID();
    // What the library plays itself is no news to the host, so only the other clients of a virtual controller hear it.
    if (m_devices.GetDeviceType(id) == kDeviceVirtualZoneController) { return 0; }
    const _zcu_status_payload_t& payload = record.status;
    const int status = payload.deviceStatus >= 1 && payload.deviceStatus <= 4 ? payload.deviceStatus : 0;
    const int result = status >= 1 && status <= 3 ? 1 : 0;
    if (!m_devices.IsDeviceIDValid(id)) { return result; }

    // The host's pointers need aligned arrays, which a packed record does not have.
    int amplifiers[8];
    int states[8];
    unsigned tasks[8];
    for (int i = 0; i < 8; ++i) {
        amplifiers[i] = i < 4 ? payload.amplifiers1to4[i] : payload.amplifiers5to8[i - 4];
        states[i] = payload.zoneStates[i] + ((payload.zoneFaults >> i & 1) != 0 ? kZoneFault : 0);
        tasks[i] = payload.zoneTasks[i];
    }
    m_callbacks.ZCUStatus(id, status, payload.deviceFault, amplifiers, payload.extraA, payload.extraB);
    m_callbacks.ZoneStatus(id, states, tasks);
    return result;
}

void CK740ControlApp::PostRPKDeviceStatus(const tagRPK_QUERYSTATUS& record) {
    const int id = record.DeviceID();
    if (!m_devices.IsDeviceIDValid(id)) { return; }
    const _rpk_status_payload_t& payload = record.status;
    const int state = record.IsOffLine() ? 0 : payload.state == 2 ? 2 : 1;
    m_callbacks.RPKStatus(id, state, payload.activity + 1, payload.wordA, payload.extra, payload.wordB);
}

void CK740ControlApp::ThreadTriggerEvents2() {
    RunWorker(m_lifetime, kVolumePassPauseMs, [this] {
        m_zcu.AwaitVolumes(kIdleWaitMs);
        PostVolumes();
    });
}

void CK740ControlApp::PostVolumes() {
    const auto post = [this](const auto& answer, auto& volumes, unsigned pauseMs) {
        if (answer.volumes.valid != kVolumeAnswerValid) { return; }
        FillVolumes(answer.volumes.levels, volumes);
        if (m_callbacks.ZCUVolume(static_cast<int>(answer.zcuID), volumes)) { m_lifetime.Pause(pauseMs); }
    };
    int volumesV2[kVolumesV2];
    for (const auto& answer : m_zcu.VolumesV2().TakeAll()) { post(answer, volumesV2, kAfterVolumeV2Ms); }
    int volumesV3[kVolumesV3];
    for (const auto& answer : m_zcu.VolumesV3().TakeAll()) { post(answer, volumesV3, kAfterVolumeV3Ms); }
}
