// Listens to zone 1 of a zone controller for some seconds and writes what it plays into a WAV file.
#include <k740/k740.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

namespace {

constexpr const char* kUsage = "usage: monitor_zone FILE SECONDS [HOST [CONTROLLER [ID]]]\n"
                               "  FILE  WAV file to be written\n"
                               "  HOST  address of this machine, 192.168.1.166\n"
                               "  CONTROLLER, ID  of the zone controller, 192.168.1.33 and 33\n";
constexpr int kZoneController = 1; // device type
constexpr int kZone = 1;

/// The header of a WAV file of 44.1 kHz, 16 bit, mono; little-endian, as every machine is that runs the library.
struct WavHeader {
    char riff[4] = {'R', 'I', 'F', 'F'};
    std::uint32_t rest = 36; // bytes after this field
    char wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t formatBytes = 16;
    std::uint16_t format = 1; // PCM
    std::uint16_t channels = 1;
    std::uint32_t rate = 44'100;
    std::uint32_t bytesPerSecond = 88'200;
    std::uint16_t frameBytes = 2, bits = 16;
    char data[4] = {'d', 'a', 't', 'a'};
    std::uint32_t dataBytes = 0;
};
static_assert(sizeof(WavHeader) == 44);

/// Written by threads of the library, opened and closed by main.
class WavFile {
public:
    bool Open(const char* path) {
        const std::lock_guard lock(m_mutex);
        m_file = std::fopen(path, "wb");
        return m_file != nullptr && WriteHeader();
    }
    /// Does nothing once the file is closed: some audio may follow the end of monitoring.
    void Append(const unsigned char* audio, int length) {
        const std::lock_guard lock(m_mutex);
        if (m_file != nullptr) { m_bytes += std::fwrite(audio, 1, static_cast<std::size_t>(length), m_file); }
    }
    /// @return whether there is audio in the file and all of it has been written
    bool Close() {
        const std::lock_guard lock(m_mutex);
        std::rewind(m_file);
        const bool written = WriteHeader();
        return std::fclose(std::exchange(m_file, nullptr)) == 0 && written && m_bytes > 0;
    }

private:
    bool WriteHeader() {
        WavHeader header;
        header.dataBytes = static_cast<std::uint32_t>(m_bytes);
        header.rest += header.dataBytes;
        return std::fwrite(&header, sizeof(header), 1, m_file) == 1;
    }

    std::mutex m_mutex;
    std::FILE* m_file = nullptr;
    std::size_t m_bytes = 0; // of audio
};

WavFile& g_wav = *new WavFile; // never destroyed: threads of the library may still call back when main has returned

/// Runs on a thread of the library; the audio is valid during the call only.
int OnZoneAudio(int /*deviceID*/, int /*zone*/, unsigned char* audio, int length) {
    g_wav.Append(audio, length);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 6 || !g_wav.Open(argv[1])) {
        std::fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    const int id = argc > 5 ? std::atoi(argv[5]) : 33;
    const bool ready = K740_Initialize() == 0 && K740_SetNIC(argc > 3 ? argv[3] : "192.168.1.166") == 0 &&
                       K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, OnZoneAudio, nullptr, nullptr) == 0 &&
                       K740_AddDevice(id, kZoneController, argc > 4 ? argv[4] : "192.168.1.33") == 0 &&
                       K740_MonitorZone(id, kZone, 1) == 0;
    if (ready) { std::this_thread::sleep_for(std::chrono::seconds(std::atoi(argv[2]))); }
    K740_MonitorZone(id, kZone, 0);
    K740_Deinitialize();
    if (g_wav.Close()) { return EXIT_SUCCESS; }
    std::fputs(ready ? "Nothing was heard: is the zone controller there, and does the zone play?\n"
                     : "The library refused an argument; k740log/k740sdk.log says which.\n",
               stderr);
    return EXIT_FAILURE;
}
