// Datagrams in great number from the field to a port of the station.
#pragma once

#include "sim/raw_sender.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace k740::test {

/// Sends the datagrams in turn, at a steady rate, from construction to destruction.
class Flood {
public:
    /// @param address  one of the field's
    /// @param rate     datagrams a second, at least 1000
    Flood(const sim::PrivateNetwork& network, const std::string& address, std::uint16_t port,
          std::vector<sim::Bytes> datagrams, int rate)
        : m_port(port), m_datagrams(std::move(datagrams)), m_batch(rate / 1'000), m_sender(network, address),
          m_thread([this] { Run(); }) {}
    ~Flood() {
        m_stop = true;
        m_thread.join();
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    [[nodiscard]] std::uint16_t Port() const { return m_port; }
    [[nodiscard]] std::size_t Sent() const { return m_sent; }

private:
    void Run() {
        for (auto next = std::chrono::steady_clock::now(); !m_stop; next += std::chrono::milliseconds(1)) {
            std::this_thread::sleep_until(next);
            for (int i = 0; i < m_batch; ++i) { SendNext(); }
        }
    }
    void SendNext() {
        m_sender.Send(m_datagrams[m_sent % m_datagrams.size()], m_port);
        ++m_sent;
    }

    const std::uint16_t m_port;
    const std::vector<sim::Bytes> m_datagrams;
    const int m_batch; // datagrams in a millisecond
    const sim::RawSender m_sender;
    std::atomic<bool> m_stop{false};
    std::atomic<std::size_t> m_sent{0};
    std::thread m_thread; // last, so that it finds everything else made
};

} // namespace k740::test
