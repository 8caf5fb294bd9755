#include "sim/arrival_stamps.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace k740::sim {
namespace {

using namespace std::chrono_literals;

constexpr auto kTimeInQueue = 200us; // of a probe; far more than the clocks' uncertainty
constexpr auto kLongestWait = 5s;
constexpr std::uint16_t kProbePort = 9; // discard

/// Lets a datagram lie a while. A time from before the reading is a stamp.
bool IsStamped(const UdpSocket& socket) {
    socket.Send(Bytes{0}, {"127.0.0.1", kProbePort});
    std::this_thread::sleep_for(kTimeInQueue);
    const Clock::time_point reading = Clock::now();
    const auto probe = socket.Receive();
    return probe && reading - probe->arrival > kTimeInQueue / 2;
}

} // namespace

ArrivalStamps::ArrivalStamps() : m_socket(UdpSocket::BoundTo({"127.0.0.1", kProbePort})) {
    const Clock::time_point end = Clock::now() + kLongestWait;
    while (!IsStamped(m_socket)) {
        if (Clock::now() > end) { throw std::runtime_error("The system does not stamp arriving datagrams."); }
    }
}

} // namespace k740::sim
