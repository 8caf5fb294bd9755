// Sending the audio of a call to the paging station.
#include "app/application.h"
#include "common/format.h"
#include "common/stopwatch.h"
#include "common/udp.h"
#include "common/worker.h"
#include "intercom/talker.h"
#include "player/audio_packet.h"
#include "player/pacing.h"
#include "protocol/commands.h"

#include <unistd.h>

#include <array>

namespace {

constexpr unsigned kStartPauseMs = 2'500; // until the station is ready
constexpr int kPrimingDatagrams = 12;
constexpr useconds_t kDatagramUs = 46'400;
constexpr unsigned kStatusCheckMs = 199; // the status is read once more than this has passed
constexpr int kNotTalking = -2;

void Send(CQBUDP& udp, const _vxa_data_packet_t_mcast& packet) {
    udp.send_udp_data(reinterpret_cast<const char*>(&packet), sizeof(packet));
}

} // namespace

int CTALKER::PushTalkAudio(int intercomID, const unsigned char* data, std::size_t length) {
    const int result = m_streams.Push(intercomID, data, length, [&] {
        if (!HasCallback()) { return kNoCallback; }
        tagTALK_STATUS record;
        GetTalkerStatus(intercomID, record);
        return record.status == kTalkTalking ? 0 : kNotTalking;
    });
    if (result == 0) { m_senders.Raise(intercomID); }
    return result;
}

int CTALKER::GetTalkerAudio(int intercomID, unsigned char* out, std::size_t length) {
    return m_streams.Take(intercomID, out, length);
}

int CTALKER::RemoveTalkerAudio(int intercomID) {
    return m_streams.Remove(intercomID);
}

void CTALKER::StartSending(const Call& call) {
    if (StartThread("k740-talk-send", [this, call] { ThreadSendAudioToRPK(call); })) { return; }
    m_app.Log().PushLog("", kLogError, Format("No thread for the audio of intercom %d.", call.intercomID));
}

// A call may end and the next begin while the former's thread is still in its first pauses. That thread then takes
// nothing and discards nothing that is the later call's.
bool CTALKER::IsCurrent(const Call& call) const {
    tagTALK_STATUS record;
    return GetTalkerStatus(call.intercomID, record) == 0 && record.call == call.instance;
}

bool CTALKER::IsOver(const Call& call) const {
    tagTALK_STATUS record;
    GetTalkerStatus(call.intercomID, record);
    return record.status == kNoCall || record.status == kTalkIdle;
}

void CTALKER::ThreadSendAudioToRPK(const Call& call) {
    ContainExceptions([&] { SendUntilOver(call); });
    if (IsCurrent(call)) { RemoveTalkerAudio(call.intercomID); }
    m_app.Log().PushLog("", kLogInfo, Format("Intercom %d stop send audio.", call.intercomID));
}

void CTALKER::SendUntilOver(const Call& call) {
    const std::string station = m_app.Devices().GetDeviceIP(call.stationID);
    m_app.Lifetime().Pause(kStartPauseMs);
    CQBUDP udp;
    if (udp.set_udp_host(station.c_str(), kIntercomPort) < 0) {
        m_app.Log().PushLog("", kLogError, Format("No socket for the audio of intercom %d.", call.intercomID));
    }

    _vxa_data_packet_t_mcast packet{};
    SetMCastPackageHeader(packet, 0, call.intercomID, call.stationID);
    for (int i = 0; i < kPrimingDatagrams; ++i) {
        Send(udp, packet);
        usleep(kDatagramUs);
    }
    if (IsCurrent(call)) { RemoveTalkerAudio(call.intercomID); }
    SendAudio(call, udp, packet);
}

void CTALKER::SendAudio(const Call& call, CQBUDP& udp, _vxa_data_packet_t_mcast& packet) {
    CWakeList::Entry woken(m_senders, call.intercomID);
    adpcm_state state{};
    std::array<short, kFrameSamples> frame{};
    int drift = 0;
    int counter = 0;
    CQBTime sincePeriod;
    CQBTime sinceCheck;
    sinceCheck.TimeStart();
    while (!m_app.Lifetime().IsExiting() && IsCurrent(call)) {
        if (sinceCheck.TimeEnd() > kStatusCheckMs) {
            sinceCheck.TimeStart();
            if (IsOver(call)) { return; }
        }
        if (GetTalkerAudio(call.intercomID, reinterpret_cast<unsigned char*>(frame.data()), kFrameBytes) != 0) {
            if (IsOver(call)) { return; }
            woken.Wait(kIdleWaitMs);
            continue;
        }
        sincePeriod.TimeStart();
        EncodeFrame(packet, frame.data(), state, kAdpcmTwoChannel);
        Send(udp, packet);
        MultiCastSleep464(drift, counter, sincePeriod);
    }
}
