// Every exported function that initialises the library on first use, with arguments that wait for nobody.
#pragma once

#include "app/k740.h"

#include <ostream>
#include <vector>

namespace k740::test {

struct ExportedCall {
    const char* name;
    int (*call)();
};

inline std::ostream& operator<<(std::ostream& out, const ExportedCall& call) {
    return out << call.name;
}

inline std::vector<ExportedCall> ExportedCalls() {
    return {
        {"Deinitialize", [] { return K740_Deinitialize(); }},
        {"SetNodeID", [] { return K740_SetNodeID(1); }},
        {"SetAudioStreamFormat", [] { return K740_SetAudioStreamFormat(2); }},
        {"SetFirstMulticastIP", [] { return K740_SetFirstMulticastIP(nullptr); }},
        {"SetNIC", [] { return K740_SetNIC(nullptr); }},
        {"EnterVAMode", [] { return K740_EnterVAMode(1, 0); }},
        {"ExitVAMode", [] { return K740_ExitVAMode(1, 0); }},
        {"EnableCallbackLog", [] { return K740_EnableCallbackLog(2); }},
        {"SetDeviceCallback",
         [] { return K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); }},
        {"SetTrainCallback", [] { return K740_SetTrainCallback(nullptr, nullptr); }},
        {"SetIntercomCallback", [] { return K740_SetIntercomCallback(nullptr, nullptr); }},
        {"AddDevice", [] { return K740_AddDevice(1, 11, nullptr); }},
        {"RemoveDevice", [] { return K740_RemoveDevice(1); }},
        {"GetDeviceList", [] { return K740_GetDeviceList(nullptr, 0); }},
        {"SetRPKPTTMulticastIP", [] { return K740_SetRPKPTTMulticastIP(5000, nullptr); }},
        {"SetVolume", [] { return K740_SetVolume(1, nullptr); }},
        {"GetVolume", [] { return K740_GetVolume(1); }},
        {"CloseZones", [] { return K740_CloseZones(nullptr); }},
        {"GetDeviceVersion", [] { return K740_GetDeviceVersion(1, nullptr, 0); }},
        {"MonitorZone", [] { return K740_MonitorZone(1, 1, 1); }},
        {"Invite", [] { return K740_Invite(0, 0); }},
        {"Accept", [] { return K740_Accept(0, 0); }},
        {"HangUp", [] { return K740_HangUp(0); }},
        {"GetIntercomStatus", [] { return K740_GetIntercomStatus(0, nullptr, nullptr); }},
        {"SendIntercomAudio", [] { return K740_SendIntercomAudio(0, nullptr, 0); }},
        {"StartAudioFileTask", [] { return K740_StartAudioFileTask(0, 0, 0, 0, nullptr, 0, nullptr, 1); }},
        {"StartAudioStreamTask", [] { return K740_StartAudioStreamTask(0, 0, 0, 0, nullptr, 0); }},
        {"StartNetAUXTask", [] { return K740_StartNetAUXTask(0, 0, 0, nullptr, 0, 0, nullptr, 0); }},
        {"StopTask", [] { return K740_StopTask(0); }},
        {"GetTaskStatus", [] { return K740_GetTaskStatus(0); }},
        {"GetRunningTasks", [] { return K740_GetRunningTasks(nullptr, 0); }},
        {"AddZones", [] { return K740_AddZones(0, nullptr); }},
        {"SendAudioStreamProc", [] { return K740_SendAudioStreamProc(0, nullptr, 0); }},
        {"StartRPKTask", [] { return K740_StartRPKTask(0, 0, 0, nullptr); }},
        {"StopRPKTask", [] { return K740_StopRPKTask(0, 0); }},
        {"StartRPKMonitor", [] { return K740_StartRPKMonitor(0, 0, 0); }},
        {"StopRPKMonitor", [] { return K740_StopRPKMonitor(0); }},
    };
}

} // namespace k740::test
