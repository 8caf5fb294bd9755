// A host that plays audio files: files to play, and the datagrams that must come of them.
#pragma once

#include "sim/audio_encoder.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/player/broadcast_fixture.h"
#include "tests/support/noise.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace k740::test {

inline constexpr std::size_t kHeaderBytes = 100; // of a file, skipped whatever they are
inline constexpr std::size_t kChunkBytes = 1764; // 20 ms
inline constexpr std::size_t kFrameSamplesSent = 2048;

/// Arguments of K740_StartAudioFileTask in its order, all good.
struct FileArguments {
    int taskID = kTask;
    int volume = 100;
    int priority = 70;
    int recovery = 0;
    const char* zones = kZones;
    int dryContact = 0;
    const char* files = "";
    int repeat = 1;
};

inline int PlayFiles(const FileArguments& task) {
    return K740_StartAudioFileTask(task.taskID, task.volume, task.priority, task.recovery, task.zones, task.dryContact,
                                   task.files, task.repeat);
}

class FileTaskTest : public BroadcastTest {
protected:
    FileTaskTest() {
        m_controller.SetKeep(sim::Keep::SamplesAndDatagrams);
        EXPECT_TRUE(WaitUntilListening());
    }

    /// Writes that many bytes of noise into a file of the working directory. @return the bytes
    static sim::Bytes WriteNoise(const std::string& path, std::size_t size, std::uint32_t seed = 1) {
        sim::Bytes bytes = sim::ByteWriter().PutAll(Noise(size / 2 + 1, seed)).Get();
        bytes.resize(size);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(size));
        return bytes;
    }

    /// @return what one pass over a file pushes: whole chunks, the last one filled up with zeros
    static sim::Bytes Pushed(const sim::Bytes& file) {
        if (file.size() <= kHeaderBytes) { return {}; }
        sim::Bytes pushed(file.begin() + kHeaderBytes, file.end());
        pushed.resize((pushed.size() + kChunkBytes - 1) / kChunkBytes * kChunkBytes);
        return pushed;
    }

    /// @return the datagrams of pushed audio: whole frames only
    static std::vector<sim::Bytes> DatagramsOf(const sim::Bytes& pushed) {
        sim::AudioEncoder encoder(9500, 1, 341);
        std::vector<sim::Bytes> datagrams;
        for (std::size_t at = 0; at + 2 * kFrameSamplesSent <= pushed.size(); at += 2 * kFrameSamplesSent) {
            std::vector<std::int16_t> samples(kFrameSamplesSent);
            std::memcpy(samples.data(), pushed.data() + at, 2 * samples.size());
            datagrams.push_back(sim::Pack(encoder.Encode(samples)));
        }
        return datagrams;
    }

    /// The audio datagrams that the controller has received by the time it was told to leave the task.
    std::vector<sim::Bytes> AllDatagrams() const {
        WaitForPacket(kController, sim::command::kCloseAudio);
        const std::vector<sim::Recording> recordings = m_controller.Recordings();
        if (recordings.empty()) { return {}; }
        std::vector<sim::Bytes> datagrams = recordings.back().rawDatagrams;
        std::erase_if(datagrams, [](const sim::Bytes& datagram) {
            return sim::ReadAt<std::uint16_t>(datagram, 14) == sim::kEndOfStreamType;
        });
        return datagrams;
    }

    /// Plays a file again and again and expects exactly its audio, pass after pass.
    void ExpectPlayed(std::size_t size, int passes) {
        const sim::Bytes once = Pushed(WriteNoise("file.pcm", size));
        sim::Bytes all;
        for (int pass = 0; pass < passes; ++pass) { all.insert(all.end(), once.begin(), once.end()); }
        EXPECT_EQ(0, PlayFiles({.files = "file.pcm", .repeat = passes}));
        EXPECT_EQ(DatagramsOf(all), AllDatagrams()) << size;
    }
};

} // namespace k740::test
