// A WAV file that grows while it is recorded.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class SndfileHandle;

namespace k740::sim {

/// 16 bit mono at 44.1 kHz. The file is complete after Flush and on destruction.
class WavWriter {
public:
    /// @throws std::runtime_error when the file cannot be made
    explicit WavWriter(const std::string& path);
    ~WavWriter();
    WavWriter(WavWriter&&) noexcept;
    WavWriter& operator=(WavWriter&&) noexcept;

    /// @throws std::runtime_error when the disk takes no more
    void Append(const std::vector<std::int16_t>& samples);
    /// Makes the header say how long the file is by now.
    void Flush();

    [[nodiscard]] const std::string& Path() const { return m_path; }

private:
    std::string m_path;
    std::unique_ptr<SndfileHandle> m_file;
};

} // namespace k740::sim
