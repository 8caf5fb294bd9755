#include "protocol/port_receiver.h"

#include "app/application.h"
#include "common/format.h"
#include "common/udp.h"
#include "common/worker.h"

#include <sys/socket.h>

void CPortReceiver::Start() {
    m_shared.Expect();
    if (!m_app.StartServiceThread(m_service.threadName, [this] { Run(); })) {
        m_shared.Withdraw([] {});
        m_service.onBind(false);
        m_settled = true;
    }
}

void CPortReceiver::Run() {
    CQBUDP socket;
    if (!m_app.Lifetime().IsExiting()) {
        ContainExceptions([&] { ReceiveOn(socket); });
    }
    m_settled = true;
    m_shared.Withdraw([&socket] { socket.Close(); });
}

void CPortReceiver::ReceiveOn(CQBUDP& socket) {
    const int descriptor = socket.create_udp_host(m_service.port);
    m_service.onBind(descriptor >= 0);
    m_settled = true;
    if (descriptor < 0) {
        m_app.Log().PushLog("Player", kLogError, Format("Failed to bind udp port %d", m_service.port));
        return;
    }
    // The socket is made known before the exit flag is looked at: whoever sets the flag then finds the socket to wake.
    m_shared.Publish(descriptor);
    ReceiveAll(descriptor);
}

void CPortReceiver::ReceiveAll(int descriptor) {
    ReceiveBuffer buffer{};
    sockaddr_in sender{};
    while (!m_app.Lifetime().IsExiting()) {
        socklen_t size = sizeof(sender);
        const ssize_t count =
            recvfrom(descriptor, &buffer, sizeof(buffer), 0, reinterpret_cast<sockaddr*>(&sender), &size);
        bool refused = count <= 0;
        if (count > 0) {
            const auto length = static_cast<std::size_t>(count);
            ContainExceptions([&] { refused = !m_service.onDatagram(buffer, length, sender); });
            // A short datagram must read as zeros beyond its end, not as the one before it.
            std::memset(&buffer, 0, length);
        }
        if (refused && !m_app.Lifetime().IsExiting()) { m_shared.Pause(m_service.pauseMs); }
    }
}
