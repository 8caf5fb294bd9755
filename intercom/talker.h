// Intercoms: the library plays terminals that talk to paging stations.
#pragma once

#include "common/bounded_table.h"
#include "common/wake_list.h"
#include "common/wake_signal.h"
#include "intercom/talk_records.h"
#include "intercom/talk_streams.h"
#include "protocol/cmd_packet.h"
#include "protocol/port_receiver.h"

#include <time.h>

#include <cstddef>
#include <string>

class CAudioDecoder;
class CK740ControlApp;
class CQBUDP;
struct _vxa_data_packet_t_mcast;

/// Holds one call for each intercom (device type 10), whose peer is a paging station (device type 2), and carries its
/// audio both ways. Any thread may call anything; the host is called without a lock held.
class CTALKER {
public:
    explicit CTALKER(CK740ControlApp& app);
    virtual ~CTALKER() = default;

    /// Starts the threads that watch the ringing and receive audio.
    void Initialization();
    /// Makes the threads that wait notice the exit flag.
    void WakeThreads();
    /// @return whether the port of the audio is held or may still be opened
    bool HoldsPort() const { return m_receiver.HoldsPort(); }
    /// @return whether that port has been bound, or it is clear that it will not be
    bool IsPortSettled() const { return m_receiver.IsSettled(); }

    // Calls.

    /// Notes the status of a call. @return 0; -1 for anything but an intercom, and when a full table lost its oldest
    int SetTalkerStatus(int intercomID, int stationID, int status);
    /// @param out  zeroes with status kNoCall when the intercom never had a call. @return 0; -1 then
    int GetTalkerStatus(int intercomID, tagTALK_STATUS& out) const;
    /// @return 1 when an intercom talks with the station, else 0
    int IsTalkingWithRPK(int stationID) const;

    void ReceiveTalkerHandshake(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveRPKInviteTalker(const _vxa_cmd_packet_t* packet, const std::string& senderIP);
    void ReceiveTalkerProcess(const _vxa_cmd_packet_t* packet, const std::string& senderIP);

    /// The intercom calls a station. @return 0; -1 no callback; -2 wrong device; -3 ringing or talking already
    int Invite(int intercomID, int stationID);
    /// The intercom answers a call. @return 0; -2 wrong device; -3 not ringing
    int Accept(int intercomID, int stationID);
    /// @return 0; -2 wrong device
    int HangUp(int intercomID);
    /// The station has accepted. @return 0; -1 no callback or not ringing
    int ProcessRPKAccept(int intercomID, int stationID);
    void ProcessRPKHangUp(int intercomID, int stationID);
    /// Tells a station how a call stands.
    void TalkerResponseRPK(int intercomID, int stationID, uint8_t code);
    /// Hangs up what has been ringing for 60 s.
    void MaintainTalkStatus(time_t now);
    /// Ends the call of an intercom that has been removed from the registry. Neither station nor host are told.
    void AbandonCall(int intercomID);

    // Audio.

    /// Queues PCM for the station. @return 0; -1 no callback; -2 not talking; -3 no room
    int PushTalkAudio(int intercomID, const unsigned char* data, std::size_t length);
    /// @return 0; -1, with nothing taken, when fewer bytes are waiting
    int GetTalkerAudio(int intercomID, unsigned char* out, std::size_t length);
    /// @return 0; -1 when nothing was queued
    int RemoveTalkerAudio(int intercomID);
    /// Queues a received datagram; the oldest goes when kMaxReceivedAudio are waiting. @return 0; -1 without memory
    int NewIntercomRPKAudio(const unsigned char* data, std::size_t length);
    /// @param out  the oldest queued datagram, zeroes when there is none. @return 0; -1 then
    int GetFirstIntercomRPKAudio(tagINTERCOM_RPK_AUDIO& out);

private:
    bool IsIntercom(int id) const;
    bool IsStation(int id) const;
    bool HasCallback() const;
    void LogTalk(uint8_t level, const char* event, int stationID, int intercomID, const char* rest);
    /// Checks what every packet of a call needs, and logs what is missing.
    bool CheckPacket(const char* event, int stationID, int intercomID);
    /// SetTalkerStatus whatever the device is; wakes the sender of the call.
    int NoteStatus(int intercomID, int stationID, int status);
    int StatusOf(int intercomID) const K740_REQUIRES(m_callLock);
    /// @return whether the invite finds the intercom idle, which is ringing from then on
    bool BeginRinging(int intercomID, int stationID);
    /// Turns a ringing call into a talking one. @return false when it does not ring
    bool BeginTalking(int intercomID, int stationID);
    bool EndOverdueRinging(const tagTALK_STATUS& seen);
    void ReleaseStation(int intercomID, int stationID);

    /// The call whose audio a thread sends.
    struct Call {
        int intercomID;
        int stationID;
        CallInstance instance;
    };

    void StartSending(const Call& call);
    void ThreadSendAudioToRPK(const Call& call);
    void SendUntilOver(const Call& call);
    void SendAudio(const Call& call, CQBUDP& udp, _vxa_data_packet_t_mcast& packet);
    bool IsCurrent(const Call& call) const;
    bool IsOver(const Call& call) const;
    void ThreadNotifyInercomAudio();
    void NotifyAudio(CAudioDecoder& decoder, const tagINTERCOM_RPK_AUDIO& datagram);

    CK740ControlApp& m_app;
    CBoundedTable<tagTALK_STATUS, kMaxCalls> m_calls;
    CTalkStreams m_streams;
    CQBSem m_callLock;      // reading a status, deciding and writing it are one step; taken before the table's lock
    CStreamSlot m_received; // whole tagINTERCOM_RPK_AUDIO, at most kMaxReceivedAudio
    CWakeSignal m_audioReceived;
    CWakeList m_senders; // by intercom
    CPortReceiver m_receiver;
};
