// The exported functions of paging stations.
#include "app/exported.h"
#include "common/format.h"

extern "C" K740_API int K740_StartRPKTask(int deviceID, int taskID, int priority, const char* zones) {
    return Exported([=](CK740ControlApp& app) {
        app.Log().PushLog(
            "", kLogInfo,
            Format("K740_StartRPKTask(%d, %d, %d, '%s')", deviceID, taskID, priority, Text(zones).c_str()));
        return app.RPK().StartStopRPKTask(deviceID, taskID, priority, Text(zones), 1);
    });
}

extern "C" K740_API int K740_StopRPKTask(int deviceID, int taskID) {
    return Exported([=](CK740ControlApp& app) {
        app.Log().PushLog("", kLogInfo, Format("K740_StopRPKTask(%d, %d)", deviceID, taskID));
        return app.RPK().StartStopRPKTask(deviceID, taskID, 0, "", 0);
    });
}
