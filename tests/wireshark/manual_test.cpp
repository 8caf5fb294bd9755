// What the page about Wireshark promises.
#include "tests/support/sdk_log.h"
#include "tests/wireshark/packets.h"

#include <regex>

namespace k740::test {
namespace {

using ManualTest = DissectorTest;

/// The filters in the first column of the page's table.
std::vector<std::string> Filters() {
    const std::string page = ReadTextFile(K740_WIRESHARK_PAGE);
    const std::regex row("\n\\| (`[^|]*) \\|");
    const std::regex filter("`([^`]*)`");
    std::vector<std::string> filters;
    for (std::sregex_iterator line(page.begin(), page.end(), row), end; line != end; ++line) {
        const std::string cell = (*line)[1];
        for (std::sregex_iterator one(cell.begin(), cell.end(), filter); one != end; ++one) {
            filters.push_back((*one)[1]);
        }
    }
    return filters;
}

TEST_F(ManualTest, ItsFiltersAreValid) {
    const std::vector<std::string> filters = Filters();
    ASSERT_LT(10U, filters.size());
    CaptureFile(kCapture).Add(Request(0x0303), kHost, kDevice);
    std::string any = "!frame";
    for (const std::string& filter : filters) { any += " or (" + filter + ")"; }
    EXPECT_EQ(1U, Dissect(kCapture, {kFrame}, "-Y '" + any + "'").size());
}

} // namespace
} // namespace k740::test
