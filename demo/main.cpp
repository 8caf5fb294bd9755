// k740demo: a sample host on the addresses of one test bench. It shows the order in which a host calls the library.
#include "app/k740.h"
#include "common/sem.h"
#include "demo/callbacks.h"
#include "demo/options.h"
#include "demo/playback.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace {

constexpr int kExitUsage = 2;
constexpr int kFirstController = 33;
constexpr int kEndController = 34;
constexpr int kStation = 5000;
constexpr int kVirtualController = 900;
constexpr int kOtherVirtualController = 901;
constexpr int kIntercom = 5500;
constexpr std::chrono::seconds kPause{5};

CQBSem g_sem; // taken once by main and never given back
int g_trainStatus = 1;

void ThreadTrainStatus() {
    while (true) {
        K740_SetTrainStatus(kVirtualController, g_trainStatus);
        K740_SetTrainStatus(kOtherVirtualController, g_trainStatus);
        std::this_thread::sleep_for(kPause);
    }
}

void Configure() {
    K740_Initialize();
    K740_SetAudioStreamFormat(0);
    K740_SetNIC(Options().nic.c_str());
    K740_SetNodeID(Options().node);
    K740_SetFirstMulticastIP(Options().firstMulticast.c_str());
    K740_EnableCallbackLog(1);
    K740_SetDeviceCallback(ZCUDeviceStatus, ZCUZoneStatus, ZCUVolumePoc, TaskStatusProc, MonitorZoneAudioProc,
                           RPKDeviceStatus, RPKPTTAudioProc);
    K740_SetTrainCallback(TrainMessageProc, TrainAudioProc);
    K740_SetIntercomCallback(IntercomMessageProc, IntercomAudioProc);
}

void RegisterDevices() {
    for (int id = kFirstController; id < kEndController; ++id) {
        const std::string address = Options().zcuIP.empty() ? "192.168.1." + std::to_string(id) : Options().zcuIP;
        K740_AddDevice(id, 1, address.c_str());
    }
    K740_AddDevice(kStation, 2, Options().rpkIP.c_str());
    K740_SetRPKPTTMulticastIP(kStation, Options().rpkPTT.c_str());
    K740_AddDevice(kVirtualController, 9, "");
    K740_AddDevice(kIntercom, 10, "");
}

/// Sleeps, 5 s at a time. @param length  0: for ever
void SleepOut(std::chrono::seconds length) {
    const std::chrono::seconds forEver{0};
    for (std::chrono::seconds slept{0}; length == forEver || slept < length; slept += kPause) {
        std::this_thread::sleep_for(length == forEver ? kPause : std::min(kPause, length - slept));
    }
}

} // namespace

/// There for hosts that want another thread; returns at once and is not started.
void Thread1() {}

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // a pipe sees each line at once
    if (!ParseOptions(argc, argv, Options())) {
        std::fputs(kDemoUsage, stderr);
        return kExitUsage;
    }
    if (Options().help) {
        std::fputs(kDemoUsage, stdout);
        return 0;
    }
    g_sem.TryLock_ms(0); // it is free
    Configure();
    RegisterDevices();
    std::thread(ThreadTrainStatus).detach();
    std::thread(ThreadPlay1).detach();
    K740_MonitorZone(kFirstController, 1, 1);
    SleepOut(std::chrono::seconds(Options().durationSeconds));
    return K740_Deinitialize();
}
