#include "common/format.h"

#include <gtest/gtest.h>

namespace k740::test {
namespace {

TEST(FormatTest, FormatsLikePrintf) {
    EXPECT_EQ("zone 3 of '0021FF': 00FF -1", Format("zone %d of '%s': %04X %d", 3, "0021FF", 255U, -1));
}

TEST(FormatTest, UnsignedConversionOfANegativeNumber) {
    EXPECT_EQ("4294967293", Format("%u", static_cast<unsigned>(-3)));
}

TEST(FormatTest, EmptyResult) {
    EXPECT_EQ("", Format("%s", ""));
}

TEST(FormatTest, PercentSigns) {
    EXPECT_EQ("100 %", Format("%d %%", 100));
}

TEST(FormatTest, ArgumentsAreNoFormats) {
    EXPECT_EQ("'%s%n%d'", Format("'%s'", "%s%n%d"));
}

TEST(FormatTest, TextsOfAnyLengthAreKeptWhole) {
    for (const std::size_t length : {255U, 256U, 1023U, 1024U, 4096U, 102'400U, 5'000'000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ("<" + text + ">", Format("<%s>", text.c_str()));
    }
}

} // namespace
} // namespace k740::test
