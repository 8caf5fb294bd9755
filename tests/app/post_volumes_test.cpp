// How volume answers become callbacks and callback-log lines.
#include "app/application.h"
#include "app/k740.h"
#include "common/stopwatch.h"
#include "protocol/commands.h"
#include "tests/app/recording_host.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

tagZCU_GETVOLUME_V2 AnswerV2(std::uint32_t id, std::uint8_t valid = 1) {
    return {{valid, {0, 19, 255, 5}, {}}, id, time(nullptr)};
}

tagZCU_GETVOLUME_V3 AnswerV3(std::uint32_t id, std::uint8_t valid = 1) {
    return {{valid, {0, 1, 18, 19, 20, 254, 255, 5, 6, 7}, 9}, id, time(nullptr)};
}

const VolumeCall kCallV2{1, {19, 0, -1, 14, -1, -1, -1, -1}};
const VolumeCall kCallV3{2, {19, 18, 1, 0, -1, -235, -1, 14, 13, 12}};

/// An application without threads.
class PostVolumesTest : public ::testing::Test {
protected:
    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
    RecordingHost& m_host = RecordingHost::Get();
};

TEST_F(PostVolumesTest, RawAttenuationBecomesLoudnessAndTheLastFourOfVersion2AreAbsent) {
    m_app->Callbacks().zcuVolume.Set(RecordingHost::OnVolumesV2);
    m_app->ZCU().VolumesV2().Append(AnswerV2(1));
    m_app->PostVolumes();
    EXPECT_THAT(m_host.volumes.All(), ElementsAre(kCallV2));
}

TEST_F(PostVolumesTest, Version3HasTenVolumes) {
    m_app->Callbacks().zcuVolume.Set(RecordingHost::OnVolumesV3);
    m_app->ZCU().VolumesV3().Append(AnswerV3(2));
    m_app->PostVolumes();
    EXPECT_THAT(m_host.volumes.All(), ElementsAre(kCallV3));
}

TEST_F(PostVolumesTest, AnswersWhoseFirstByteIsNotOneAreDropped) {
    m_app->Callbacks().zcuVolume.Set(RecordingHost::OnVolumesV2);
    for (const auto valid : std::to_array<std::uint8_t>({0, 2, 255})) {
        m_app->ZCU().VolumesV2().Append(AnswerV2(1, valid));
        m_app->ZCU().VolumesV3().Append(AnswerV3(2, valid));
    }
    m_app->PostVolumes();
    EXPECT_THAT(m_host.volumes.All(), IsEmpty());
}

TEST_F(PostVolumesTest, EachAnswerIsPostedOnceVersion2First) {
    m_app->Callbacks().zcuVolume.Set(RecordingHost::OnVolumesV2);
    m_app->ZCU().VolumesV3().Append(AnswerV3(2));
    m_app->ZCU().VolumesV2().Append(AnswerV2(1));
    m_app->ZCU().VolumesV2().Append(AnswerV2(3));
    m_app->PostVolumes();
    m_app->PostVolumes();
    std::vector<int> ids;
    for (const VolumeCall& call : m_host.volumes.All()) { ids.push_back(call.deviceID); }
    EXPECT_THAT(ids, ElementsAre(1, 3, 2));
}

TEST_F(PostVolumesTest, TheHostHasAPauseAfterEachAnswerLongerAfterVersion2) {
    constexpr int kAnswers = 20;
    m_app->Lifetime().Begin();
    m_app->Callbacks().zcuVolume.Set(RecordingHost::OnVolumesV2);
    const auto post = [this] {
        CQBTime time;
        time.TimeStart();
        m_app->PostVolumes();
        return time.TimeEnd_us();
    };
    for (std::uint32_t i = 0; i < kAnswers; ++i) { m_app->ZCU().VolumesV3().Append(AnswerV3(i + 1)); }
    EXPECT_GE(post(), kAnswers * 2'000);
    for (std::uint32_t i = 0; i < kAnswers; ++i) { m_app->ZCU().VolumesV2().Append(AnswerV2(i + 1)); }
    EXPECT_GE(post(), kAnswers * 3'000);
}

TEST_F(PostVolumesTest, WithoutACallbackAnswersAreDropped) {
    m_app->ZCU().VolumesV2().Append(AnswerV2(1));
    m_app->ZCU().VolumesV3().Append(AnswerV3(2));
    m_app->PostVolumes();
    m_app->Callbacks().zcuVolume.Set(RecordingHost::OnVolumesV2);
    m_app->PostVolumes();
    EXPECT_THAT(m_host.volumes.All(), IsEmpty());
}

class VolumeDeliveryTest : public OnPrivateNetwork {};

TEST_F(VolumeDeliveryTest, TheLibraryPostsAndLogsTheFirstEightVolumes) {
    K740_SetDeviceCallback(nullptr, nullptr, RecordingHost::OnVolumesV2, nullptr, nullptr, nullptr, nullptr);
    K740_EnableCallbackLog(1);
    const auto answerV2 = MakePacket(1, 9500, kCmdGetVolumeV2Answer, AnswerV2(1).volumes);
    g_app->ZCU().ZCU_Response_GetVolume_V2(&answerV2);
    ASSERT_TRUE(WaitForCallbackLogLine("PZCUVOLUME", "(1,"));
    const auto answerV3 = MakePacket(2, 9500, kCmdGetVolumeV3Answer, AnswerV3(2).volumes);
    g_app->ZCU().ZCU_Response_GetVolume_V3(&answerV3);
    ASSERT_TRUE(WaitForCallbackLogLine("PZCUVOLUME", "(2,"));
    EXPECT_THAT(LogTexts("PZCUVOLUME"),
                ElementsAre("PZCUVOLUME(1, {19,0,-1,14,-1,-1,-1,-1})", "PZCUVOLUME(2, {19,18,1,0,-1,-235,-1,14})"));
    EXPECT_EQ(kCallV2, RecordingHost::Get().volumes.All().front());
}

} // namespace
} // namespace k740::test
