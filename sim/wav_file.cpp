#include "sim/wav_file.h"

#include <filesystem>
#include <sndfile.hh>
#include <stdexcept>
#include <system_error>

namespace k740::sim {
namespace {

/// Whether it is there and no plain file, such as a named pipe, whose reader may wait for ever.
bool IsUnusual(const std::string& path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

} // namespace

void WriteWav(const std::string& path, const std::vector<std::int16_t>& samples) {
    SndfileHandle file(path, SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, kSampleRate);
    const auto count = static_cast<sf_count_t>(samples.size());
    if (!file || file.write(samples.data(), count) != count) {
        throw std::runtime_error("cannot write " + path + ": " + file.strError());
    }
}

std::vector<std::int16_t> ReadWav(const std::string& path) {
    if (IsUnusual(path)) { throw std::runtime_error("cannot read " + path + ": it is no plain file"); }
    SndfileHandle file(path);
    if (file.rawHandle() == nullptr) { throw std::runtime_error("cannot read " + path + ": " + file.strError()); }
    const bool expected = file.channels() == 1 && file.samplerate() == kSampleRate &&
                          (file.format() & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
    if (!expected) { throw std::runtime_error(path + " is no 16 bit mono file at 44.1 kHz"); }
    std::vector<std::int16_t> samples(static_cast<std::size_t>(file.frames()));
    if (file.read(samples.data(), file.frames()) != file.frames()) { throw std::runtime_error(path + " is cut short"); }
    return samples;
}

} // namespace k740::sim
