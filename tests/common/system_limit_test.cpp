#include "common/system_limit.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <vector>

namespace {

std::vector<rlimit> g_asked;
bool g_onlyAsk = false; // the machine may not allow what is asked for
int g_answer = 0;

} // namespace

// Stands before the C library's function of this name in this executable.
extern "C" int setrlimit(__rlimit_resource_t resource, const rlimit* limit) noexcept {
    if (resource == RLIMIT_NOFILE && g_onlyAsk) {
        g_asked.push_back(*limit);
        return g_answer;
    }
    return static_cast<int>(syscall(SYS_prlimit64, 0, resource, limit, nullptr));
}

namespace k740::test {
namespace {

rlimit OpenFilesLimit() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
}

/// Gives up every privilege of this thread, capabilities(7), whose limits then only fall.
void DropPrivileges() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3]{};
    ASSERT_EQ(0, syscall(SYS_capset, &header, none));
}

TEST(SystemLimitTest, SoftAndHardLimitAreBothSetTo50000) {
    g_onlyAsk = true;
    EXPECT_EQ(0, SetSystemLimit());
    ASSERT_EQ(1U, g_asked.size());
    EXPECT_EQ(50'000U, g_asked[0].rlim_cur);
    EXPECT_EQ(50'000U, g_asked[0].rlim_max);
}

TEST(SystemLimitTest, ResultIsThatOfSetrlimit) {
    g_onlyAsk = true;
    g_answer = -1;
    EXPECT_EQ(-1, SetSystemLimit());
}

TEST(SystemLimitTest, RefusedRaiseOfTheHardLimitChangesNothing) {
    const rlimit low{100, 200};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &low));
    DropPrivileges();
    EXPECT_EQ(-1, SetSystemLimit());
    EXPECT_EQ(low.rlim_cur, OpenFilesLimit().rlim_cur);
    EXPECT_EQ(low.rlim_max, OpenFilesLimit().rlim_max);
}

} // namespace
} // namespace k740::test
