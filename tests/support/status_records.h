// Status records made from the bytes of a report.
#pragma once

#include "rpk/rpk_records.h"
#include "zcu/zcu_status.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <numeric>

namespace k740::test {

using ZCUReport = std::array<std::uint8_t, 85>;
using RPKReport = std::array<std::uint8_t, 9>;

/// Byte i is i, so that every field has bytes of its own.
inline ZCUReport CountingReport() {
    ZCUReport report;
    std::iota(report.begin(), report.end(), static_cast<std::uint8_t>(0));
    return report;
}

inline tagZCU_QUERYSTATUS2 ZCURecord(int id, const ZCUReport& report, time_t lastUpdate = time(nullptr)) {
    tagZCU_QUERYSTATUS2 record{};
    record.deviceID = static_cast<std::uint32_t>(id);
    std::memcpy(&record.status, report.data(), report.size());
    record.lastUpdate = lastUpdate;
    return record;
}

inline tagRPK_QUERYSTATUS RPKRecord(int id, const RPKReport& report, time_t lastUpdate = time(nullptr)) {
    tagRPK_QUERYSTATUS record{};
    record.deviceID = static_cast<std::uint32_t>(id);
    std::memcpy(&record.status, report.data(), report.size());
    record.lastUpdate = lastUpdate;
    return record;
}

} // namespace k740::test
