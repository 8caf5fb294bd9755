#include "player/task_streams.h"

#include "codec/g711.h"
#include "player/audio_packet.h"
#include "public/fa_resample/fa_fir.h"

#include <algorithm>

namespace {

constexpr std::size_t kCapacity8K = 320'000;
constexpr std::size_t kCapacity22K = 882'000;
constexpr std::size_t kCapacity44K = 1'920'000;
constexpr int kRate8K = 8000;
constexpr int kRate22K = 22'050;
constexpr int kRate44K = 44'100;

// One conversion step, in bytes: 10 ms of 8 kHz and 20 ms of 22.05 kHz audio.
constexpr std::size_t kStepIn8K = 160;
constexpr std::size_t kStepOut8K = 882;
constexpr float kStepFactor8K = 0.1814059F;
constexpr std::size_t kStepIn22K = 882;
constexpr std::size_t kStepOut22K = 1764;
constexpr float kStepFactor22K = 0.5F;
constexpr std::size_t kMaxStepIn = 882;
constexpr std::size_t kMaxStepOut = 1764;

// The longest chunk that the host may push, in bytes.
constexpr unsigned kMaxChunk44K = 4096;
constexpr unsigned kMaxChunk22K = 2048;
constexpr unsigned kMaxG711Chunk = 1024;
constexpr unsigned kMaxChunk8K = 700;

} // namespace

unsigned LargestChunk(int format) {
    switch (format) {
    case kFormat44K:
        return kMaxChunk44K;
    case kFormat22K:
        return kMaxChunk22K;
    case kFormat8K:
        return kMaxChunk8K;
    default:
        return kMaxG711Chunk;
    }
}

CTaskStreams::Channel* CTaskStreams::Find(int channelID) {
    return channelID >= 0 && channelID < kChannels ? &m_channels[static_cast<std::size_t>(channelID)] : nullptr;
}

bool CTaskStreams::NewTaskStream8K(int channelID, int taskID) {
    Channel* channel = Find(channelID);
    return channel != nullptr && channel->slot8K.New(taskID, kCapacity8K);
}

bool CTaskStreams::NewTaskStream22K(int channelID, int taskID) {
    Channel* channel = Find(channelID);
    return channel != nullptr && channel->slot22K.New(taskID, kCapacity22K);
}

bool CTaskStreams::NewTaskStream44K(int channelID, int taskID) {
    Channel* channel = Find(channelID);
    return channel != nullptr && channel->slot44K.New(taskID, kCapacity44K);
}

void CTaskStreams::RemoveTaskStream8K(int channelID, int taskID) {
    if (Channel* channel = Find(channelID)) { channel->slot8K.Remove(taskID); }
}

void CTaskStreams::RemoveTaskStream22K(int channelID, int taskID) {
    if (Channel* channel = Find(channelID)) { channel->slot22K.Remove(taskID); }
}

void CTaskStreams::RemoveTaskStream44K(int channelID, int taskID) {
    if (Channel* channel = Find(channelID)) { channel->slot44K.Remove(taskID); }
}

// The sender is woken only when what is waiting suffices for its next step.
int CTaskStreams::Push(int channelID, CStreamSlot Channel::*slot, std::size_t step, int taskID,
                       const unsigned char* pcm, std::size_t length) {
    Channel* channel = Find(channelID);
    if (channel == nullptr || !(channel->*slot).Push(taskID, pcm, length)) { return kPushNoRoom; }
    if ((channel->*slot).Fill(taskID) >= step) { channel->wake.Raise(); }
    return kPushOk;
}

int CTaskStreams::Push8KPcmToBuffer(int channelID, int taskID, const unsigned char* pcm, unsigned short length) {
    return Push(channelID, &Channel::slot8K, kStepIn8K, taskID, pcm, length);
}

int CTaskStreams::Push22KPcmToBuffer(int channelID, int taskID, const unsigned char* pcm, unsigned short length) {
    return Push(channelID, &Channel::slot22K, kStepIn22K, taskID, pcm, length);
}

int CTaskStreams::Push441KPcmToBuffer(int channelID, int taskID, const unsigned char* pcm, unsigned short length) {
    return Push(channelID, &Channel::slot44K, kFrameBytes, taskID, pcm, length);
}

int CTaskStreams::ConvertG711To8KPcm(int channelID, int taskID, unsigned char law, const unsigned char* data,
                                     unsigned short length) {
    if (length > kMaxG711Chunk) { return kPushOk; }
    std::array<short, kMaxG711Chunk> pcm{};
    const bool silence = std::all_of(data, data + length, [](unsigned char byte) { return byte == 0; });
    if (!silence) {
        std::transform(data, data + length, pcm.begin(), law == kFormat8KAlaw ? alaw2linear : ulaw2linear);
    }
    return Push8KPcmToBuffer(channelID, taskID, reinterpret_cast<const unsigned char*>(pcm.data()),
                             static_cast<unsigned short>(2 * length));
}

int CTaskStreams::PushHostAudio(int channelID, int taskID, int format, const unsigned char* data,
                                unsigned short length) {
    switch (format) {
    case kFormat44K:
        return Push441KPcmToBuffer(channelID, taskID, data, length);
    case kFormat22K:
        return Push22KPcmToBuffer(channelID, taskID, data, length);
    case kFormat8K:
        return Push8KPcmToBuffer(channelID, taskID, data, length);
    default:
        return ConvertG711To8KPcm(channelID, taskID, static_cast<unsigned char>(format), data, length);
    }
}

bool CTaskStreams::Convert(int channelID, int taskID, int format) {
    Channel* channel = Find(channelID);
    if (channel == nullptr || format == kFormat44K) { return false; }
    return format == kFormat22K ? ConvertPcm22KTo441K(*channel, taskID) : ConvertPcm8KTo441K(*channel, taskID);
}

bool CTaskStreams::ConvertPcm8KTo441K(Channel& channel, int taskID) {
    return ConvertStep(channel, taskID, channel.slot8K, kRate8K, kStepIn8K, kStepOut8K, kStepFactor8K);
}

bool CTaskStreams::ConvertPcm22KTo441K(Channel& channel, int taskID) {
    return ConvertStep(channel, taskID, channel.slot22K, kRate22K, kStepIn22K, kStepOut22K, kStepFactor22K);
}

bool CTaskStreams::ConvertStep(Channel& channel, int taskID, CStreamSlot& source, int sourceRate, std::size_t inBytes,
                               std::size_t outBytes, float step) {
    std::array<short, kMaxStepIn / 2> in;
    std::array<short, kMaxStepOut / 2> out;
    return source.TakeAndUse(taskID, reinterpret_cast<unsigned char*>(in.data()), inBytes, [&] {
        resampleData(in.data(), sourceRate, static_cast<int>(inBytes / 2), out.data(), kRate44K,
                     static_cast<int>(outBytes / 2), step);
        channel.slot44K.Push(taskID, reinterpret_cast<const unsigned char*>(out.data()), outBytes);
    });
}

int CTaskStreams::GetPcm44K(int channelID, int taskID, short* out, int bytes) {
    Channel* channel = Find(channelID);
    return channel != nullptr && bytes > 0 &&
                   channel->slot44K.Take(taskID, reinterpret_cast<unsigned char*>(out), static_cast<std::size_t>(bytes))
               ? 1
               : 0;
}

void CTaskStreams::Wait(int channelID, unsigned ms) {
    if (Channel* channel = Find(channelID)) { channel->wake.Wait(ms); }
}

void CTaskStreams::Wake(int channelID) {
    if (Channel* channel = Find(channelID)) { channel->wake.Raise(); }
}

void CTaskStreams::WakeAll() {
    std::for_each(m_channels.begin(), m_channels.end(), [](Channel& channel) { channel.wake.Raise(); });
}
