// The exported functions of paging stations.
#include "app/exported.h"
#include "common/format.h"

extern "C" K740_API int K740_StartRPKTask(int deviceID, int taskID, int priority, const char* zones) {
    return Exported([=](CK740ControlApp& app) {
        LogCall(app, Format("K740_StartRPKTask(%d, %d, %d, '%s')", deviceID, taskID, priority, Text(zones).c_str()));
        return app.RPK().StartStopRPKTask(deviceID, taskID, priority, Text(zones), 1);
    });
}

extern "C" K740_API int K740_StopRPKTask(int deviceID, int taskID) {
    return Exported([=](CK740ControlApp& app) {
        LogCall(app, Format("K740_StopRPKTask(%d, %d)", deviceID, taskID));
        return app.RPK().StartStopRPKTask(deviceID, taskID, 0, "", 0);
    });
}

extern "C" K740_API int K740_StartRPKMonitor(int deviceID, int zcuID, int zone) {
    return Exported([=](CK740ControlApp& app) {
        LogCall(app, Format("K740_StartRPKMonitor(%d, %d, %d)", deviceID, zcuID, zone));
        return app.RPK().StartStopRPKMonitor(deviceID, zcuID, zone, 1);
    });
}

extern "C" K740_API int K740_StopRPKMonitor(int deviceID) {
    constexpr int kAnyController = 1; // of no matter once the station has been told a zone
    constexpr int kAnyZone = 1;
    return Exported([=](CK740ControlApp& app) {
        LogCall(app, Format("K740_StopRPKMonitor(%d)", deviceID));
        return app.RPK().StartStopRPKMonitor(deviceID, kAnyController, kAnyZone, 0);
    });
}
