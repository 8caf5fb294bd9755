// An example host as a program of its own, beside simulated devices.
#pragma once

#include "sim/audio_datagram.h"
#include "sim/audio_encoder.h"
#include "sim/audio_source.h"
#include "sim/tone.h"
#include "sim/wav_file.h"
#include "sim/wav_match.h"
#include "tests/support/child_program.h"
#include "tests/support/private_network_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr std::chrono::milliseconds kSoon{20'000}; // far beyond what is expected
inline constexpr std::uint32_t kController = 33;
inline constexpr const char* kControllerIP = "192.168.1.33";
inline constexpr std::uint32_t kStation = 5000;
inline constexpr const char* kStationIP = "192.168.8.99";

/// An example in the network namespace of this thread.
class Example : public ChildProgram {
public:
    /// @param command  name and arguments, quoted as for a shell
    explicit Example(const std::string& command) : Example("'" K740_EXAMPLES "'/", command) {}
    /// @param start  what precedes the command, such as a folder or an input that is piped into it
    Example(const std::string& start, const std::string& command) : ChildProgram(start + command) {}
};

/// Datagrams of a tone, and what a receiver makes of all of them.
struct CodedTone {
    std::vector<sim::Bytes> datagrams;
    std::vector<std::int16_t> heard;

    CodedTone(std::size_t count, std::uint32_t node) {
        sim::AudioEncoder encoder(node, 1, 341);
        sim::AudioDecoder decoder;
        const std::size_t samples = encoder.SamplesPerDatagram();
        const std::vector<std::int16_t> tone = sim::Tone(441, samples * count);
        for (std::size_t at = 0; at < tone.size(); at += samples) {
            const sim::AudioDatagram datagram = encoder.Encode(std::span(tone).subspan(at, samples));
            datagrams.push_back(sim::Pack(datagram));
            const std::vector<std::int16_t> decoded = decoder.Decode(datagram);
            heard.insert(heard.end(), decoded.begin(), decoded.end());
        }
    }
    /// Sends each of them once, at the usual pace.
    [[nodiscard]] sim::AudioStream Stream() const {
        sim::AudioStream stream;
        stream.datagrams = datagrams;
        stream.count = datagrams.size();
        return stream;
    }
};

/// The working directory has speech.wav, one second of it.
class ExampleTest : public OnPrivateNetwork {
protected:
    ExampleTest() { sim::WriteWav("speech.wav", m_speech); }

    /// @param most  samples that may be missing at the end
    void ExpectSpeech(const std::vector<std::int16_t>& heard, std::size_t most = 0) const {
        const sim::WavMatch match = sim::Match(m_speech, heard);
        EXPECT_GT(match.correlation, 0.99);
        EXPECT_LE(match.missing, most);
    }
    /// @return samples of a file without a header
    static std::vector<std::int16_t> ReadSamples(const std::string& path) {
        std::vector<std::int16_t> samples;
        FILE* file = std::fopen(path.c_str(), "rbe");
        if (file == nullptr) { return samples; }
        for (std::int16_t sample = 0; std::fread(&sample, sizeof(sample), 1, file) == 1;) { samples.push_back(sample); }
        std::fclose(file);
        return samples;
    }

    const std::vector<std::int16_t> m_speech = [] {
        const std::vector<std::int16_t> all = sim::ReadWav(K740_ANNOUNCEMENT);
        return std::vector<std::int16_t>(all.begin(), all.begin() + sim::kSampleRate);
    }();
};

} // namespace k740::test
