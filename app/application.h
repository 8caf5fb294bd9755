// The application object: owns every manager, the settings, the host's callbacks and the life of the threads.
#pragma once

#include "app/configuration.h"
#include "app/host_callbacks.h"
#include "common/format.h"
#include "common/immortal.h"
#include "common/lifetime.h"
#include "common/worker.h"
#include "devices/device.h"
#include "intercom/talker.h"
#include "log/log.h"
#include "monitor/monitor.h"
#include "player/player.h"
#include "protocol/cmd_packet.h"
#include "protocol/communication.h"
#include "rpk/rpk.h"
#include "train/train.h"
#include "zcu/zcu.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>

/// What became of a packet for a device.
enum class SendResult {
    Sent,
    Refused,  // by the system: no route, no memory, a malformed address
    NoSocket, // the device is not registered, or no socket could be made for it
};

/// The managers reach each other, the settings and the lifetime through it. Any thread may call anything.
class CK740ControlApp {
public:
    CK740ControlApp();
    virtual ~CK740ControlApp();

    /// @return 0; -1 when it was initialised before
    int Initialize();
    /// Asks every thread to end. @return 0
    int Deinitialize();
    /// Initialises unless that has happened. @return whether the library is initialised
    bool EnsureInitialized();

    CLifetime& Lifetime() { return m_lifetime; }
    CConfiguration& Configuration() { return m_configuration; }
    CHostCallbacks& Callbacks() { return m_callbacks; }
    CDevice& Devices() { return m_devices; }
    CCommunication& Communication() { return m_communication; }
    CZCU& ZCU() { return m_zcu; }
    CRPK& RPK() { return m_rpk; }
    CPlayer& Player() { return m_player; }
    CMonitor& Monitor() { return m_monitor; }
    CLog& Log() { return m_log; }
    CTRAIN& Train() { return m_train; }
    CTALKER& Talker() { return m_talker; }
    /// The threads that Deinitialize waits for, at most 5 s; none of the library's own counts itself here.
    std::atomic<int32_t>& ActiveThreads() { return m_activeThreads; }

    /// Starts a thread that serves the library for its life; the log says when it cannot be made.
    /// @param name  of the thread, at most 15 characters; a literal
    template <typename Work> bool StartServiceThread(const char* name, Work work) {
        if (StartThread(name, std::move(work))) { return true; }
        m_log.PushLog("", kLogError, Format("No thread %s.", name));
        return false;
    }

    /// @return a command packet from this host to a device
    template <typename... Record>
    _vxa_cmd_packet_t MakeRequest(int deviceID, uint16_t command, const Record&... record) const {
        return MakePacket(m_configuration.NodeID(), static_cast<uint32_t>(deviceID), command, record...);
    }
    /// Sends a command packet to a registered device, one sender at a time.
    SendResult TrySendToDevice(int deviceID, const _vxa_cmd_packet_t& packet);
    SendResult TrySendToDevice(int deviceID, const unsigned char* data, std::size_t length);
    /// The same for those who wait for an answer and take a packet that the system refused for one lost on the way.
    /// @return false when the device has no socket
    bool SendToDevice(int deviceID, const _vxa_cmd_packet_t& packet) {
        return TrySendToDevice(deviceID, packet) != SendResult::NoSocket;
    }
    /// Sends a command packet to an address, from a socket of its own.
    void SendToAddress(const std::string& ip, int port, const _vxa_cmd_packet_t& packet);

    /// Tells the host a status. @return 1 when the device reported a working status, else 0
    int PostZCUDeviceStatus(const tagZCU_QUERYSTATUS2& record);
    void PostRPKDeviceStatus(const tagRPK_QUERYSTATUS& record);
    /// Tells the host the volumes that have been reported since the last call.
    void PostVolumes();

private:
    void ThreadTriggerEvents1();
    void ThreadTriggerEvents2();
    void PostAllStatus();
    void PostChangedStatus(std::deque<tagZCU_QUERYSTATUS2>& previous);
    void StartManagers();
    void StartEventThreads();
    void AwaitPorts();
    void AwaitOrderlyEnd();
    void AwaitActiveThreads();

    CLifetime m_lifetime;
    CQBSem m_sendLock;       // serialises the sends on registry sockets; nothing is taken inside it
    CQBSem m_initialisation; // one Initialize or Deinitialize at a time; never taken by worker threads
    std::atomic<int32_t> m_activeThreads{0};
    CConfiguration m_configuration;
    CDevice m_devices;
    CCommunication m_communication;
    CZCU m_zcu;
    CRPK m_rpk;
    CPlayer m_player;
    CMonitor m_monitor;
    CLog m_log;
    CTRAIN m_train;
    CTALKER m_talker;
    CHostCallbacks m_callbacks;
    std::atomic<uint8_t> m_initialised{0};
};

/// The one application object of the process. It outlives main, because the library's threads do.
extern CImmortal<CK740ControlApp> g_app;
