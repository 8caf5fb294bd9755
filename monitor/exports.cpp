// The exported function of the zone monitor.
#include "app/exported.h"
#include "common/format.h"

namespace {

int SwitchMonitor(CK740ControlApp& app, int deviceID, int zone, int start) {
    const auto zcuID = static_cast<uint32_t>(deviceID);
    const auto number = static_cast<uint32_t>(zone);
    if (start == 1) { return app.Monitor().StartMonitorZone(zcuID, number); }
    if (start == 0) { return app.Monitor().StopMonitorZone(zcuID, number); }
    return kFail;
}

} // namespace

extern "C" K740_API int K740_MonitorZone(int deviceID, int zone, int start) {
    return Exported([=](CK740ControlApp& app) {
        const std::string call = Format("K740_MonitorZone(%d, %d, %d)", deviceID, zone, start);
        const auto logError = [&app](const std::string& text) {
            app.Log().PushLog("", kLogError, text);
            return kFail;
        };
        LogCall(app, call);
        if (!IsZoneControllerType(app.Devices().GetDeviceType(deviceID))) {
            return logError(call + ", device id is error.");
        }
        if (!IsZone(zone)) { return logError(call + ", zone id is error."); }
        const int result = SwitchMonitor(app, deviceID, zone, start);
        if (result < 0) { logError(Format("Failed to %s, return %d.", call.c_str(), result)); }
        return result;
    });
}
