// The host's callbacks: their table, how they are called, and the log of their invocations.
#pragma once

#include "app/k740.h"
#include "log/callback_types.h"

#include <atomic>

class CLog;

/// A place for one callback. The pointer is read once for each call, so that a host may switch it off at any time.
template <typename Function> class CCallbackSlot {
public:
    /// @param type  the callback type's name
    explicit CCallbackSlot(const char* type) : m_type(type) {}

    const char* Type() const { return m_type; }
    void Set(Function function) { m_function = function; }
    Function Get() const { return m_function; }

private:
    const char* const m_type;
    std::atomic<Function> m_function{nullptr};
};

/// Decoded audio on its way to the host.
struct HostAudio {
    short* samples; // at least eight
    int bytes;

    unsigned char* Bytes() const { return reinterpret_cast<unsigned char*>(samples); }
};

/// Calls the host on the calling thread, which must hold no lock. While the callback log is on, each call is written to
/// it after the host has returned. A callback that is not set is neither called nor logged; what one throws ends here.
/// Any thread.
class CHostCallbacks {
public:
    explicit CHostCallbacks(CLog& log) : m_log(log) {}

    /// Switches every callback and the callback log off.
    void Clear();
    void EnableLog(bool enable) { m_logEnabled = enable; }
    bool IsLogEnabled() const { return m_logEnabled; }

    void ZCUStatus(int deviceID, int status, int fault, int (&amplifiers)[8], int extraA, int extraB);
    void ZoneStatus(int deviceID, int (&states)[8], unsigned (&tasks)[8]);
    /// @param volumes  at least eight
    /// @return         whether the host was called
    bool ZCUVolume(int deviceID, int* volumes);
    void TaskStatus(int taskID, int status);
    void RPKStatus(int deviceID, int state, int activity, int wordA, int extra, int wordB);
    void MonitorZone(int deviceID, int zone, const HostAudio& audio);
    void TrainMessage(int sourceID, int deviceID, int message);
    void TrainAudio(int sourceID, int taskID, const HostAudio& audio);
    void RPKPTTAudio(int deviceID, int kind, const HostAudio& audio);
    void IntercomMessage(int stationID, int intercomID, int message);
    void IntercomAudio(int stationID, const HostAudio& audio);

    CCallbackSlot<PZCUSTATUS> zcuStatus{kZCUStatusType};
    CCallbackSlot<PRPKSTATUS> rpkStatus{kRPKStatusType};
    CCallbackSlot<PZONESTATUS> zoneStatus{kZoneStatusType};
    CCallbackSlot<PZCUVOLUME> zcuVolume{kZCUVolumeType};
    CCallbackSlot<PTASKSTATUS> taskStatus{kTaskStatusType};
    CCallbackSlot<PMONITORZONE> monitorZone{kMonitorZoneType};
    CCallbackSlot<PTRAINMESSAGE> trainMessage{kTrainMessageType};
    CCallbackSlot<PTRAINAUDIO> trainAudio{kTrainAudioType};
    CCallbackSlot<PRPKPTTAUDIO> rpkPTTAudio{kRPKPTTAudioType};
    CCallbackSlot<PINTERCOMMESSAGE> intercomMessage{kIntercomMessageType};
    CCallbackSlot<PINTERCOMAUDIO> intercomAudio{kIntercomAudioType};

private:
    template <typename Function, typename Call, typename Describe>
    bool Deliver(const CCallbackSlot<Function>& slot, Call call, Describe describe);

    CLog& m_log;
    std::atomic<bool> m_logEnabled{false};
};
