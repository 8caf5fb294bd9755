#include "sim/wav_match.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace k740::sim {
namespace {

constexpr std::ptrdiff_t kMaxOffset = 4410;       // samples either way
constexpr std::ptrdiff_t kSearchSamples = 44'100; // used to find the offset

struct Sums {
    std::size_t count = 0;
    double sent = 0;       // sum of squares
    double heard = 0;      // sum of squares
    double product = 0;    // sum of products
    double difference = 0; // sum of squared differences
};

/// Adds up the samples [from, to) of sent and those of heard that lie offset later, where there are any.
Sums Compare(const std::vector<std::int16_t>& sent, const std::vector<std::int16_t>& heard, std::ptrdiff_t offset,
             std::ptrdiff_t from, std::ptrdiff_t to) {
    Sums sums;
    const auto first = std::max(from, -offset);
    const auto last = std::min(to, static_cast<std::ptrdiff_t>(heard.size()) - offset);
    for (std::ptrdiff_t i = first; i < last; ++i) {
        const double a = sent[static_cast<std::size_t>(i)];
        const double b = heard[static_cast<std::size_t>(i + offset)];
        sums.sent += a * a;
        sums.heard += b * b;
        sums.product += a * b;
        sums.difference += (a - b) * (a - b);
        ++sums.count;
    }
    return sums;
}

double Correlation(const Sums& sums) {
    const double energy = std::sqrt(sums.sent * sums.heard);
    return energy > 0 ? sums.product / energy : 0;
}

double SignalToNoiseDb(const Sums& sums) {
    if (sums.difference == 0) { return std::numeric_limits<double>::infinity(); }
    return 10 * std::log10(sums.sent / sums.difference);
}

} // namespace

WavMatch Match(const std::vector<std::int16_t>& sent, const std::vector<std::int16_t>& heard) {
    const auto length = static_cast<std::ptrdiff_t>(sent.size());
    const std::ptrdiff_t from = std::max<std::ptrdiff_t>(0, (length - kSearchSamples) / 2);
    const std::ptrdiff_t to = std::min(length, from + kSearchSamples);
    WavMatch best;
    for (std::ptrdiff_t offset = -kMaxOffset; offset <= kMaxOffset; ++offset) {
        const double correlation = Correlation(Compare(sent, heard, offset, from, to));
        if (correlation > best.correlation) {
            best.correlation = correlation;
            best.offset = offset;
        }
    }
    const Sums whole = Compare(sent, heard, best.offset, 0, length);
    best.compared = whole.count;
    best.missing = sent.size() - whole.count;
    best.correlation = Correlation(whole);
    best.signalToNoiseDb = SignalToNoiseDb(whole);
    return best;
}

} // namespace k740::sim
