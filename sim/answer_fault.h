// Answers that go wrong: what a station must bear of devices and of the network.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

namespace k740::sim {

/// How a device meets requests, beside what it answers. Without any field set it does as it should.
struct AnswerFault {
    bool silent = false;                 ///< no answer
    std::chrono::milliseconds delay{0};  ///< before each answer; longer than the station waits: a late one
    bool twice = false;                  ///< each answer is sent two times
    std::optional<std::uint32_t> source; ///< the device that answers name as their sender, instead of the true one
    unsigned loseEvery = 0;              ///< every n-th request is not met at all; 1: none is met, 0: all are
};

/// The faults of one device, by the request's code. Reactor's thread only.
class AnswerFaults {
public:
    /// For all requests that have no fault of their own.
    void Set(const AnswerFault& fault) { m_common = {fault, 0}; }
    /// For the requests of one code.
    void Set(std::uint16_t request, const AnswerFault& fault) { m_special[request] = {fault, 0}; }

    [[nodiscard]] const AnswerFault& Of(std::uint16_t request) const;
    /// Counts a request; whether it is one of those to lose.
    bool Loses(std::uint16_t request);

private:
    struct Entry {
        AnswerFault fault;
        unsigned count = 0; // requests since the fault was set
    };

    Entry m_common;
    std::map<std::uint16_t, Entry> m_special;
};

} // namespace k740::sim
