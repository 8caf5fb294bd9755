// What leaves the shared library, and what a C host sees of it.
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>

namespace k740::test {
namespace {

/// @return what a command prints
std::string Output(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    std::array<char, 4096> part;
    while (pipe != nullptr && fgets(part.data(), part.size(), pipe.get()) != nullptr) { output += part.data(); }
    return output;
}

/// @return the first groups of all matches of a POSIX extended regular expression, in which "^" begins a line
std::set<std::string> FindAll(const std::string& text, const char* pattern) {
    regex_t regex;
    EXPECT_EQ(0, regcomp(&regex, pattern, REG_EXTENDED | REG_NEWLINE));
    std::set<std::string> found;
    std::array<regmatch_t, 2> match{};
    const char* rest = text.c_str();
    for (int flags = 0; regexec(&regex, rest, match.size(), match.data(), flags) == 0; flags = REG_NOTBOL) {
        found.emplace(rest + match[1].rm_so, rest + match[1].rm_eo);
        rest += match[0].rm_eo;
    }
    regfree(&regex);
    return found;
}

std::set<std::string> DeclaredFunctions() {
    return FindAll(ReadTextFile(K740_HEADER), "K740_API [a-z]+ (K740_[A-Za-z]+)[(]");
}

TEST(ExportedInterfaceTest, DynamicSymbolsAreExactlyTheDeclaredFunctions) {
    const std::string symbols = Output(K740_NM " --dynamic --defined-only --format=posix " K740_SHARED_LIBRARY);
    EXPECT_EQ(DeclaredFunctions(), FindAll(symbols, "^([^ ]+) .*$"));
    EXPECT_FALSE(DeclaredFunctions().empty());
}

TEST(ExportedInterfaceTest, SharedLibraryHasItsNameAndIsNeverUnloaded) {
    const std::string dynamic = Output(K740_READELF " --dynamic --wide " K740_SHARED_LIBRARY);
    EXPECT_EQ(std::set<std::string>{"libk740.so.1"}, FindAll(dynamic, "[(]SONAME[)].*\\[([^]]+)\\]"));
    EXPECT_THAT(dynamic, ::testing::ContainsRegex("FLAGS_1.*NODELETE"));
}

TEST(ExportedInterfaceTest, TheCHostCallsEveryDeclaredFunction) {
    const std::string host = ReadTextFile(K740_C_HOST_SOURCE);
    EXPECT_EQ(DeclaredFunctions(), FindAll(host, "(K740_[A-Za-z]+)[(]"));
    EXPECT_EQ(std::set<std::string>{"\"app/k740.h\""}, FindAll(host, "#include ([^ ]+)"));
}

class CHostTest : public OnPrivateNetwork {};

TEST_F(CHostTest, GetsTheExpectedResults) {
    AddZoneController(1, "192.168.1.20");
    const int status = std::system(K740_C_HOST);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status)) << "number of the first call with another result";
}

} // namespace
} // namespace k740::test
