#include "sim/namespace_privilege.h"

#include <gtest/gtest.h>

#include <vector>

int main(int argc, char** argv) {
    std::vector<char*> asStarted(argv, argv + argc + 1); // GoogleTest takes its flags out of argv
    ::testing::InitGoogleTest(&argc, argv);
    // Listing opens no socket, and it runs while the tests are built.
    if (!GTEST_FLAG_GET(list_tests)) { k740::sim::EnsureNamespacePrivilege(asStarted.data()); }
    return RUN_ALL_TESTS();
}
