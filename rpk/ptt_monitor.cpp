// Receiving the push-to-talk audio of paging stations.
#include "app/application.h"
#include "common/qbstring.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "player/group_receiver.h"
#include "rpk/rpk.h"

namespace {

constexpr unsigned kRegisteredCheckMs = 199; // each comes once more than this has passed
constexpr unsigned kGroupCheckMs = 99;
constexpr unsigned kSilenceMs = 199; // after it the stream counts as a new one
constexpr int kAudioKind = 3;

auto IsOf(int id) {
    return [id](const tagRPK_MONITOR_PTT& monitor) { return monitor.deviceID == static_cast<uint32_t>(id); };
}

} // namespace

bool CRPK::NewMonitorPTTFlag(int id) {
    return m_pttMonitors.UpdateOrAppend(IsOf(id), [](tagRPK_MONITOR_PTT&) {},
                                        {static_cast<uint32_t>(id), time(nullptr)});
}

void CRPK::RemoveMonitorPTTFlag(int id) {
    m_pttMonitors.EraseIf(IsOf(id));
}

int CRPK::GetMonitorPTTFlag(int id) const {
    return m_pttMonitors.Find(IsOf(id)) ? -1 : 0;
}

// The flag is set before the thread runs: a second call would start a second thread otherwise.
void CRPK::StartMonitorPTT(int id) {
    if (!NewMonitorPTTFlag(id)) { return; } // the running thread will see the new group
    if (StartThread("k740-ptt", [this, id] { ThreadMonitorPTT(id); })) { return; }
    RemoveMonitorPTTFlag(id);
    m_app.Log().PushLog("", kLogError, "No thread for push-to-talk audio.");
}

// Does not look at the exit flag: a station's microphone is heard until the station or its group goes.
void CRPK::ThreadMonitorPTT(int id) {
    ContainExceptions([this, id] { ReceivePTT(id); });
    RemoveMonitorPTTFlag(id);
}

void CRPK::ReceivePTT(int id) {
    CGroupReceiver receiver(m_app);
    CQBTime sinceRegisteredCheck; // not started: the first checks come at once
    CQBTime sinceGroupCheck;
    CQBTime sinceDatagram;
    while (true) {
        if (sinceRegisteredCheck.TimeEnd() > kRegisteredCheckMs) {
            sinceRegisteredCheck.TimeStart();
            if (!m_app.Devices().IsDeviceIDValid(id)) { return; }
        }
        if (sinceGroupCheck.TimeEnd() > kGroupCheckMs) {
            sinceGroupCheck.TimeStart();
            const std::string group = qbstring::trimString(m_app.Devices().GetRPKPTTMulticastIP(id));
            if (group.empty()) { return; }
            if (group != receiver.Group()) { receiver.Join(group, m_app.Configuration().MulticastPort()); }
        }
        const int length = receiver.Receive();
        if (length != kNothingReceived) {
            sinceDatagram.TimeStart();
        } else if (sinceDatagram.TimeEnd() > kSilenceMs) {
            receiver.ResetDecoder();
        }
        if (length > 0) { m_app.Callbacks().RPKPTTAudio(id, kAudioKind, {receiver.Audio(), length}); }
    }
}
