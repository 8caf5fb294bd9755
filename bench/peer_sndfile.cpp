// The codecs of libsndfile, writing to and reading from memory.
#include "bench/signal.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace {

using bench::ForEachSignal;
using bench::kBlocks;
using bench::kBlockSamples;
using bench::Signal;

/// A file in memory. Writing beyond kLimit goes round in place, so that a benchmark may write for ever.
class MemoryFile {
public:
    SNDFILE* Open(int mode, int format) {
        SF_INFO info{};
        info.samplerate = 44100;
        info.channels = 1;
        info.format = mode == SFM_READ && (format & SF_FORMAT_TYPEMASK) != SF_FORMAT_RAW ? 0 : format;
        SF_VIRTUAL_IO io{&Length, &Seek, &Read, &Write, &Tell};
        m_position = 0;
        SNDFILE* file = sf_open_virtual(&io, mode, &info, this);
        if (file == nullptr) { throw std::runtime_error("libsndfile refused"); }
        return file;
    }

private:
    static constexpr sf_count_t kLimit = sf_count_t{1} << 20;

    static MemoryFile* Self(void* self) { return static_cast<MemoryFile*>(self); }
    static sf_count_t Length(void* self) { return static_cast<sf_count_t>(Self(self)->m_bytes.size()); }
    static sf_count_t Tell(void* self) { return Self(self)->m_position; }
    static sf_count_t Seek(sf_count_t offset, int whence, void* self) {
        const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? Tell(self) : Length(self);
        return Self(self)->m_position = base + offset;
    }
    static sf_count_t Read(void* to, sf_count_t count, void* self) {
        const sf_count_t taken = std::clamp<sf_count_t>(Length(self) - Tell(self), 0, count);
        std::memcpy(to, Self(self)->m_bytes.data() + Tell(self), static_cast<std::size_t>(taken));
        Self(self)->m_position += taken;
        return taken;
    }
    static sf_count_t Write(const void* from, sf_count_t count, void* self) {
        auto& bytes = Self(self)->m_bytes;
        const sf_count_t at = Tell(self) % kLimit;
        bytes.resize(std::max(bytes.size(), static_cast<std::size_t>(at + count)));
        std::memcpy(bytes.data() + at, from, static_cast<std::size_t>(count));
        Self(self)->m_position += count;
        return count;
    }

    std::vector<char> m_bytes;
    sf_count_t m_position = 0;
};

void Code(benchmark::State& state, const Signal& signal, int format) {
    MemoryFile memory;
    SNDFILE* file = memory.Open(SFM_WRITE, format);
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        return sf_write_short(file, &signal[block * kBlockSamples], kBlockSamples);
    });
    sf_close(file);
}

void Decode(benchmark::State& state, const Signal& signal, int format) {
    MemoryFile memory;
    SNDFILE* file = memory.Open(SFM_WRITE, format);
    sf_write_short(file, signal.data(), static_cast<sf_count_t>(signal.size()));
    sf_close(file);
    file = memory.Open(SFM_READ, format);
    std::array<short, kBlockSamples> pcm{};
    bench::RunInTurn(state, kBlocks, [&](std::size_t block) {
        if (block == 0) { sf_seek(file, 0, SEEK_SET); }
        return sf_read_short(file, pcm.data(), kBlockSamples);
    });
    sf_close(file);
}

bool Add(const std::string& encode, const std::string& decode, int format) {
    return ForEachSignal(encode + "/sndfile", [=](auto& s, const auto& x) { Code(s, x, format); }) &&
           ForEachSignal(decode + "/sndfile", [=](auto& s, const auto& x) { Decode(s, x, format); });
}

const bool kRegistered = Add("AdpcmMonoCode", "AdpcmMonoDecode", SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM) &&
                         Add("ALawEncode", "ALawDecode", SF_FORMAT_RAW | SF_FORMAT_ALAW) &&
                         Add("ULawEncode", "ULawDecode", SF_FORMAT_RAW | SF_FORMAT_ULAW);

} // namespace
