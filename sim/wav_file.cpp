#include "sim/wav_file.h"

#include <sndfile.hh>
#include <stdexcept>

namespace k740::sim {

void WriteWav(const std::string& path, const std::vector<std::int16_t>& samples) {
    SndfileHandle file(path, SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, kSampleRate);
    const auto count = static_cast<sf_count_t>(samples.size());
    if (!file || file.write(samples.data(), count) != count) {
        throw std::runtime_error("cannot write " + path + ": " + file.strError());
    }
}

std::vector<std::int16_t> ReadWav(const std::string& path) {
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
