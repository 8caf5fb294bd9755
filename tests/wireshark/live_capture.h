// What passes the cable of a private network, written to a capture file.
#pragma once

#include <pcap/pcap.h>

#include <memory>
#include <string>
#include <thread>

namespace k740::test {

/// Captures on the station's end of the cable from construction on. Make it on a thread in `station`.
class LiveCapture {
public:
    /// @throws std::runtime_error with libpcap's reason when capturing is not allowed
    explicit LiveCapture(const std::string& path);
    ~LiveCapture();
    LiveCapture(const LiveCapture&) = delete;
    LiveCapture& operator=(const LiveCapture&) = delete;

    /// Ends the capture; everything that was sent before is in the file then. Once.
    void Finish();

private:
    void WriteUntilMarker();

    const std::unique_ptr<pcap_t, decltype(&pcap_close)> m_device;
    std::unique_ptr<pcap_dumper_t, decltype(&pcap_dump_close)> m_file;
    std::thread m_writer;
};

} // namespace k740::test
