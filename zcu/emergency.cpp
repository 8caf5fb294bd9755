// The requests that switch emergency (voice alarm) mode of a zone controller.
#include "app/application.h"
#include "common/udp.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {
constexpr int kLastEmergencyPriority = 255;
} // namespace

int CZCU::ZCU_Request_EnterEmergency(int id, int priority) {
    return RequestEmergency(id, priority, kCmdEnterEmergency);
}

int CZCU::ZCU_Request_ExitEmergency(int id, int priority) {
    return RequestEmergency(id, priority, kCmdExitEmergency);
}

int CZCU::RequestEmergency(int id, int priority, uint16_t command) {
    if (!IsZoneControllerID(id) || priority < 1 || priority > kLastEmergencyPriority) { return -1; }
    const auto udp = m_app.Devices().GetDeviceUDP(id);
    if (udp == nullptr) { return -1; }
    const _zcu_emergency_t emergency{m_app.Configuration().NodeID(), ConvertPriority(static_cast<uint16_t>(priority))};
    const _vxa_cmd_packet_t packet = m_app.MakeRequest(id, command, emergency);
    // An emergency does not queue behind other sends: the send lock is left alone.
    const int sent = udp->send_udp_data(reinterpret_cast<const char*>(&packet), sizeof(packet));
    return sent > 0 ? 0 : -1;
}
