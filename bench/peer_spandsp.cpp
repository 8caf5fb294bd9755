// The codecs of libspandsp.
#include "bench/signal.h"

#include <spandsp.h>

#include <array>
#include <memory>

namespace {

using bench::ForEachSignal;
using bench::kBlocks;
using bench::kBlockSamples;
using bench::Signal;

constexpr int kBlock = kBlockSamples;
using AdpcmState = std::unique_ptr<ima_adpcm_state_t, int (*)(ima_adpcm_state_t*)>;
using G711State = std::unique_ptr<g711_state_t, int (*)(g711_state_t*)>;

AdpcmState MakeAdpcm() {
    return {ima_adpcm_init(nullptr, IMA_ADPCM_DVI4, 0), &ima_adpcm_free};
}
G711State MakeG711(int law) {
    return {g711_init(nullptr, law), &g711_free};
}

void CodeAdpcm(benchmark::State& state, const Signal& signal) {
    const auto coder = MakeAdpcm();
    std::array<uint8_t, kBlockSamples> code{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        ima_adpcm_encode(coder.get(), code.data(), &signal[block * kBlockSamples], kBlock);
        return kBlockSamples;
    });
}

void DecodeAdpcm(benchmark::State& state, const Signal& signal) {
    std::vector<uint8_t> code(signal.size() / 2 + 1);
    ima_adpcm_encode(MakeAdpcm().get(), code.data(), signal.data(), static_cast<int>(signal.size()));
    const auto decoder = MakeAdpcm();
    std::array<int16_t, kBlockSamples + 2> pcm{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        ima_adpcm_decode(decoder.get(), pcm.data(), &code[block * kBlockSamples / 2], kBlock / 2);
        return kBlockSamples;
    });
}

void EncodeG711(benchmark::State& state, const Signal& signal, int law) {
    const auto coder = MakeG711(law);
    std::array<uint8_t, kBlockSamples> code{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        g711_encode(coder.get(), code.data(), &signal[block * kBlockSamples], kBlock);
        return kBlockSamples;
    });
}

std::vector<uint8_t> Encoded(const Signal& signal, int law) {
    std::vector<uint8_t> code(signal.size());
    g711_encode(MakeG711(law).get(), code.data(), signal.data(), static_cast<int>(signal.size()));
    return code;
}

void DecodeG711(benchmark::State& state, const Signal& signal, int law) {
    const auto code = Encoded(signal, law);
    const auto decoder = MakeG711(law);
    std::array<int16_t, kBlockSamples> pcm{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        g711_decode(decoder.get(), pcm.data(), &code[block * kBlockSamples], kBlock);
        return kBlockSamples;
    });
}

void TranscodeG711(benchmark::State& state, const Signal& signal) {
    const auto code = Encoded(signal, G711_ALAW);
    const auto coder = MakeG711(G711_ALAW);
    std::array<uint8_t, kBlockSamples> out{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        g711_transcode(coder.get(), out.data(), &code[block * kBlockSamples], kBlock);
        return kBlockSamples;
    });
}

const bool kRegistered =
    ForEachSignal("AdpcmMonoCode/spandsp", &CodeAdpcm) && ForEachSignal("AdpcmMonoDecode/spandsp", &DecodeAdpcm) &&
    ForEachSignal("ALawEncode/spandsp", [](auto& s, const auto& x) { EncodeG711(s, x, G711_ALAW); }) &&
    ForEachSignal("ULawEncode/spandsp", [](auto& s, const auto& x) { EncodeG711(s, x, G711_ULAW); }) &&
    ForEachSignal("ALawDecode/spandsp", [](auto& s, const auto& x) { DecodeG711(s, x, G711_ALAW); }) &&
    ForEachSignal("ULawDecode/spandsp", [](auto& s, const auto& x) { DecodeG711(s, x, G711_ULAW); }) &&
    ForEachSignal("ALawToULaw/spandsp", &TranscodeG711);

} // namespace
