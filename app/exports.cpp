// The exported functions of lifecycle, configuration and callbacks.
#include "app/exported.h"
#include "common/format.h"
#include "common/ip_address.h"
#include "common/qbstring.h"

namespace {

constexpr int kFirstNodeID = 9500;
constexpr int kLastNodeID = 9999;
constexpr int kLastHostAudioFormat = 1;

/// Stores a callback, null too, and logs the registration of one that is set.
template <typename Function> void Register(CK740ControlApp& app, CCallbackSlot<Function>& slot, Function function) {
    slot.Set(function);
    if (function != nullptr) { LogCall(app, Format("Register callback %s()", slot.Type())); }
}

} // namespace

extern "C" K740_API int K740_Initialize(void) {
    return Guarded([](CK740ControlApp& app) { return app.Initialize(); });
}

extern "C" K740_API int K740_Deinitialize(void) {
    return Exported([](CK740ControlApp& app) { return app.Deinitialize(); });
}

extern "C" K740_API int K740_SetNodeID(int nodeID) {
    return Exported([=](CK740ControlApp& app) {
        if (nodeID < kFirstNodeID || nodeID > kLastNodeID) { return kFail; }
        app.Configuration().SetNodeID(nodeID);
        LogCall(app, Format("K740_SetNodeID(%d)", nodeID));
        return kOk;
    });
}

extern "C" K740_API int K740_SetAudioStreamFormat(int format) {
    return Exported([=](CK740ControlApp& app) {
        if (format < 0 || format > kLastHostAudioFormat) { return kFail; }
        app.Configuration().SetAudioStreamFormat(format);
        LogCall(app, Format("K740_SetAudioStreamFormat(%d)", format));
        return kOk;
    });
}

extern "C" K740_API int K740_SetFirstMulticastIP(const char* address) {
    return Exported([=](CK740ControlApp& app) {
        const std::string trimmed = qbstring::trimString(Text(address));
        if (IsMulticastIPValid(trimmed) != 0) { return kFail; }
        app.Configuration().SetFirstMulticastIP(trimmed);
        LogCall(app, Format("K740_SetFirstMulticastIP('%s')", trimmed.c_str()));
        return kOk;
    });
}

extern "C" K740_API int K740_SetNIC(const char* address) {
    return Exported([=](CK740ControlApp& app) {
        const std::string nic = Text(address);
        if (!IsIPValid(nic)) { return kFail; }
        app.Configuration().SetNIC(nic);
        LogCall(app, Format("K740_SetNIC('%s')", nic.c_str()));
        return kOk;
    });
}

extern "C" K740_API int K740_EnableCallbackLog(int enable) {
    return Exported([=](CK740ControlApp& app) {
        if (enable != 0 && enable != 1) { return kFail; }
        app.Callbacks().EnableLog(enable == 1);
        LogCall(app, Format("K740_EnableCallbackLog(%d)", enable));
        return kOk;
    });
}

extern "C" K740_API int K740_SetDeviceCallback(PZCUSTATUS zcuStatus, PZONESTATUS zoneStatus, PZCUVOLUME zcuVolume,
                                               PTASKSTATUS taskStatus, PMONITORZONE monitorZone, PRPKSTATUS rpkStatus,
                                               PRPKPTTAUDIO rpkPTTAudio) {
    return Exported([=](CK740ControlApp& app) {
        CHostCallbacks& callbacks = app.Callbacks();
        Register(app, callbacks.zcuStatus, zcuStatus);
        Register(app, callbacks.zoneStatus, zoneStatus);
        Register(app, callbacks.zcuVolume, zcuVolume);
        Register(app, callbacks.monitorZone, monitorZone);
        Register(app, callbacks.taskStatus, taskStatus);
        Register(app, callbacks.rpkStatus, rpkStatus);
        Register(app, callbacks.rpkPTTAudio, rpkPTTAudio);
        return kOk;
    });
}

extern "C" K740_API int K740_SetTrainCallback(PTRAINMESSAGE trainMessage, PTRAINAUDIO trainAudio) {
    return Exported([=](CK740ControlApp& app) {
        Register(app, app.Callbacks().trainMessage, trainMessage);
        Register(app, app.Callbacks().trainAudio, trainAudio);
        return kOk;
    });
}

extern "C" K740_API int K740_SetIntercomCallback(PINTERCOMMESSAGE intercomMessage, PINTERCOMAUDIO intercomAudio) {
    return Exported([=](CK740ControlApp& app) {
        Register(app, app.Callbacks().intercomMessage, intercomMessage);
        Register(app, app.Callbacks().intercomAudio, intercomAudio);
        return kOk;
    });
}
