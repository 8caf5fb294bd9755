#include "public/fa_resample/fa_fir.h"
#include "tests/support/noise.h"
#include "tests/support/sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace {

using k740::test::Noise;
using k740::test::Sha256Prefix;

constexpr float kStep8kHz = 0.1814059F;

std::vector<short> Resampled(const std::vector<short>& in, std::size_t outCount, float step) {
    std::vector<short> out(outCount);
    resampleData(in.data(), 8000, static_cast<int>(in.size()), out.data(), 44100, static_cast<int>(outCount), step);
    return out;
}

TEST(ResampleDataTest, HalfStepInterpolatesHalfWayAndHoldsTheLastSample) {
    EXPECT_EQ((std::vector<short>{3, 3, 4, 0, -3, -3, -4, -4}), Resampled({3, 4, -3, -4}, 8, 0.5F));
}

TEST(ResampleDataTest, Doubles22050HzNoiseExactly) {
    const auto out = Resampled(Noise(441, 1), 882, 0.5F);
    EXPECT_EQ((std::vector<short>{16838, -5086, -27010, -8448}), std::vector<short>(out.begin(), out.begin() + 4));
    EXPECT_EQ((std::vector<short>{-24027, -17883, -17883}), std::vector<short>(out.end() - 3, out.end()));
    EXPECT_EQ("baed66a78f4baa87", Sha256Prefix(out));
}

TEST(ResampleDataTest, Converts8kHzNoiseExactlyInSinglePrecision) {
    EXPECT_EQ("e0739aec0e9b5c96", Sha256Prefix(Resampled(Noise(80, 1), 441, kStep8kHz)));
}

TEST(ResampleDataTest, ReadsUpToTheLastInputSampleAndNeverBeyond) {
    const auto noise = Noise(80, 2);
    const auto in = std::make_unique<short[]>(80); // the address sanitizer guards its end
    std::copy(noise.begin(), noise.end(), in.get());
    std::vector<short> out(441);
    resampleData(in.get(), 8000, 80, out.data(), 44100, 441, kStep8kHz);
    EXPECT_EQ(noise.back(), out.back()); // position 79.8: held, not taken towards a sample 80
}

TEST(ResampleDataTest, EveryOutputIsTheFormulaInSinglePrecision) {
    const auto in = Noise(200, 5);
    for (const float step : {0.01F, 0.3F, 0.7256236F, 1.0F, 1.1F}) {
        const auto out = Resampled(in, 150, step);
        for (std::size_t i = 0; i < out.size(); ++i) {
            const float position = static_cast<float>(i) * step;
            const auto k = static_cast<std::size_t>(position);
            const float f = position - static_cast<float>(k);
            const float before = in[k];
            const float after = in[k + 1];
            const auto expected = static_cast<short>(after * f + (1 - f) * before);
            ASSERT_EQ(expected, out[i]) << i << " at step " << step;
        }
    }
}

TEST(ResampleDataTest, ConstantInputStaysConstant) {
    for (const short level : std::vector<short>{-32768, -1, 0, 1, 12345, 32767}) {
        EXPECT_EQ(std::vector<short>(441, level), Resampled(std::vector<short>(80, level), 441, kStep8kHz)) << level;
    }
}

TEST(ResampleDataTest, EqualRatesCopyTheInputWhateverTheOutputCount) {
    const auto in = Noise(10, 1);
    for (const int outCount : {0, 3, 10, 1000}) {
        std::vector<short> out(11, 77);
        resampleData(in.data(), 44100, 10, out.data(), 44100, outCount, 0.5F);
        EXPECT_EQ(in, std::vector<short>(out.begin(), out.begin() + 10));
        EXPECT_EQ(77, out[10]);
    }
}

TEST(ResampleDataTest, WritesExactlyTheOutputCount) {
    for (const std::size_t count : {1U, 63U, 64U, 65U, 128U, 129U}) {
        auto out = std::vector<short>(count + 1, 77);
        resampleData(Noise(400, 1).data(), 8000, 400, out.data(), 44100, static_cast<int>(count), 0.9F);
        EXPECT_EQ(77, out[count]);
        EXPECT_EQ(Resampled(Noise(400, 1), 129, 0.9F)[count - 1], out[count - 1]);
    }
}

TEST(ResampleDataTest, PositionsBeyondTheInputHoldItsLastSample) {
    EXPECT_EQ((std::vector<short>{5, -6, -6, -6}), Resampled({5, -6}, 4, 1.0F));
    EXPECT_EQ((std::vector<short>{5, -6, -6, -6}), Resampled({5, -6}, 4, 3e9F));
    EXPECT_EQ((std::vector<short>{9, 9, 9}), Resampled({9}, 3, 0.5F));
}

TEST(ResampleDataTest, StepThatIsNoDistanceHoldsTheFirstSample) {
    for (const float step : {-1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_EQ((std::vector<short>{5, 5, 5}), Resampled({5, -6}, 3, step));
    }
}

TEST(ResampleDataTest, NoInputOrNoOutputTouchesNothing) {
    const short in = 5;
    short out = 77;
    resampleData(&in, 8000, 0, &out, 44100, 1, 0.5F);
    resampleData(&in, 8000, -1, &out, 44100, 1, 0.5F);
    resampleData(&in, 44100, -1, &out, 44100, 1, 0.5F);
    resampleData(&in, 8000, 1, &out, 44100, 0, 0.5F);
    resampleData(&in, 8000, 1, &out, 44100, -1, 0.5F);
    EXPECT_EQ(77, out);
}

} // namespace
