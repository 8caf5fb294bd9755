// The exported functions of tasks.
#include "app/exported.h"
#include "common/format.h"
#include "common/qbstring.h"
#include "player/file_task.h"
#include "player/running_report.h"

namespace {
constexpr int kNoTaskChannel = -2;
constexpr int kNeverBroadcast = -4;
constexpr int kLastRepeat = 65'535;
constexpr const char* kFileSeparator = "|";
} // namespace

extern "C" K740_API int K740_StartAudioStreamTask(int taskID, int volume, int priority, int recovery, const char* zones,
                                                  int dryContactOutput) {
    return Exported([=](CK740ControlApp& app) {
        const std::string zoneText = Text(zones);
        LogCall(app, Format("=====K740_StartAudioStreamTask(%d, %d, %d, %d, '%s', %d)", taskID, volume, priority,
                            recovery, zoneText.c_str(), dryContactOutput));
        return app.Player().AddAudioTaskToTaskQueue(taskID, volume, priority, recovery, zoneText, dryContactOutput);
    });
}

extern "C" K740_API int K740_StartNetAUXTask(int taskID, int priority, int deviceID, const char* multicastIP,
                                             int auxPort, int recovery, const char* zones, int dryContactOutput) {
    return Exported([=](CK740ControlApp& app) {
        return app.Player().AddNetTaskToTaskQueue(taskID, priority, deviceID, Text(multicastIP), auxPort, recovery,
                                                  Text(zones), dryContactOutput);
    });
}

extern "C" K740_API int K740_StartAudioFileTask(int taskID, int volume, int priority, int recovery, const char* zones,
                                                int dryContactOutput, const char* files, int repeat) {
    return Exported([=](CK740ControlApp& app) {
        LogCall(app, Format("=====K740_StartAudioFileTask(%d, %d, %d, %d, '%s', %d, '%s', %d)", taskID, volume,
                            priority, recovery, Text(zones).c_str(), dryContactOutput, Text(files).c_str(), repeat));
        const auto reject = [&app](const std::string& reason, int result) {
            app.Log().PushLog("", kLogError, reason);
            return result;
        };
        if (repeat < 0 || repeat > kLastRepeat) { return reject("Repeat is error.", kFail); }
        std::vector<std::string> paths;
        qbstring::SplitStringToVector(Text(files), kFileSeparator, paths);
        if (paths.empty()) { return reject("No audio files.", kFail); }

        const auto fail = [&] { return reject(Format("Failed to start task %d", taskID), kNeverBroadcast); };
        // Within a report of its own former run, which cannot end before this call does, it would wait for ever.
        const bool stopped = !IsRunning(app.Player().Status().GetTaskStatus(taskID));
        if (stopped && CRunningReport::IsUnderWay(taskID)) { return fail(); }
        const int refused = K740_StartAudioStreamTask(taskID, volume, priority, recovery, zones, dryContactOutput);
        if (refused != kOk) { return refused; }
        CFileTask task(app, taskID);
        if (!task.AwaitBroadcast()) { return fail(); }
        task.Play(paths, repeat);
        K740_StopTask(taskID);
        return kOk;
    });
}

extern "C" K740_API int K740_StopTask(int taskID) {
    return Exported([=](CK740ControlApp& app) {
        if (!IsTaskID(taskID)) { return kFail; }
        // A running task reports its end itself, once it is over.
        if (!IsRunning(app.Player().StopTask(taskID))) { app.Callbacks().TaskStatus(taskID, kTaskNone); }
        LogCall(app, Format("K740_StopTask(%d)", taskID));
        return kOk;
    });
}

extern "C" K740_API int K740_GetTaskStatus(int taskID) {
    return Exported([=](CK740ControlApp& app) {
        return IsTaskID(taskID) ? static_cast<int>(app.Player().Status().GetTaskStatus(taskID)) : kFail;
    });
}

extern "C" K740_API int K740_GetRunningTasks(int* ids, int maxCount) {
    return Exported([=](CK740ControlApp& app) {
        return ids != nullptr && maxCount >= 1 ? app.Player().Status().ListRunning(ids, maxCount) : kFail;
    });
}

extern "C" K740_API int K740_AddZones(int taskID, const char* zones) {
    return Exported([=](CK740ControlApp& app) {
        const int result = app.Player().AddZones(taskID, Text(zones));
        LogCall(app, Format("K740_AddZones(%d, '%s')", taskID, Text(zones).c_str()));
        return result;
    });
}

extern "C" K740_API int K740_SendAudioStreamProc(int taskID, unsigned char* data, int length) {
    return Exported([=](CK740ControlApp& app) {
        if (app.Lifetime().IsExiting() || data == nullptr || length < 1) { return kFail; }
        const int channelID = app.Player().Channels().GetChannelID(taskID);
        if (channelID < 0) { return kNoTaskChannel; }
        return app.Player().PushTaskStream(channelID, taskID, data, static_cast<unsigned>(length));
    });
}
