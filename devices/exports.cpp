// The exported functions of the device registry.
#include "app/exported.h"
#include "common/format.h"
#include "common/qbstring.h"

extern "C" K740_API int K740_AddDevice(int deviceID, int deviceType, const char* address) {
    return Exported([=](CK740ControlApp& app) { return app.Devices().AddDevice(deviceID, deviceType, Text(address)); });
}

extern "C" K740_API int K740_RemoveDevice(int deviceID) {
    return Exported([=](CK740ControlApp& app) { return app.Devices().RemoveDevice(deviceID); });
}

extern "C" K740_API int K740_GetDeviceList(char* buffer, int size) {
    return Exported([=](CK740ControlApp& app) {
        const std::string list = app.Devices().GetDeviceList();
        Xstrcpy(buffer, list, size);
        return static_cast<int>(list.size());
    });
}

extern "C" K740_API int K740_SetRPKPTTMulticastIP(int deviceID, const char* address) {
    return Exported([=](CK740ControlApp& app) {
        const int result = app.Devices().SetRPKPTTMulticastIP(deviceID, Text(address));
        LogCall(app, Format("K740_SetRPKPTTMulticastIP(%d, '%s')", deviceID, Text(address).c_str()));
        return result;
    });
}
