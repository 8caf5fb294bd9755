#include "sim/answer_fault.h"

namespace k740::sim {

const AnswerFault& AnswerFaults::Of(std::uint16_t request) const {
    const auto found = m_special.find(request);
    return found == m_special.end() ? m_common.fault : found->second.fault;
}

bool AnswerFaults::Loses(std::uint16_t request) {
    const auto found = m_special.find(request);
    Entry& entry = found == m_special.end() ? m_common : found->second;
    return entry.fault.loseEvery > 0 && ++entry.count % entry.fault.loseEvery == 0;
}

} // namespace k740::sim
