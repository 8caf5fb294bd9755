#include "sim/paging_station.h"

namespace k740::sim {

PagingStation::PagingStation(const Surroundings& surroundings, std::uint32_t id, const std::string& address)
    : Device(surroundings, id, address) {}

void PagingStation::SetBehaviour(const TaskBehaviour& behaviour) {
    OnReactor().Run([&] { m_behaviour = behaviour; });
}

void PagingStation::SendStatus(const PagingStatus& status, std::uint16_t port) {
    SendToStation(command::kPagingStatus, Payload(status), port);
}

void PagingStation::RepeatStatus(const PagingStatus& status, std::chrono::milliseconds period) {
    Repeat(period, [this, status] { SendStatus(status); });
}

std::vector<PagingTaskRequest> PagingStation::Requests() const {
    std::vector<PagingTaskRequest> requests;
    OnReactor().Run([&] { requests = m_requests; });
    return requests;
}

void PagingStation::Handle(const Packet& packet, const Datagram& datagram) {
    if (packet.command != command::kPagingTask) { return; }
    const PagingTaskRequest request = ReadPagingTaskRequest(packet);
    m_requests.push_back(request);
    After(m_behaviour.delay, [=, this, results = m_behaviour.results, requester = datagram.sender] {
        for (const std::uint16_t result : results) {
            Answer(packet, requester, command::kPagingTaskAnswer, Payload(PagingTaskAnswer{request.taskId, result}));
        }
    });
}

} // namespace k740::sim
