#include "common/immortal.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

namespace k740::test {
namespace {

std::atomic<int> g_built{0};
std::atomic<int> g_destroyed{0};

struct Counted {
    Counted() { ++g_built; }
    ~Counted() { ++g_destroyed; }
    int value = 7;
};

TEST(ImmortalTest, BuiltOnceOnFirstUseAndNeverDestroyed) {
    {
        CImmortal<Counted> object;
        EXPECT_EQ(0, g_built);
        EXPECT_EQ(7, object->value);
        EXPECT_EQ(&*object, object.operator->());
    }
    EXPECT_EQ(1, g_built);
    EXPECT_EQ(0, g_destroyed);
}

TEST(ImmortalTest, ThreadsThatComeTogetherFindOneObject) {
    static CImmortal<Counted> object;
    {
        const auto use = [] { EXPECT_EQ(7, object->value); };
        const std::array<std::jthread, 3> threads{std::jthread(use), std::jthread(use), std::jthread(use)};
    }
    EXPECT_EQ(1, g_built);
}

} // namespace
} // namespace k740::test
