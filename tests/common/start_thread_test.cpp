#include "common/worker.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace k740::test {
namespace {

/// Ends with the work that owns it.
using Owned = std::shared_ptr<int>;

bool WaitForEnd(const Owned& owned) {
    return WaitUntil([&] { return owned.use_count() == 1 && RunningThreads() == 0; });
}

TEST(StartThreadTest, RunsCountedAndUnderItsName) {
    const Owned owned = std::make_shared<int>();
    std::string name;
    int running = 0;
    ASSERT_TRUE(StartThread("k740-test", [&, owned] {
        std::array<char, 16> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name = text.data();
        running = RunningThreads();
    }));
    ASSERT_TRUE(WaitForEnd(owned));
    EXPECT_EQ("k740-test", name);
    EXPECT_EQ(1, running);
}

TEST(StartThreadTest, KeepsWhatTheWorkThrowsAndFreesWhatItOwns) {
    const Owned owned = std::make_shared<int>();
    ASSERT_TRUE(StartThread("k740-test", [owned] { throw std::runtime_error("thrown by a thread"); }));
    EXPECT_TRUE(WaitForEnd(owned));
}

/// Work that there is no memory for.
struct OutOfMemory {
    OutOfMemory() = default;
    OutOfMemory(const OutOfMemory&) { throw std::bad_alloc(); }
    void operator()() const { ADD_FAILURE() << "ran all the same"; }
};

TEST(StartThreadTest, WithoutMemoryForTheWorkNoThreadIsMade) {
    EXPECT_FALSE(StartThread<OutOfMemory>("k740-test", {}));
    EXPECT_EQ(0, RunningThreads());
}

} // namespace
} // namespace k740::test
