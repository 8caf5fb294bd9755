// Paging station status.
#include "app/application.h"
#include "common/device_types.h"
#include "rpk/rpk.h"

namespace {
constexpr uint8_t kOffLineActivity = 2;
}

void CRPK::RPK_Response_RPKStatus(const _vxa_cmd_packet_t* packet) {
    if (!IsPagingStationID(packet->sourceID)) { return; }
    m_status.Report({packet->sourceID, ReadPayload<_rpk_status_payload_t>(*packet), time(nullptr)});
}

void CRPK::OffLine_RPK(int id) {
    if (!IsPagingStationID(id)) { return; }
    tagRPK_QUERYSTATUS record{};
    record.deviceID = static_cast<uint32_t>(id);
    record.status.state = kStatusOffLine;
    record.status.activity = kOffLineActivity;
    record.lastUpdate = time(nullptr);
    m_status.Report(record);
}

void CRPK::UpdateRPKStatus(time_t now) {
    const auto isRegistered = [this](int id) { return m_app.Devices().IsDeviceIDValid(id); };
    m_status.Merge(isRegistered);
    m_status.Age(now);
    m_status.RemoveUnregistered(isRegistered);
}
