// Our ADPCM and G.711, in blocks of a datagram. The peers' files use the same names with another second part.
#include "bench/signal.h"
#include "codec/adpcm.h"
#include "codec/g711.h"

#include <algorithm>
#include <array>

namespace {

using bench::ForEachSignal;
using bench::kBlocks;
using bench::kBlockSamples;
using bench::Signal;

constexpr std::size_t kBlockCodes = kBlockSamples / 2;

void CodeAdpcm(benchmark::State& state, const Signal& signal, int variant) {
    std::array<char, kBlockCodes> code{};
    adpcm_state coder{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        adpcm_coder(&signal[block * kBlockSamples], code.data(), kBlockCodes, &coder, variant);
        return kBlockSamples;
    });
}

void DecodeAdpcm(benchmark::State& state, const Signal& signal, int variant) {
    std::vector<char> code(signal.size() / 2);
    adpcm_state coder{};
    adpcm_coder(signal.data(), code.data(), static_cast<int>(code.size()), &coder, variant);
    std::array<short, kBlockSamples> pcm{};
    adpcm_state decoder{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        adpcm_decoder(&code[block * kBlockCodes], pcm.data(), kBlockCodes, &decoder, variant);
        return kBlockSamples;
    });
}

template <typename Encode> void EncodeG711(benchmark::State& state, const Signal& signal, Encode encode) {
    std::array<unsigned char, kBlockSamples> code{};
    benchmark::DoNotOptimize(code.data());
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        std::transform(&signal[block * kBlockSamples], &signal[block * kBlockSamples] + kBlockSamples, code.data(),
                       encode);
        return kBlockSamples;
    });
}

template <typename Encode, typename Convert>
void ConvertG711(benchmark::State& state, const Signal& signal, Encode encode, Convert convert) {
    std::vector<unsigned char> code(signal.size());
    std::transform(signal.begin(), signal.end(), code.begin(), encode);
    std::array<decltype(convert(0)), kBlockSamples> out{};
    benchmark::DoNotOptimize(out.data());
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        std::transform(&code[block * kBlockSamples], &code[block * kBlockSamples] + kBlockSamples, out.data(), convert);
        return kBlockSamples;
    });
}

// Lambdas, as function pointers would keep the functions from being inlined.
constexpr auto kToALaw = [](short sample) { return linear2alaw(sample); };
constexpr auto kToULaw = [](short sample) { return linear2ulaw(sample); };
constexpr auto kFromALaw = [](unsigned char code) { return alaw2linear(code); };
constexpr auto kFromULaw = [](unsigned char code) { return ulaw2linear(code); };
constexpr auto kALawToULaw = [](unsigned char code) { return alaw2ulaw(code); };

const bool kRegistered =
    ForEachSignal("AdpcmTwoChannelCode/k740", [](auto& s, const auto& x) { CodeAdpcm(s, x, kAdpcmTwoChannel); }) &&
    ForEachSignal("AdpcmTwoChannelDecode/k740", [](auto& s, const auto& x) { DecodeAdpcm(s, x, kAdpcmTwoChannel); }) &&
    ForEachSignal("AdpcmMonoCode/k740", [](auto& s, const auto& x) { CodeAdpcm(s, x, kAdpcmMono); }) &&
    ForEachSignal("AdpcmMonoDecode/k740", [](auto& s, const auto& x) { DecodeAdpcm(s, x, kAdpcmMono); }) &&
    ForEachSignal("ALawEncode/k740", [](auto& s, const auto& x) { EncodeG711(s, x, kToALaw); }) &&
    ForEachSignal("ULawEncode/k740", [](auto& s, const auto& x) { EncodeG711(s, x, kToULaw); }) &&
    ForEachSignal("ALawDecode/k740", [](auto& s, const auto& x) { ConvertG711(s, x, kToALaw, kFromALaw); }) &&
    ForEachSignal("ULawDecode/k740", [](auto& s, const auto& x) { ConvertG711(s, x, kToULaw, kFromULaw); }) &&
    ForEachSignal("ALawToULaw/k740", [](auto& s, const auto& x) { ConvertG711(s, x, kToALaw, kALawToULaw); });

} // namespace
