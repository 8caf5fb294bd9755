// A simulated paging station: reports its status and answers task requests.
#pragma once

#include "sim/device.h"
#include "sim/records.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace k740::sim {

/// How a paging station meets a task request.
struct TaskBehaviour {
    std::vector<std::uint16_t> results{1}; // one answer each, in this order; empty: silent
    std::chrono::milliseconds delay{0};    // before the first answer
};

/// All public functions are safe in every thread and have taken effect when they return.
class PagingStation : public Device {
public:
    PagingStation(const Surroundings& surroundings, std::uint32_t id, const std::string& address);

    void SetBehaviour(const TaskBehaviour& behaviour);

    void SendStatus(const PagingStatus& status, std::uint16_t port = kReplyPort);
    /// Sends the status now and then every period; a period of 0 ends that.
    void RepeatStatus(const PagingStatus& status, std::chrono::milliseconds period = std::chrono::seconds(2));

    /// The task requests so far, in the order in which they came.
    [[nodiscard]] std::vector<PagingTaskRequest> Requests() const;

protected:
    void Handle(const Packet& packet, const Datagram& datagram) override;

private:
    // Of the reactor's thread.
    TaskBehaviour m_behaviour;
    std::vector<PagingTaskRequest> m_requests;
};

} // namespace k740::sim
