#include "player/group_receiver.h"

#include "app/application.h"
#include "common/format.h"

bool CGroupReceiver::Join(const std::string& group, int port) {
    const bool joined = m_udp.join_multicast_recv(group, port, m_app.Configuration().NIC(), kReceiveSliceMs) == 0;
    m_group = joined ? group : "";
    if (!joined && group != m_failedGroup) {
        m_app.Log().PushLog("", kLogError, Format("Failed to join into multi-cast group %s", group.c_str()));
    }
    m_failedGroup = joined ? "" : group;
    return joined;
}

// Without the socket, datagrams of a former group cannot wait in it.
void CGroupReceiver::Leave() {
    m_udp.close_multicast();
    m_group.clear();
}

int CGroupReceiver::Receive() {
    const int count = m_udp.recv_multicast_data(reinterpret_cast<char*>(m_decoder.Room()), kDatagramRoomBytes);
    if (count >= 0) { return m_decoder.Decode(static_cast<std::size_t>(count)); }
    // An error comes at once, a time-out after its time.
    if (count != kReceiveTimedOut) { m_app.Lifetime().Pause(kReceiveSliceMs); }
    return kNothingReceived;
}
