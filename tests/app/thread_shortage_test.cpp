// A machine that gives the library one thread less than it needs. In an executable of its own, whose pthread_create
// fails at will.
#include "app/k740.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>

namespace {
std::atomic<int> g_untilFailure{0}; // the how many-th thread from now on cannot be made; 0 for none
} // namespace

// Stands before the C library's function of this name in this executable.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* arg) {
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    if (g_untilFailure > 0 && --g_untilFailure == 0) { return EAGAIN; }
    return create(thread, attributes, start, arg);
}

namespace k740::test {
namespace {

struct Missing {
    int place; // in the order in which the threads are made
    const char* name;
};

class ThreadShortageTest : public OnPrivateNetwork, public ::testing::WithParamInterface<Missing> {};

TEST_P(ThreadShortageTest, TheLogSaysWhichThreadIsMissing) {
    g_untilFailure = GetParam().place;
    EXPECT_EQ(0, K740_Initialize());
    EXPECT_EQ(0, g_untilFailure);
    EXPECT_TRUE(WaitForExactLine("*****No thread " + std::string(GetParam().name) + "."));
    EXPECT_EQ(1, CountLogLines("No thread"));
    EXPECT_EQ(0, K740_Deinitialize());
}

// The fourth is the log's writer, without which there is no line.
INSTANTIATE_TEST_SUITE_P(Service, ThreadShortageTest,
                         ::testing::Values(Missing{1, "k740-refresh"}, Missing{2, "k740-handshake"},
                                           Missing{3, "k740-zcuclient"}, Missing{5, "k740-talker"},
                                           Missing{6, "k740-rx29002"}, Missing{7, "k740-talk-audio"},
                                           Missing{8, "k740-events1"}, Missing{9, "k740-events2"},
                                           Missing{10, "k740-rx29001"}, Missing{11, "k740-rx28001"},
                                           Missing{12, "k740-sender"}),
                         [](const auto& test) { return "Place" + std::to_string(test.param.place); });

} // namespace
} // namespace k740::test
