#include "sim/zone_groups.h"

#include "sim/address.h"

namespace k740::sim {
namespace {

constexpr std::size_t kAnswerSize = 65; // bytes
constexpr std::uint8_t kEntriesFollow = 1;

} // namespace

void ZoneGroups::Set(int zone, const std::string& group, std::uint32_t word) {
    m_entries.at(static_cast<std::size_t>(zone - 1)) = {AddressNumber(group), word};
}

std::string ZoneGroups::GroupOf(int zone) const {
    return AddressText(m_entries.at(static_cast<std::size_t>(zone - 1)).group);
}

Bytes ZoneGroups::Payload() const {
    ByteWriter writer;
    if (m_layout == ZoneGroupLayout::Virtual) { writer.Put(kEntriesFollow); }
    for (const Entry& entry : m_entries) { writer.Put(entry.group).Put(entry.word); }
    return writer.Fill(kAnswerSize - writer.Get().size(), 0).Get();
}

} // namespace k740::sim
