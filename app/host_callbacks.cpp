#include "app/host_callbacks.h"

#include "common/format.h"
#include "common/worker.h"
#include "log/log.h"

void CHostCallbacks::Clear() {
    zcuStatus.Set(nullptr);
    rpkStatus.Set(nullptr);
    zoneStatus.Set(nullptr);
    zcuVolume.Set(nullptr);
    taskStatus.Set(nullptr);
    monitorZone.Set(nullptr);
    trainMessage.Set(nullptr);
    trainAudio.Set(nullptr);
    rpkPTTAudio.Set(nullptr);
    intercomMessage.Set(nullptr);
    intercomAudio.Set(nullptr);
    EnableLog(false);
}

namespace {

/// @return the audio as the log shows it: its first samples and its length
std::string Describe(const HostAudio& audio) {
    const short* s = audio.samples;
    return Format("{%u,%u,%u,%u,%u,%u,%u,%u ...}, %u", unsigned(s[0]), unsigned(s[1]), unsigned(s[2]), unsigned(s[3]),
                  unsigned(s[4]), unsigned(s[5]), unsigned(s[6]), unsigned(s[7]), unsigned(audio.bytes));
}

} // namespace

template <typename Function, typename Call, typename Describe>
bool CHostCallbacks::Deliver(const CCallbackSlot<Function>& slot, Call call, Describe describe) {
    const Function function = slot.Get();
    if (function == nullptr) { return false; }
    ContainExceptions([&] { call(function); });
    if (IsLogEnabled()) {
        ContainExceptions([&] { m_log.PushLog2(slot.Type(), kLogInfo, slot.Type() + describe()); });
    }
    return true;
}

// The log prints every value unsigned, negative ones too; only volumes keep their sign.

void CHostCallbacks::ZCUStatus(int deviceID, int status, int fault, int (&amplifiers)[8], int extraA, int extraB) {
    Deliver(
        zcuStatus, [&](PZCUSTATUS function) { function(deviceID, status, fault, amplifiers, extraA, extraB); },
        [&] {
            const auto& a = reinterpret_cast<const unsigned(&)[8]>(amplifiers);
            return Format("(%u, %u, %u, {%u,%u,%u,%u,%u,%u,%u,%u}, %u, %u)", unsigned(deviceID), unsigned(status),
                          unsigned(fault), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], unsigned(extraA),
                          unsigned(extraB));
        });
}

void CHostCallbacks::ZoneStatus(int deviceID, int (&states)[8], unsigned (&tasks)[8]) {
    Deliver(
        zoneStatus, [&](PZONESTATUS function) { function(deviceID, states, tasks); },
        [&] {
            const auto& s = reinterpret_cast<const unsigned(&)[8]>(states);
            return Format("(%u,  {%u,%u,%u,%u,%u,%u,%u,%u}, {%u,%u,%u,%u,%u,%u,%u,%u})", unsigned(deviceID), s[0], s[1],
                          s[2], s[3], s[4], s[5], s[6], s[7], tasks[0], tasks[1], tasks[2], tasks[3], tasks[4],
                          tasks[5], tasks[6], tasks[7]);
        });
}

bool CHostCallbacks::ZCUVolume(int deviceID, int* volumes) {
    return Deliver(
        zcuVolume, [&](PZCUVOLUME function) { function(deviceID, volumes); },
        [&] {
            return Format("(%u, {%d,%d,%d,%d,%d,%d,%d,%d})", unsigned(deviceID), volumes[0], volumes[1], volumes[2],
                          volumes[3], volumes[4], volumes[5], volumes[6], volumes[7]);
        });
}

void CHostCallbacks::TaskStatus(int taskID, int status) {
    Deliver(
        taskStatus, [&](PTASKSTATUS function) { function(taskID, status); },
        [&] { return Format("(%u, %u)", unsigned(taskID), unsigned(status)); });
}

void CHostCallbacks::RPKStatus(int deviceID, int state, int activity, int wordA, int extra, int wordB) {
    Deliver(
        rpkStatus, [&](PRPKSTATUS function) { function(deviceID, state, activity, wordA, extra, wordB); },
        [&] {
            return Format("(%u, %u, %u, %u, %u, %u)", unsigned(deviceID), unsigned(state), unsigned(activity),
                          unsigned(wordA), unsigned(extra), unsigned(wordB));
        });
}

void CHostCallbacks::MonitorZone(int deviceID, int zone, const HostAudio& audio) {
    Deliver(
        monitorZone, [&](PMONITORZONE function) { function(deviceID, zone, audio.Bytes(), audio.bytes); },
        [&] { return Format("(%u, %u, %s)", unsigned(deviceID), unsigned(zone), Describe(audio).c_str()); });
}

void CHostCallbacks::TrainMessage(int sourceID, int deviceID, int message) {
    Deliver(
        trainMessage, [&](PTRAINMESSAGE function) { function(sourceID, deviceID, message); },
        [&] { return Format("(%u, %u, %u)", unsigned(sourceID), unsigned(deviceID), unsigned(message)); });
}

void CHostCallbacks::TrainAudio(int sourceID, int taskID, const HostAudio& audio) {
    Deliver(
        trainAudio, [&](PTRAINAUDIO function) { function(sourceID, taskID, audio.Bytes(), audio.bytes); },
        [&] { return Format("(%u, %u, %s)", unsigned(sourceID), unsigned(taskID), Describe(audio).c_str()); });
}

void CHostCallbacks::RPKPTTAudio(int deviceID, int kind, const HostAudio& audio) {
    Deliver(
        rpkPTTAudio, [&](PRPKPTTAUDIO function) { function(deviceID, kind, audio.Bytes(), audio.bytes); },
        [&] { return Format("(%u, %u, %s)", unsigned(deviceID), unsigned(kind), Describe(audio).c_str()); });
}

void CHostCallbacks::IntercomMessage(int stationID, int intercomID, int message) {
    Deliver(
        intercomMessage, [&](PINTERCOMMESSAGE function) { function(stationID, intercomID, message); },
        [&] { return Format("(%u, %u, %u)", unsigned(stationID), unsigned(intercomID), unsigned(message)); });
}

void CHostCallbacks::IntercomAudio(int stationID, const HostAudio& audio) {
    Deliver(
        intercomAudio, [&](PINTERCOMAUDIO function) { function(stationID, audio.Bytes(), audio.bytes); },
        [&] { return Format("(%u, %s)", unsigned(stationID), Describe(audio).c_str()); });
}
