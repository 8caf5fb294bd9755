#include "app/application.h"

#include "common/sdk_version.h"
#include "common/stopwatch.h"
#include "common/system_limit.h"
#include "common/udp.h"
#include "common/worker.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace {

constexpr unsigned kBindWaitUs = 50'000;
constexpr unsigned kLongestBindWaitMs = 1'000;
constexpr unsigned kOrderlyEndWaitMs = 100;
constexpr unsigned kActiveThreadsWaitMs = 4999;
constexpr unsigned kActiveThreadsPollMs = 100;

/// @return the current directory; "." when it is gone or its name is too long
std::string WorkingDirectory() {
    std::array<char, 1024> directory{};
    return getcwd(directory.data(), directory.size()) == nullptr ? "." : directory.data();
}

/// @return the directory that the log's directory has been made in
std::string MakeLogDirectory() {
    std::string directory = WorkingDirectory();
    mkdir((directory + "/" + kLogDirectory).c_str(), 0777);
    return directory;
}

void LogSocketLine(uint8_t level, const std::string& text) {
    g_app->Log().PushLog("", level, text);
}

} // namespace

constinit CImmortal<CK740ControlApp> g_app;

CK740ControlApp::CK740ControlApp()
    : m_devices(*this), m_communication(*this), m_zcu(*this), m_rpk(*this), m_player(*this), m_monitor(*this),
      m_train(*this), m_talker(*this), m_callbacks(m_log) {}

CK740ControlApp::~CK740ControlApp() {
    m_initialised = 0;
}

int CK740ControlApp::Initialize() {
    std::signal(SIGPIPE, SIG_IGN);
    SetSystemLimit();
    const CQBSemLocker lock(&m_initialisation);
    if (m_initialised == 1) { return -1; }
    SetUdpLogHook(LogSocketLine);
    m_log.PushLog("", kLogInfo, "\n\n");
    m_activeThreads = 0;
    m_configuration.SetDefaults();
    m_callbacks.Clear();
    m_log.SetBaseDirectory(MakeLogDirectory());
    m_lifetime.Begin();
    StartManagers();
    AwaitPorts();
    m_initialised = 1;
    m_log.PushLog("", kLogInfo, std::string("SDK version ") + kSDKVersion);
    m_log.PushLog("", kLogInfo, "-------K740_Initialize()");
    return 0;
}

void CK740ControlApp::StartManagers() {
    m_zcu.Initialization();
    m_monitor.Initialization();
    m_log.Initialization();
    m_rpk.Initialization();
    m_train.Initialization();
    m_talker.Initialization();
    StartEventThreads();
    // The hub comes last, so that no packet is dispatched to a manager that is not ready.
    m_communication.Initialization();
}

// On a busy machine the receivers may need longer than usual; what devices send until then would be lost.
void CK740ControlApp::AwaitPorts() {
    usleep(kBindWaitUs);
    AwaitCondition([this] { return m_communication.ArePortsSettled() && m_talker.IsPortSettled(); },
                   kLongestBindWaitMs - kBindWaitUs / 1000);
}

bool CK740ControlApp::EnsureInitialized() {
    if (m_initialised != 1) { Initialize(); }
    return m_initialised == 1;
}

int CK740ControlApp::Deinitialize() {
    const CQBSemLocker lock(&m_initialisation);
    m_lifetime.RequestExit();
    m_communication.WakeThreads();
    m_talker.WakeThreads();
    m_zcu.WakeThreads();
    m_player.WakeTasks();
    AwaitOrderlyEnd();
    m_lifetime.WakeOneSleeper();
    AwaitActiveThreads();
    m_activeThreads = 0;
    m_lifetime.WakeOneSleeper();
    m_log.PushLog("", kLogInfo, "-------K740_Deinitialize()");
    m_log.Finish();
    return 0;
}

// A host may exit as soon as Deinitialize returns: by then the ports are free and the tasks have been closed on the
// zone controllers. Bounded, because this may run in a callback on one of the very threads that are awaited.
void CK740ControlApp::AwaitOrderlyEnd() {
    const auto isOver = [this] {
        return !m_communication.HoldsPorts() && !m_talker.HoldsPort() && !m_player.Status().HasThreads();
    };
    AwaitCondition(isOver, kOrderlyEndWaitMs);
}

void CK740ControlApp::AwaitActiveThreads() {
    CWakeSignal never;
    CQBTime waited;
    waited.TimeStart();
    while (m_activeThreads > 0 && waited.TimeEnd() <= kActiveThreadsWaitMs) { never.Wait(kActiveThreadsPollMs); }
}

SendResult CK740ControlApp::TrySendToDevice(int deviceID, const _vxa_cmd_packet_t& packet) {
    return TrySendToDevice(deviceID, reinterpret_cast<const unsigned char*>(&packet), sizeof(packet));
}

SendResult CK740ControlApp::TrySendToDevice(int deviceID, const unsigned char* data, std::size_t length) {
    const auto udp = m_devices.GetDeviceUDP(deviceID);
    if (udp == nullptr || !udp->IsUnicastOpen()) { return SendResult::NoSocket; }
    const CQBSemLocker lock(&m_sendLock);
    const int sent = udp->send_udp_data(reinterpret_cast<const char*>(data), static_cast<int>(length));
    return sent > 0 ? SendResult::Sent : SendResult::Refused;
}

void CK740ControlApp::SendToAddress(const std::string& ip, int port, const _vxa_cmd_packet_t& packet) {
    CQBUDP::SendUDPData(ip, port, reinterpret_cast<const unsigned char*>(&packet), sizeof(packet));
}
