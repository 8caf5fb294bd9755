/* A host in C99 that includes nothing but the exported header and calls every function in it.
 * Its exit status is the number of the first call whose result is not the expected one, 0 when there is none. */
#include "app/k740.h"

static int g_calls = 0;
static int g_firstFailure = 0;

static void Expect(int expected, int result) {
    ++g_calls;
    if (expected != result && g_firstFailure == 0) { g_firstFailure = g_calls; }
}

static int OnZCUStatus(int deviceID, int status, int fault, int* amplifiers, int extraA, int extraB) {
    return deviceID + status + fault + amplifiers[7] + extraA + extraB;
}

static int OnZoneStatus(int deviceID, int* states, unsigned* tasks) {
    return deviceID + states[7] + (int)tasks[7];
}

static int OnVolume(int deviceID, int* volumes) {
    return deviceID + volumes[7];
}

static int OnTaskStatus(int taskID, int status) {
    return taskID + status;
}

static int OnAudioOfTwo(int first, int second, unsigned char* audio, int length) {
    return first + second + audio[0] + length;
}

static int OnRPKStatus(int deviceID, int state, int activity, int wordA, int extra, int wordB) {
    return deviceID + state + activity + wordA + extra + wordB;
}

static int OnMessage(int first, int second, int message) {
    return first + second + message;
}

static int OnIntercomAudio(int stationID, unsigned char* audio, int length) {
    return stationID + audio[0] + length;
}

static void Configure(void) {
    PZCUSTATUS zcuStatus = OnZCUStatus;
    PZONESTATUS zoneStatus = OnZoneStatus;
    PZCUVOLUME zcuVolume = OnVolume;
    PTASKSTATUS taskStatus = OnTaskStatus;
    PMONITORZONE monitorZone = OnAudioOfTwo;
    PRPKSTATUS rpkStatus = OnRPKStatus;
    PRPKPTTAUDIO rpkPTTAudio = OnAudioOfTwo;
    PTRAINMESSAGE trainMessage = OnMessage;
    PTRAINAUDIO trainAudio = OnAudioOfTwo;
    PINTERCOMMESSAGE intercomMessage = OnMessage;
    PINTERCOMAUDIO intercomAudio = OnIntercomAudio;

    Expect(0, K740_Initialize());
    Expect(0, K740_SetNodeID(9501));
    Expect(0, K740_SetAudioStreamFormat(0));
    Expect(0, K740_SetFirstMulticastIP("225.0.1.1"));
    Expect(0, K740_SetNIC("192.168.1.166"));
    Expect(0, K740_EnableCallbackLog(1));
    Expect(0,
           K740_SetDeviceCallback(zcuStatus, zoneStatus, zcuVolume, taskStatus, monitorZone, rpkStatus, rpkPTTAudio));
    Expect(0, K740_SetTrainCallback(trainMessage, trainAudio));
    Expect(0, K740_SetIntercomCallback(intercomMessage, intercomAudio));
}

static void UseDevices(void) {
    char list[64];
    Expect(0, K740_AddDevice(1, 1, "192.168.1.20"));
    Expect(0, K740_AddDevice(5000, 2, "192.168.8.99"));
    Expect(41, K740_GetDeviceList(list, (int)sizeof(list) - 1)); /* 1   1 192.168.1.20;5000   2 192.168.8.99; */
    Expect(0, K740_SetRPKPTTMulticastIP(5000, ""));
    Expect(0, K740_EnterVAMode(1, 255));
    Expect(0, K740_ExitVAMode(1, 255));
    Expect(-1, K740_StartRPKTask(5001, 3, 100, "0001FF"));
    Expect(-1, K740_StopRPKTask(5001, 3));
    Expect(-1, K740_StartRPKMonitor(5001, 1, 1));
    Expect(-1, K740_StopRPKMonitor(5001));
}

static void UseZoneControllers(void) {
    int levels[8] = {0, 19, -1, -1, -1, -1, -1, -1};
    char version[32];
    Expect(0, K740_SetVolume(1, levels));
    Expect(0, K740_GetVolume(1));
    Expect(0, K740_CloseZones("000101"));
    Expect(0, K740_MonitorZone(1, 1, 1));
    Expect(1, K740_MonitorZone(1, 1, 1));
    Expect(0, K740_MonitorZone(1, 1, 0));
    Expect(0, K740_AddDevice(900, 9, ""));
    Expect(0, K740_SetTrainStatus(900, 1));
    Expect(9, K740_GetDeviceVersion(900, version, (int)sizeof(version))); /* APP:1.0.4 */
}

static void UseIntercom(void) {
    unsigned char audio[4] = {0, 0, 0, 0};
    int status = 0;
    int station = -1;
    Expect(0, K740_AddDevice(5500, 10, ""));
    Expect(0, K740_GetIntercomStatus(5500, &status, &station));
    Expect(3, status);
    Expect(0, station);
    Expect(0, K740_Invite(5500, 5000));
    Expect(0, K740_Accept(5500, 5000));
    Expect(0, K740_SendIntercomAudio(5500, audio, (int)sizeof(audio)));
    Expect(0, K740_HangUp(5500));
}

static void UseTasks(void) {
    unsigned char audio[4] = {0, 0, 0, 0};
    int ids[4];
    Expect(0, K740_StartAudioStreamTask(1, 100, 100, 1, "0001FF", 0));
    Expect(1, K740_GetTaskStatus(1));
    Expect(1, K740_GetRunningTasks(ids, 4));
    Expect(-1, K740_SendAudioStreamProc(1, audio, 0));
    Expect(-1, K740_AddZones(1, "0001"));
    Expect(0, K740_StopTask(1));
    Expect(-1, K740_StartAudioFileTask(1, 100, 100, 1, "0001FF", 0, "", 1));
    Expect(-1, K740_StartNetAUXTask(0, 100, 7000, "225.0.2.1", 0, 1, "0001FF", 0));
}

static void Pace(void) {
    K740_PACING pacing = {0, 0, {0}, 0};
    K740_SleepStart(&pacing);
    Expect(1, K740_SleepEnd(2, &pacing) >= 2);
}

int main(void) {
    Configure();
    UseDevices();
    UseZoneControllers();
    UseIntercom();
    UseTasks();
    Pace();
    Expect(0, K740_RemoveDevice(1));
    Expect(0, K740_Deinitialize());
    return g_firstFailure;
}
