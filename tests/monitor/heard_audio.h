// The audio that the host's callbacks were handed, and what devices must have sent for it.
#pragma once

#include "sim/audio_datagram.h"
#include "sim/audio_encoder.h"
#include "sim/audio_source.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace k740::test {

/// The blocks of one kind of audio callback. Any thread may call anything.
class HeardAudio {
public:
    using Clock = std::chrono::steady_clock;

    /// @param number  the callback's second argument: a zone or a kind of audio
    void Note(int deviceID, int number, const unsigned char* audio, int length) {
        std::function<void()> action;
        {
            const std::lock_guard lock(m_lock);
            Stream& stream = m_streams[{deviceID, number}];
            stream.lengths.push_back(length);
            const std::size_t known = stream.samples.size();
            stream.samples.resize(known + static_cast<std::size_t>(length) / sizeof(std::int16_t));
            std::memcpy(stream.samples.data() + known, audio, static_cast<std::size_t>(length));
            m_latest = Clock::now();
            ++m_count;
            std::swap(action, m_onNext);
        }
        m_noted.notify_all();
        if (action) { action(); }
    }

    /// Runs the action within the next callback.
    void OnNext(std::function<void()> action) {
        const std::lock_guard lock(m_lock);
        m_onNext = std::move(action);
    }

    /// Blocks until that many blocks of the stream have come. @return whether they came in time
    bool WaitFor(int deviceID, int number, std::size_t count,
                 std::chrono::milliseconds patience = std::chrono::seconds(20)) {
        std::unique_lock lock(m_lock);
        return m_noted.wait_for(lock, patience, [&] { return m_streams[{deviceID, number}].lengths.size() >= count; });
    }

    /// @return the samples of all blocks of the stream so far, one after the other
    std::vector<std::int16_t> Samples(int deviceID, int number) {
        const std::lock_guard lock(m_lock);
        return m_streams[{deviceID, number}].samples;
    }
    /// @return the length in bytes of each block of the stream so far
    std::vector<int> Lengths(int deviceID, int number) {
        const std::lock_guard lock(m_lock);
        return m_streams[{deviceID, number}].lengths;
    }
    std::size_t Count(int deviceID, int number) { return Lengths(deviceID, number).size(); }

    /// @return the number of blocks of all streams
    std::size_t CountAll() {
        const std::lock_guard lock(m_lock);
        return m_count;
    }
    /// @return when the latest block came
    Clock::time_point Latest() {
        const std::lock_guard lock(m_lock);
        return m_latest;
    }

private:
    struct Stream {
        std::vector<int> lengths;
        std::vector<std::int16_t> samples;
    };

    std::mutex m_lock;
    std::condition_variable m_noted;
    std::map<std::pair<int, int>, Stream> m_streams; // by device and number
    std::size_t m_count = 0;
    Clock::time_point m_latest;
    std::function<void()> m_onNext;
};

/// The callbacks to register. The lists are never destroyed, because threads of the library may outlive main.
inline HeardAudio& ZoneAudio() {
    static auto* const heard = new HeardAudio;
    return *heard;
}
inline HeardAudio& PTTAudio() {
    static auto* const heard = new HeardAudio;
    return *heard;
}
inline int NoteZoneAudio(int deviceID, int zone, unsigned char* audio, int length) {
    ZoneAudio().Note(deviceID, zone, audio, length);
    return -1; // of no interest to the library
}
inline int NotePTTAudio(int deviceID, int kind, unsigned char* audio, int length) {
    PTTAudio().Note(deviceID, kind, audio, length);
    return -1;
}

/// What the stream consists of.
/// @param stream  of PCM, with a count
inline std::vector<sim::AudioDatagram> Coded(const sim::AudioStream& stream, std::uint32_t node = 0) {
    sim::AudioEncoder encoder(stream.node.value_or(node), stream.stream, stream.type);
    std::vector<sim::AudioDatagram> coded;
    std::size_t position = 0;
    while (coded.size() < stream.count.value_or(0)) {
        std::vector<std::int16_t> samples(encoder.SamplesPerDatagram());
        for (std::int16_t& sample : samples) { sample = stream.pcm[position++ % stream.pcm.size()]; }
        coded.push_back(encoder.Encode(samples));
    }
    return coded;
}
inline std::vector<sim::Bytes> Datagrams(const sim::AudioStream& stream, std::uint32_t node = 0) {
    std::vector<sim::Bytes> datagrams;
    for (const sim::AudioDatagram& datagram : Coded(stream, node)) { datagrams.push_back(sim::Pack(datagram)); }
    return datagrams;
}

/// What a receiver that hears the stream from its beginning to its end makes of it.
inline std::vector<std::int16_t> DecodedAudio(const sim::AudioStream& stream) {
    sim::AudioDecoder decoder;
    std::vector<std::int16_t> audio;
    for (const sim::AudioDatagram& datagram : Coded(stream)) {
        const std::vector<std::int16_t> decoded = decoder.Decode(datagram);
        audio.insert(audio.end(), decoded.begin(), decoded.end());
    }
    return audio;
}

} // namespace k740::test
