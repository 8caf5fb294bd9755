// The send loop of an audio stream task.
#pragma once

#include "common/udp.h"
#include "player/audio_packet.h"
#include "player/task_records.h"

#include <array>

class CK740ControlApp;

/// Codes and sends the task's audio as soon as a frame of it is there; the host sets the pace. Belongs to the task's
/// thread.
class CStreamSender {
public:
    /// @param udp  joined to the task's group
    CStreamSender(CK740ControlApp& app, CQBUDP& udp, const tagTASK_QUEUE& task, int channelID);

    /// Runs until the task is stopped or the library shuts down.
    void MulitCastStream_4K();

private:
    bool SendFrame();
    bool IsStopped() const;

    CK740ControlApp& m_app;
    CQBUDP& m_udp;
    const tagTASK_QUEUE& m_task;
    const int m_channelID;
    const int m_format;
    const int m_variant;
    _vxa_data_packet_t_mcast m_packet{};
    adpcm_state m_state{};
    std::array<short, kFrameSamples> m_frame{};
};

/// Scales samples by volume / 100, cut towards zero.
void ScaleVolume(short* samples, int count, int volume);
