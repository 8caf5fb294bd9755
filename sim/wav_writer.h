// A WAV file that grows while it is recorded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class SndfileHandle;

namespace k740::sim {

/// 16 bit mono at 44.1 kHz. The file is complete after Flush and on destruction.
class WavWriter {
public:
    /// Its header counts bytes in 32 bit, and is itself among them.
    static constexpr std::size_t kMostSamples = 0x7FFFFF00;

    /// @param mostSamples  that the file takes
    /// @throws std::runtime_error when the file cannot be made
    explicit WavWriter(const std::string& path, std::size_t mostSamples = kMostSamples);
    ~WavWriter();
    WavWriter(WavWriter&&) noexcept;
    WavWriter& operator=(WavWriter&&) noexcept;

    /// @throws std::runtime_error when the disk or the file takes no more
    void Append(const std::vector<std::int16_t>& samples);
    /// Makes the header say how long the file is by now.
    void Flush();

    [[nodiscard]] const std::string& Path() const { return m_path; }

private:
    std::string m_path;
    std::unique_ptr<SndfileHandle> m_file;
    std::size_t m_room; // for samples
};

} // namespace k740::sim
