// The codecs of libavcodec, fed with frames and packets that were made beforehand.
#include "bench/signal.h"

#include <cstring>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

using bench::ForEachSignal;
using bench::kBlockSamples;
using bench::Signal;

struct ContextFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Context = std::unique_ptr<AVCodecContext, ContextFree>;
using Frame = std::unique_ptr<AVFrame, FrameFree>;
using Packet = std::unique_ptr<AVPacket, PacketFree>;

void Check(int result) {
    if (result < 0) { throw std::runtime_error("libavcodec refused"); }
}

Context Open(const AVCodec* codec, int channels, int blockAlign, int codeBits) {
    Context context(avcodec_alloc_context3(codec));
    context->sample_rate = 44100;
    context->sample_fmt = codec->sample_fmts != nullptr ? codec->sample_fmts[0] : AV_SAMPLE_FMT_S16;
    context->block_align = blockAlign;
    context->bits_per_coded_sample = codeBits;
    context->thread_count = 1;
    av_channel_layout_default(&context->ch_layout, channels);
    Check(avcodec_open2(context.get(), codec, nullptr));
    return context;
}

/// The signal as frames of the coder's own size; what the channels hold does not matter for time.
std::vector<Frame> MakeFrames(const AVCodecContext& coder, const Signal& signal) {
    const auto channels = static_cast<std::size_t>(coder.ch_layout.nb_channels);
    const bool planar = av_sample_fmt_is_planar(coder.sample_fmt) != 0;
    const std::size_t length = coder.frame_size > 0 ? static_cast<std::size_t>(coder.frame_size) : kBlockSamples;
    std::vector<Frame> frames;
    for (std::size_t first = 0; first + length * channels <= signal.size(); first += length * channels) {
        Frame frame(av_frame_alloc());
        frame->nb_samples = static_cast<int>(length);
        frame->format = coder.sample_fmt;
        Check(av_channel_layout_copy(&frame->ch_layout, &coder.ch_layout));
        Check(av_frame_get_buffer(frame.get(), 0));
        const std::size_t planes = planar ? channels : 1;
        const std::size_t planeSamples = length * channels / planes;
        for (std::size_t plane = 0; plane < planes; ++plane) {
            std::memcpy(frame->data[plane], &signal[first + plane * planeSamples], planeSamples * sizeof(short));
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::vector<Packet> MakePackets(AVCodecContext* coder, const std::vector<Frame>& frames) {
    std::vector<Packet> packets;
    for (const auto& frame : frames) {
        Packet packet(av_packet_alloc());
        Check(avcodec_send_frame(coder, frame.get()));
        Check(avcodec_receive_packet(coder, packet.get()));
        packets.push_back(std::move(packet));
    }
    return packets;
}

void Code(benchmark::State& state, const Signal& signal, AVCodecID id, int channels) {
    const Context coder = Open(avcodec_find_encoder(id), channels, 0, 0);
    const auto frames = MakeFrames(*coder, signal);
    const Packet packet(av_packet_alloc());
    bench::RunInTurn(state, frames.size(), [&](std::size_t n) {
        Check(avcodec_send_frame(coder.get(), frames[n].get()));
        Check(avcodec_receive_packet(coder.get(), packet.get()));
        return frames[n]->nb_samples * channels;
    });
}

void Decode(benchmark::State& state, const Signal& signal, AVCodecID id, int channels) {
    const Context coder = Open(avcodec_find_encoder(id), channels, 0, 0);
    const auto packets = MakePackets(coder.get(), MakeFrames(*coder, signal));
    const Context decoder = Open(avcodec_find_decoder(id), channels, coder->block_align, coder->bits_per_coded_sample);
    const Frame frame(av_frame_alloc());
    bench::RunInTurn(state, packets.size(), [&](std::size_t n) {
        Check(avcodec_send_packet(decoder.get(), packets[n].get()));
        Check(avcodec_receive_frame(decoder.get(), frame.get()));
        return frame->nb_samples * channels;
    });
}

bool Add(const std::string& unit, const std::string& peer, AVCodecID id, int channels) {
    const bool adpcm = unit.starts_with("Adpcm");
    ForEachSignal(unit + (adpcm ? "Code/" : "Encode/") + peer,
                  [=](auto& s, const auto& x) { Code(s, x, id, channels); });
    ForEachSignal(unit + "Decode/" + peer, [=](auto& s, const auto& x) { Decode(s, x, id, channels); });
    return true;
}

const bool kRegistered = Add("AdpcmMono", "avcodec_ima_wav", AV_CODEC_ID_ADPCM_IMA_WAV, 1) &&
                         Add("AdpcmMono", "avcodec_ima_ssi", AV_CODEC_ID_ADPCM_IMA_SSI, 1) &&
                         Add("AdpcmTwoChannel", "avcodec_ima_wav", AV_CODEC_ID_ADPCM_IMA_WAV, 2) &&
                         Add("AdpcmTwoChannel", "avcodec_ima_ssi", AV_CODEC_ID_ADPCM_IMA_SSI, 2) &&
                         Add("ALaw", "avcodec", AV_CODEC_ID_PCM_ALAW, 1) &&
                         Add("ULaw", "avcodec", AV_CODEC_ID_PCM_MULAW, 1);

} // namespace
