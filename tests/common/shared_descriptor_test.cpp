#include "common/shared_descriptor.h"
#include "tests/common/interruption.h"
#include "tests/support/private_network_fixture.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace k740::test {
namespace {

/// The owner's socket, closed by Withdraw.
class SharedDescriptorTest : public OnPrivateNetwork {
protected:
    SharedDescriptorTest() : m_socket(socket(AF_INET, SOCK_DGRAM, 0)) {}
    ~SharedDescriptorTest() override {
        if (m_socket >= 0) { close(m_socket); }
    }

    /// @return what the owner's blocking call returns
    ssize_t Receive() const {
        char byte = 0;
        return recvfrom(m_socket, &byte, sizeof(byte), 0, nullptr, nullptr);
    }
    void Withdraw() {
        m_shared.Withdraw([this] {
            close(m_socket);
            m_socket = -1;
        });
    }

    int m_socket;
    CSharedDescriptor m_shared;
};

TEST_F(SharedDescriptorTest, IsClosedAtFirst) {
    EXPECT_FALSE(m_shared.IsOpen());
    m_shared.WakeOwner();
    EXPECT_FALSE(m_shared.IsOpen());
}

TEST_F(SharedDescriptorTest, WakeEndsTheOwnersReceive) {
    m_shared.Publish(m_socket);
    EXPECT_TRUE(m_shared.IsOpen());
    ssize_t received = 1;
    SleepingThread owner([&] { received = Receive(); });
    ASSERT_TRUE(owner.WaitUntilAsleep());
    m_shared.WakeOwner();
    owner.Join();
    EXPECT_EQ(0, received);
}

TEST_F(SharedDescriptorTest, WakeLastsForReceivesToCome) {
    m_shared.Publish(m_socket);
    m_shared.WakeOwner();
    EXPECT_EQ(0, Receive());
    EXPECT_EQ(0, Receive());
}

TEST_F(SharedDescriptorTest, StaysOpenUntilTheOwnerWithdraws) {
    m_shared.Publish(m_socket);
    m_shared.WakeOwner();
    EXPECT_TRUE(m_shared.IsOpen());
    Withdraw();
    EXPECT_FALSE(m_shared.IsOpen());
}

TEST_F(SharedDescriptorTest, NumberIsNotTouchedOnceWithdrawn) {
    const int withdrawn = m_socket;
    m_shared.Publish(m_socket);
    Withdraw();
    m_socket = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_EQ(withdrawn, m_socket); // the number is used again
    const timeval aMoment{0, 10'000};
    setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &aMoment, sizeof(aMoment));
    m_shared.WakeOwner();
    EXPECT_EQ(-1, Receive()); // the time is over; 0 if it had been shut down
}

} // namespace
} // namespace k740::test
