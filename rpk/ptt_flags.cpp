// Which stations' push-to-talk audio is being received.
#include "rpk/rpk.h"

namespace {

auto IsOf(int id) {
    return [id](const tagRPK_MONITOR_PTT& monitor) { return monitor.deviceID == static_cast<uint32_t>(id); };
}

} // namespace

void CRPK::NewMonitorPTTFlag(int id) {
    m_pttMonitors.UpdateOrAppend(IsOf(id), [](tagRPK_MONITOR_PTT&) {}, {static_cast<uint32_t>(id), time(nullptr)});
}

void CRPK::RemoveMonitorPTTFlag(int id) {
    m_pttMonitors.EraseIf(IsOf(id));
}

int CRPK::GetMonitorPTTFlag(int id) const {
    return m_pttMonitors.Find(IsOf(id)) ? -1 : 0;
}
