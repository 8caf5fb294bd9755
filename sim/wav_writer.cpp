#include "sim/wav_writer.h"

#include "sim/wav_file.h"

#include <sndfile.hh>
#include <stdexcept>

namespace k740::sim {

WavWriter::WavWriter(const std::string& path, std::size_t mostSamples)
    : m_path(path),
      m_file(std::make_unique<SndfileHandle>(path, SFM_WRITE, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, kSampleRate)),
      m_room(mostSamples) {
    if (m_file->rawHandle() == nullptr) {
        throw std::runtime_error("cannot write " + path + ": " + m_file->strError());
    }
}

WavWriter::~WavWriter() = default;
WavWriter::WavWriter(WavWriter&&) noexcept = default;
WavWriter& WavWriter::operator=(WavWriter&&) noexcept = default;

void WavWriter::Append(const std::vector<std::int16_t>& samples) {
    if (samples.size() > m_room) { throw std::runtime_error("cannot write " + m_path + ": the WAV file is full"); }
    m_room -= samples.size();
    const auto count = static_cast<sf_count_t>(samples.size());
    if (m_file->write(samples.data(), count) == count) { return; }
    throw std::runtime_error("cannot write " + m_path + ": " + m_file->strError());
}

void WavWriter::Flush() {
    m_file->command(SFC_UPDATE_HEADER_NOW, nullptr, 0);
}

} // namespace k740::sim
