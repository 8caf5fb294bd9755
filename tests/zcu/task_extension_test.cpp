// Zones that join a task later, as other devices announce them.
#include "tests/zcu/virtual_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <numeric>

namespace k740::test {
namespace {

using sim::Bytes;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// 28 bytes from first on.
Bytes Extension(std::uint8_t first) {
    Bytes extension(28);
    std::iota(extension.begin(), extension.end(), first);
    return extension;
}

class TaskExtensionTest : public VirtualTest {
protected:
    static std::vector<Bytes> Known() {
        std::vector<Bytes> known;
        for (const tagPLAY_TASK_EXTEND& extension : g_app->ZCU().GetTaskExtensions()) {
            Bytes bytes(std::begin(extension.key), std::end(extension.key));
            bytes.insert(bytes.end(), std::begin(extension.value), std::end(extension.value));
            known.push_back(bytes);
        }
        return known;
    }
    void Add(const Bytes& extension, std::uint32_t destination = kVirtual) {
        m_client.AddTaskZones(destination, extension);
        ASSERT_TRUE(WaitForAnswer(0x8313, ++m_added));
    }
    /// @return the result in the answer
    int Remove(const Bytes& extension, std::uint32_t destination = kVirtual) {
        m_client.RemoveTaskZones(destination, extension);
        const auto answer = WaitForAnswer(0x8314, ++m_removed);
        return answer ? answer->packet->payload[0] : -1;
    }

private:
    std::size_t m_added = 0;
    std::size_t m_removed = 0;
};

TEST_F(TaskExtensionTest, AddingIsAnsweredByTheNodeOnPort28001) {
    Add(Extension(1));
    const auto answer = WaitForAnswer(0x8313);
    EXPECT_EQ(PacketBytes(9500, 0x8313, {1}), answer->bytes);
    EXPECT_EQ(28001, answer->port);
    EXPECT_EQ((std::vector<Bytes>{Extension(1)}), Known());
}

TEST_F(TaskExtensionTest, RemovingIsAnsweredWithVersion0) {
    Add(Extension(1));
    EXPECT_EQ(1, Remove(Extension(1)));
    const auto answer = WaitForAnswer(0x8314);
    EXPECT_EQ(PacketBytes(9500, 0x8314, {1}, 0), answer->bytes);
    EXPECT_EQ(28001, answer->port);
    EXPECT_THAT(Known(), IsEmpty());
}

TEST_F(TaskExtensionTest, RemovingWhatIsNotThereIsAnsweredWith0) {
    Add(Extension(1));
    EXPECT_EQ(0, Remove(Extension(2)));
    EXPECT_EQ(PacketBytes(9500, 0x8314, {0}, 0), WaitForAnswer(0x8314)->bytes);
    EXPECT_THAT(Known(), SizeIs(1));
}

TEST_F(TaskExtensionTest, TheFirst16BytesTellOneFromAnother) {
    const Bytes first = Extension(1);
    Bytes sameKey = first;
    for (std::size_t i = 16; i < sameKey.size(); ++i) { sameKey[i] = 0xAA; }
    Bytes otherKey = first;
    otherKey[15] = 0;
    Add(first);
    Add(otherKey);
    Add(sameKey);
    EXPECT_EQ((std::vector<Bytes>{sameKey, otherKey}), Known()) << "known ones change in their place";
    EXPECT_EQ(1, Remove(first));
    EXPECT_EQ((std::vector<Bytes>{otherKey}), Known());
}

TEST_F(TaskExtensionTest, WhateverItIsAddressedTo) {
    for (const std::uint32_t id : {0U, 33U, 9500U, 0xFFFFFFFFU}) {
        Add(Extension(1), id);
        EXPECT_EQ(1, Remove(Extension(1), id)) << id;
    }
}

TEST_F(TaskExtensionTest, TheAnswersComeFromTheNodeIDOfTheHost) {
    ASSERT_EQ(0, K740_SetNodeID(9999));
    Add(Extension(1));
    EXPECT_EQ(PacketBytes(9999, 0x8313, {1}), WaitForAnswer(0x8313)->bytes);
}

} // namespace
} // namespace k740::test
