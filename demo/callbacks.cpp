#include "demo/callbacks.h"

#include "app/k740.h"
#include "common/clock_text.h"
#include "demo/playback.h"

#include <cstdio>
#include <thread>

namespace {
constexpr int kController = 33;
constexpr int kStationInvites = 1;
constexpr int kStationAccepted = 3;
} // namespace

int ZCUDeviceStatus(int deviceID, int status, int fault, int* amplifiers, int /*extraA*/, int /*extraB*/) {
    if (deviceID != kController) { return 0; }
    std::printf("%s, zcu:%d, device status:%d, device fault:%d, amp1:%d\n", GetNowString(kDateAndMilliseconds).c_str(),
                deviceID, status, fault, amplifiers[0]);
    return 0;
}

int ZCUZoneStatus(int /*deviceID*/, int* /*states*/, unsigned* /*tasks*/) {
    return 0;
}

int ZCUVolumePoc(int deviceID, int* volumes) {
    std::printf("zcu:%d, get volume:%d,%d,%d,%d,%d,%d,%d,%d\n", deviceID, volumes[0], volumes[1], volumes[2],
                volumes[3], volumes[4], volumes[5], volumes[6], volumes[7]);
    return 0;
}

int TaskStatusProc(int taskID, int status) {
    std::printf("###########task status:%d,%d\n", taskID, status);
    return 0;
}

int MonitorZoneAudioProc(int /*deviceID*/, int /*zone*/, unsigned char* /*audio*/, int /*length*/) {
    return 0;
}

int RPKDeviceStatus(int /*deviceID*/, int /*state*/, int /*activity*/, int /*wordA*/, int /*extra*/, int /*wordB*/) {
    return 0;
}

int RPKPTTAudioProc(int /*deviceID*/, int /*kind*/, unsigned char* /*audio*/, int /*length*/) {
    return 0;
}

int TrainMessageProc(int /*sourceID*/, int /*deviceID*/, int /*message*/) {
    return 0;
}

int TrainAudioProc(int /*sourceID*/, int /*taskID*/, unsigned char* /*audio*/, int /*length*/) {
    return 0;
}

int IntercomMessageProc(int stationID, int intercomID, int message) {
    std::printf("talker message, rpk:%d, train:%d, msg:%d, %s\n", stationID, intercomID, message,
                GetNowString(kDateAndMilliseconds).c_str());
    if (message == kStationInvites) { K740_Accept(intercomID, stationID); }
    if (message == kStationInvites || message == kStationAccepted) { std::thread(ThreadIntercom).detach(); }
    return 0;
}

int IntercomAudioProc(int stationID, unsigned char* /*audio*/, int length) {
    std::printf("rpk audio: %d, audio size:%d\n", stationID, length);
    return 0;
}
