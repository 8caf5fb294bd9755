// k740-wavmatch: says how well a recording matches the file that was broadcast.
#include "sim/wav_file.h"
#include "sim/wav_match.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {
constexpr double kGoodCorrelation = 0.99;
constexpr int kExitDiffers = 1;
constexpr int kExitUsage = 2;
} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: k740-wavmatch SENT.wav HEARD.wav\n"
                   "Exits with 0 when all of the sent audio was heard, undistorted but for its coding, else with 1.\n",
                   stderr);
        return kExitUsage;
    }
    try {
        const auto match = k740::sim::Match(k740::sim::ReadWav(argv[1]), k740::sim::ReadWav(argv[2]));
        std::printf("%zu samples compared, %zu missing, offset %td, correlation %.4f, signal to noise %.1f dB\n",
                    match.compared, match.missing, match.offset, match.correlation, match.signalToNoiseDb);
        return match.missing == 0 && match.correlation >= kGoodCorrelation ? 0 : kExitDiffers;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "k740-wavmatch: %s\n", error.what());
        return kExitUsage;
    }
}
