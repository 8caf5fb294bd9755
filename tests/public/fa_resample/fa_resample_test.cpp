#include "public/fa_resample/fa_fir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

namespace {

constexpr int kFrameSamples = 160;
constexpr int kFrameBytes = kFrameSamples * 2;

/// A resampler that is released at the end of its test.
class Resampler {
public:
    Resampler(int up, int down, int design = kFaKaiser, float gain = 1)
        : m_handle(fa_resample_filter_init(up, down, design, kFrameBytes, gain)) {}
    ~Resampler() { fa_resample_filter_uninit(m_handle); }
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    /// @param frame  samples of each frame but the last
    std::vector<short> Run(const std::vector<short>& in, std::size_t frame = kFrameSamples) {
        std::vector<short> all;
        for (std::size_t done = 0; done < in.size(); done += frame) {
            const std::size_t count = std::min(frame, in.size() - done);
            std::vector<unsigned char> bytes(count * 2);
            std::memcpy(bytes.data(), in.data() + done, bytes.size());
            const auto out = Step(bytes);
            all.insert(all.end(), out.begin(), out.end());
        }
        return all;
    }

    std::vector<short> Step(const std::vector<unsigned char>& bytes) {
        std::vector<unsigned char> out(bytes.size() * 16 + 2);
        int outBytes = -1;
        EXPECT_EQ(0, fa_resample(m_handle, bytes.data(), static_cast<int>(bytes.size()), out.data(), &outBytes));
        std::vector<short> samples(static_cast<std::size_t>(outBytes) / 2);
        if (!samples.empty()) { std::memcpy(samples.data(), out.data(), samples.size() * 2); }
        return samples;
    }

    uintptr_t Handle() const { return m_handle; }

private:
    uintptr_t m_handle;
};

std::vector<short> Sine(std::size_t count, double frequency, double rate, double level) {
    std::vector<short> signal(count);
    for (std::size_t n = 0; n < count; ++n) {
        signal[n] =
            static_cast<short>(level * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(n) / rate));
    }
    return signal;
}

/// Level of one frequency in the second half of a signal, where the filter has settled.
double LevelAt(const std::vector<short>& signal, double frequency, double rate) {
    double re = 0;
    double im = 0;
    const std::size_t first = signal.size() / 2;
    const auto count = static_cast<double>(signal.size() - first);
    for (std::size_t n = first; n < signal.size(); ++n) {
        const double t = static_cast<double>(n - first);
        const double window = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * t / count); // Hann: gain one half
        re += window * signal[n] * std::cos(2 * std::numbers::pi * frequency * t / rate);
        im += window * signal[n] * std::sin(2 * std::numbers::pi * frequency * t / rate);
    }
    return 4 * std::hypot(re, im) / count;
}

int PeakOfSecondHalf(const std::vector<short>& signal) {
    int peak = 0;
    for (std::size_t n = signal.size() / 2; n < signal.size(); ++n) { peak = std::max(peak, std::abs(signal[n])); }
    return peak;
}

TEST(FaResampleTest, ConstantLevelIsKept) {
    for (const auto& [up, down] : {std::pair{2, 1}, {441, 80}, {80, 441}, {1, 1}, {16, 1}, {1, 16}, {3, 2}}) {
        for (const int design : {kFaHamming, kFaBlackman, kFaKaiser}) {
            const auto out = Resampler(up, down, design).Run(std::vector<short>(4000, 10000));
            for (std::size_t n = out.size() / 2; n < out.size(); ++n) {
                ASSERT_NEAR(10000, out[n], design == kFaHamming ? 60 : 5) << up << "/" << down << " by " << design;
            }
        }
    }
}

TEST(FaResampleTest, GainScalesTheSignal) {
    const auto out = Resampler(2, 1, kFaKaiser, 0.25F).Run(std::vector<short>(1000, 10000));
    EXPECT_NEAR(2500, out.back(), 2);
}

TEST(FaResampleTest, ToneKeepsItsFrequencyAndLevel) {
    const auto up = Resampler(44100, 8000).Run(Sine(8000, 1000, 8000, 10000));
    EXPECT_NEAR(10000, LevelAt(up, 1000, 44100), 20);
    const auto down = Resampler(8000, 44100).Run(Sine(44100, 1000, 44100, 10000));
    EXPECT_NEAR(10000, LevelAt(down, 1000, 8000), 20);
}

TEST(FaResampleTest, ImagesOfARaisedRateAreStopped) {
    const auto out = Resampler(44100, 8000).Run(Sine(8000, 1000, 8000, 10000));
    EXPECT_LT(LevelAt(out, 7000, 44100), 2); // more than 70 dB down
    EXPECT_LT(LevelAt(out, 9000, 44100), 2);
}

TEST(FaResampleTest, ToneAboveTheLoweredBandIsStopped) {
    const auto out = Resampler(8000, 44100).Run(Sine(44100, 6000, 44100, 30000));
    EXPECT_LE(PeakOfSecondHalf(out), 3);
}

TEST(FaResampleTest, FramesJoinWithoutASeam) {
    const auto in = Sine(1000, 440, 8000, 20000);
    const auto whole = Resampler(441, 80).Run(in, kFrameSamples);
    for (const std::size_t frame : {1U, 7U, 80U, 159U}) {
        EXPECT_EQ(whole, Resampler(441, 80).Run(in, frame)) << frame;
        EXPECT_EQ(Resampler(80, 441).Run(in), Resampler(80, 441).Run(in, frame)) << frame;
    }
}

TEST(FaResampleTest, OutputIsTheInputTimesUpByDown) {
    EXPECT_EQ(882U, Resampler(441, 80).Run(std::vector<short>(160)).size());
    EXPECT_EQ(8000U, Resampler(8000, 44100).Run(std::vector<short>(44100)).size());
    EXPECT_EQ(2U, Resampler(3, 2).Run(std::vector<short>(1)).size()); // 1.5, rounded up
    EXPECT_EQ(3U, Resampler(3, 2).Run(std::vector<short>(2), 1).size());
}

TEST(FaResampleTest, CommonDivisorChangesNothing) {
    const auto in = Sine(500, 440, 8000, 20000);
    EXPECT_EQ(Resampler(441, 80).Run(in), Resampler(44100, 8000).Run(in));
}

TEST(FaResampleTest, EqualRatesOnlyDelay) {
    const auto in = Sine(1000, 440, 8000, 20000);
    const auto out = Resampler(7, 7).Run(in);
    ASSERT_EQ(in.size(), out.size());
    const auto delay = std::search(out.begin(), out.end(), in.begin() + 1, in.begin() + 500) - out.begin() - 1;
    EXPECT_GE(delay, 0);
    EXPECT_LT(delay, 100);
}

TEST(FaResampleTest, LoudOutputSaturates) {
    const auto high = Resampler(2, 1, kFaKaiser, 4).Run(std::vector<short>(1000, 30000));
    EXPECT_EQ(32767, high.back());
    const auto low = Resampler(2, 1, kFaKaiser, 4).Run(std::vector<short>(1000, -30000));
    EXPECT_EQ(-32768, low.back());
}

TEST(FaResampleTest, RatiosBeyondSixteenAreRefused) {
    EXPECT_NE(kFaRefused, Resampler(16, 1).Handle());
    EXPECT_NE(kFaRefused, Resampler(1, 16).Handle());
    EXPECT_EQ(kFaRefused, Resampler(17, 1).Handle());
    EXPECT_EQ(kFaRefused, Resampler(1, 17).Handle());
    EXPECT_EQ(kFaRefused, Resampler(33, 2).Handle()); // 16.5, though 16 in integers
    EXPECT_EQ(kFaRefused, Resampler(2, 33).Handle());
    EXPECT_EQ(kFaRefused, Resampler(INT_MAX, 1).Handle());
}

TEST(FaResampleTest, ValuesBelowOneAreRefused) {
    EXPECT_EQ(kFaRefused, Resampler(0, 1).Handle());
    EXPECT_EQ(kFaRefused, Resampler(1, 0).Handle());
    EXPECT_EQ(kFaRefused, Resampler(0, 0).Handle());
    EXPECT_EQ(kFaRefused, Resampler(-2, -1).Handle());
    EXPECT_EQ(kFaRefused, fa_resample_filter_init(2, 1, kFaKaiser, 1, 1.0F));
    EXPECT_EQ(kFaRefused, fa_resample_filter_init(2, 1, kFaKaiser, 0, 1.0F));
    EXPECT_EQ(kFaRefused, fa_resample_filter_init(2, 1, kFaKaiser, -4, 1.0F));
}

TEST(FaResampleTest, FactorsThatWouldTakeTooManyTapsAreRefused) {
    EXPECT_EQ(kFaRefused, Resampler(192001, 192000).Handle());
    EXPECT_EQ(kFaRefused, Resampler(INT_MAX, INT_MAX - 1).Handle());
    EXPECT_NE(kFaRefused, Resampler(INT_MAX, INT_MAX).Handle());
}

TEST(FaResampleTest, FrameLengthIsThatOfTheInput) {
    EXPECT_EQ(kFrameBytes, fa_get_resample_framelen_bytes(Resampler(441, 80).Handle()));
    const uintptr_t odd = fa_resample_filter_init(2, 1, kFaKaiser, 5, 1.0F);
    EXPECT_EQ(4, fa_get_resample_framelen_bytes(odd));
    fa_resample_filter_uninit(odd);
}

TEST(FaResampleTest, FrameLongerThanCreatedForIsRefused) {
    const Resampler resampler(2, 1);
    std::vector<unsigned char> in(kFrameBytes + 2);
    std::vector<unsigned char> out(in.size() * 2);
    int outBytes = 77;
    EXPECT_EQ(-1, fa_resample(resampler.Handle(), in.data(), kFrameBytes + 2, out.data(), &outBytes));
    EXPECT_EQ(0, outBytes);
    EXPECT_EQ(-1, fa_resample(resampler.Handle(), in.data(), -1, out.data(), &outBytes));
    EXPECT_EQ(0, fa_resample(resampler.Handle(), in.data(), kFrameBytes, out.data(), &outBytes));
    EXPECT_EQ(2 * kFrameBytes, outBytes);
}

TEST(FaResampleTest, OddByteIsLeftOut) {
    Resampler resampler(2, 1);
    EXPECT_EQ(0U, resampler.Step({1}).size());
    EXPECT_EQ(2U, resampler.Step({1, 2, 3}).size());
}

TEST(FaResampleTest, RefusedHandleIsHarmless) {
    unsigned char byte = 0;
    int outBytes = 77;
    for (const uintptr_t handle : {uintptr_t{0}, kFaRefused}) {
        EXPECT_EQ(-1, fa_resample(handle, &byte, 0, &byte, &outBytes));
        EXPECT_EQ(0, outBytes);
        EXPECT_EQ(0, fa_get_resample_framelen_bytes(handle));
        fa_resample_filter_uninit(handle);
    }
}

} // namespace
