// The records of calls.
#include "app/application.h"
#include "tests/support/private_network_fixture.h"

#include <memory>

namespace k740::test {
namespace {

constexpr int kFirstID = 5000;
constexpr int kLastID = 5999; // of paging stations, intercoms among them
constexpr int kMostDevices = 500;

/// The talker of an application whose threads do not run. The network is for the registry's sockets.
class CallTableTest : public OnPrivateNetwork {
protected:
    CallTableTest() {
        m_app->Configuration().SetDefaults();
        m_app->Lifetime().Begin();
    }
    void Register(int id, int type = 10) { EXPECT_EQ(0, m_app->Devices().AddDevice(id, type, "192.168.1.20")); }
    tagTALK_STATUS RecordOf(int intercomID, int expectedResult = 0) {
        tagTALK_STATUS record{77, 77, 77, 77, 77};
        EXPECT_EQ(expectedResult, m_app->Talker().GetTalkerStatus(intercomID, record)) << intercomID;
        return record;
    }

    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
    CTALKER& m_talker = m_app->Talker();
};

TEST_F(CallTableTest, RecordHoldsPeerStatusAndTime) {
    Register(5500);
    const time_t before = time(nullptr);
    EXPECT_EQ(0, m_talker.SetTalkerStatus(5500, 5000, 0));
    const tagTALK_STATUS record = RecordOf(5500);
    EXPECT_EQ(5500U, record.intercomID);
    EXPECT_EQ(5000U, record.peerID);
    EXPECT_EQ(0, record.status);
    EXPECT_GE(record.changed, before);
    EXPECT_LE(record.changed, time(nullptr));
}

TEST_F(CallTableTest, RecordIsUpdatedInPlace) {
    Register(5500);
    EXPECT_EQ(0, m_talker.SetTalkerStatus(5500, 5000, 1));
    EXPECT_EQ(0, m_talker.SetTalkerStatus(5500, 5001, 2));
    const tagTALK_STATUS record = RecordOf(5500);
    EXPECT_EQ(5001U, record.peerID);
    EXPECT_EQ(2, record.status);
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(5000)) << "there is no second record";
}

TEST_F(CallTableTest, MissingRecordIsZerosWithStatusMinusOne) {
    const tagTALK_STATUS record = RecordOf(5500, -1);
    EXPECT_EQ(0U, record.intercomID);
    EXPECT_EQ(0U, record.peerID);
    EXPECT_EQ(0, record.changed);
    EXPECT_EQ(-1, record.status);
}

TEST_F(CallTableTest, OnlyIntercomsHaveRecords) {
    Register(5000, 2);
    for (const int id : {5000, 5500, 0, -1}) {
        EXPECT_EQ(-1, m_talker.SetTalkerStatus(id, 5001, 1)) << id;
        RecordOf(id, -1);
    }
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(5001));
}

TEST_F(CallTableTest, StationTalksWhenAnyIntercomTalksWithIt) {
    Register(5500);
    Register(5501);
    m_talker.SetTalkerStatus(5500, 5000, 0);
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(5000)) << "rings";
    m_talker.SetTalkerStatus(5501, 5000, 1);
    EXPECT_EQ(1, m_talker.IsTalkingWithRPK(5000));
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(5001));
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(5501));
    m_talker.SetTalkerStatus(5501, 5000, 2);
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(5000)) << "idle";
    EXPECT_EQ(0, m_talker.IsTalkingWithRPK(0));
}

// More intercoms than these 1,000 cannot be, so the bound of 1,024 records is never met.
TEST_F(CallTableTest, EveryIntercomThatThereCanBeKeepsItsRecord) {
    for (int first = kFirstID; first <= kLastID; first += kMostDevices) {
        for (int id = first; id < first + kMostDevices; ++id) {
            Register(id);
            EXPECT_EQ(0, m_talker.SetTalkerStatus(id, id + 1, 1));
        }
        for (int id = first; id < first + kMostDevices; ++id) { EXPECT_EQ(0, m_app->Devices().RemoveDevice(id)); }
    }
    for (int id = kFirstID; id <= kLastID; ++id) { EXPECT_EQ(static_cast<uint32_t>(id) + 1, RecordOf(id).peerID); }
}

} // namespace
} // namespace k740::test
