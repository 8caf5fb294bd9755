#include "player/stream_sender.h"

#include "app/application.h"
#include "common/stopwatch.h"
#include "common/wake_signal.h"

namespace {

constexpr unsigned kStatusCheckMs = 99; // the state is read once more than this has passed
constexpr int kStreamNumber = 1;

} // namespace

void ScaleVolume(short* samples, int count, int volume) {
    for (int i = 0; i < count; ++i) { samples[i] = static_cast<short>(samples[i] * volume / kFullVolume); }
}

CStreamSender::CStreamSender(CK740ControlApp& app, CQBUDP& udp, const tagTASK_QUEUE& task, int channelID)
    : m_app(app), m_udp(udp), m_task(task), m_channelID(channelID), m_format(app.Configuration().AudioStreamFormat()),
      m_variant(app.Configuration().StreamParameter() == 0 ? kAdpcmTwoChannel : kAdpcmMono) {
    const auto codec = static_cast<char>(app.Configuration().StreamParameter());
    SetMCastPackageHeader(m_packet, codec, static_cast<int>(app.Configuration().NodeID()), kStreamNumber);
}

void CStreamSender::MulitCastStream_4K() {
    CTaskStreams& streams = m_app.Player().Streams();
    CQBTime sinceCheck;
    sinceCheck.TimeStart();
    bool stopped = false;
    while (!m_app.Lifetime().IsExiting()) {
        if (sinceCheck.TimeEnd() > kStatusCheckMs) {
            sinceCheck.TimeStart();
            if (IsStopped()) { return; }
        }
        const bool converted = streams.Convert(m_channelID, m_task.taskID, m_format);
        if (SendFrame() || converted) { continue; }
        if (stopped) { return; }
        stopped = IsStopped();
        if (stopped) { continue; } // once more, for what was pushed right before the stop
        streams.Wait(m_channelID, kIdleWaitMs);
        sinceCheck.TimeStart(); // nor is anything lost that was pushed after a long silence
    }
}

bool CStreamSender::SendFrame() {
    if (m_app.Player().Streams().GetPcm44K(m_channelID, m_task.taskID, m_frame.data(), kFrameBytes) == 0) {
        return false;
    }
    if (m_task.volume != kFullVolume) { ScaleVolume(m_frame.data(), kFrameSamples, m_task.volume); }
    EncodeFrame(m_packet, m_frame.data(), m_state, m_variant);
    m_udp.send_multicast_data(reinterpret_cast<const char*>(&m_packet), sizeof(m_packet));
    return true;
}

bool CStreamSender::IsStopped() const {
    return m_app.Player().Status().IsTaskStoped(m_task.taskID, m_task.instance);
}
