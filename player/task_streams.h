// The audio of all tasks on its way from the host to the senders.
#pragma once

#include "common/stream_slot.h"
#include "common/wake_signal.h"
#include "player/channel_table.h"

#include <array>
#include <cstddef>

inline constexpr int kFormat44K = 0;    // 44.1 kHz PCM
inline constexpr int kFormat22K = 1;    // 22.05 kHz PCM
inline constexpr int kFormat8KUlaw = 2; // 8 kHz G.711 u-law
inline constexpr int kFormat8KAlaw = 3; // 8 kHz G.711 A-law
inline constexpr int kFormat8K = 4;     // 8 kHz PCM

inline constexpr int kPushOk = 0;
inline constexpr int kPushNoRoom = 255;

/// @return the longest chunk of host audio of a format, in bytes
unsigned LargestChunk(int format);

/// For each channel one slot for each rate, 8, 22.05 and 44.1 kHz, and a signal that wakes the channel's sender.
///
/// Where two slots are locked, the one of the lower rate comes first. Any thread may push; one thread, the task's,
/// converts, takes and waits. A channel out of range or a task that does not own the slot has no room and no audio.
class CTaskStreams {
public:
    /// (Re)allocates a slot, empty. @return false when there is no memory for it
    bool NewTaskStream8K(int channelID, int taskID);
    bool NewTaskStream22K(int channelID, int taskID);
    bool NewTaskStream44K(int channelID, int taskID);
    /// Frees a slot that is the task's.
    void RemoveTaskStream8K(int channelID, int taskID);
    void RemoveTaskStream22K(int channelID, int taskID);
    void RemoveTaskStream44K(int channelID, int taskID);

    /// Appends PCM. @return kPushOk, or kPushNoRoom with nothing appended
    int Push8KPcmToBuffer(int channelID, int taskID, const unsigned char* pcm, unsigned short length);
    int Push22KPcmToBuffer(int channelID, int taskID, const unsigned char* pcm, unsigned short length);
    int Push441KPcmToBuffer(int channelID, int taskID, const unsigned char* pcm, unsigned short length);
    /// Expands G.711 and appends it to the 8 kHz slot. A chunk of zero bytes is taken as silence.
    /// @param law     kFormat8KAlaw, any other value is u-law
    /// @param length  at most 1024, else nothing happens and 0 is returned
    int ConvertG711To8KPcm(int channelID, int taskID, unsigned char law, const unsigned char* data,
                           unsigned short length);

    /// Appends a chunk of the host's audio to the slot of its format. @return kPushOk or kPushNoRoom
    int PushHostAudio(int channelID, int taskID, int format, const unsigned char* data, unsigned short length);

    /// Runs one conversion step of a format into the 44.1 kHz slot. @return whether there was input for it
    bool Convert(int channelID, int taskID, int format);
    /// Takes exactly bytes of 44.1 kHz PCM. @return 1, or 0 when fewer are waiting
    int GetPcm44K(int channelID, int taskID, short* out, int bytes);

    /// Sleeps until something was pushed or Wake was called, at most ms milliseconds.
    void Wait(int channelID, unsigned ms);
    void Wake(int channelID);
    void WakeAll();

private:
    struct Channel {
        CStreamSlot slot8K;
        CStreamSlot slot22K;
        CStreamSlot slot44K;
        CWakeSignal wake;
    };

    Channel* Find(int channelID);
    int Push(int channelID, CStreamSlot Channel::*slot, std::size_t step, int taskID, const unsigned char* pcm,
             std::size_t length);
    bool ConvertPcm8KTo441K(Channel& channel, int taskID);
    bool ConvertPcm22KTo441K(Channel& channel, int taskID);
    bool ConvertStep(Channel& channel, int taskID, CStreamSlot& source, int sourceRate, std::size_t inBytes,
                     std::size_t outBytes, float step);

    std::array<Channel, kChannels> m_channels;
};
