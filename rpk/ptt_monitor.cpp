// Receiving the push-to-talk audio of paging stations.
#include "app/application.h"
#include "common/qbstring.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "player/group_receiver.h"
#include "rpk/rpk.h"
#include "rpk/station_answers.h"

namespace {

constexpr unsigned kRegisteredCheckMs = 199; // each comes once more than this has passed
constexpr unsigned kGroupCheckMs = 99;
constexpr int kSilentReceives = 200 / kReceiveSliceMs; // 200 ms of them: what follows is a new stream
constexpr int kAudioKind = 3;

} // namespace

bool CRPK::NewMonitorPTTFlag(int id) {
    return m_pttMonitors.UpdateOrAppend(OfDevice(id), [](tagRPK_MONITOR_PTT&) {},
                                        {static_cast<uint32_t>(id), time(nullptr)});
}

void CRPK::RemoveMonitorPTTFlag(int id) {
    m_pttMonitors.EraseIf(OfDevice(id));
}

int CRPK::GetMonitorPTTFlag(int id) const {
    return m_pttMonitors.Find(OfDevice(id)) ? -1 : 0;
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
    ReceivePTT(id);
    RemoveMonitorPTTFlag(id);
}

/// What is kept from pass to pass.
struct CRPK::PTTReception {
    CGroupReceiver receiver;
    CQBTime sinceRegisteredCheck; // not started: the first checks come at once
    CQBTime sinceGroupCheck;
    int silentReceives = 0;
};

// What a pass throws, for want of memory say, costs that pass alone: nobody would set the group again.
void CRPK::ReceivePTT(int id) {
    PTTReception reception{CGroupReceiver(m_app), {}, {}};
    bool isWanted = true;
    while (isWanted) {
        if (!ContainExceptions([&] { isWanted = PassPTT(id, reception); })) { m_app.Lifetime().Pause(kReceiveSliceMs); }
    }
}

bool CRPK::PassPTT(int id, PTTReception& reception) {
    CGroupReceiver& receiver = reception.receiver;
    if (reception.sinceRegisteredCheck.TimeEnd() > kRegisteredCheckMs) {
        reception.sinceRegisteredCheck.TimeStart();
        if (!m_app.Devices().IsDeviceIDValid(id)) { return false; }
    }
    if (reception.sinceGroupCheck.TimeEnd() > kGroupCheckMs) {
        reception.sinceGroupCheck.TimeStart();
        const std::string group = qbstring::trimString(m_app.Devices().GetRPKPTTMulticastIP(id));
        if (group.empty()) { return false; }
        if (group != receiver.Group()) { receiver.Join(group, m_app.Configuration().MulticastPort()); }
    }
    const int length = receiver.Receive();
    if (length != kNothingReceived) {
        reception.silentReceives = 0;
    } else if (++reception.silentReceives == kSilentReceives) {
        reception.silentReceives = 0;
        receiver.ResetDecoder();
    }
    if (length > 0) { m_app.Callbacks().RPKPTTAudio(id, kAudioKind, {receiver.Audio(), length}); }
    return true;
}
