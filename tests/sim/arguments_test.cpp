#include "sim/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::sim {
namespace {

/// What the work throws.
template <typename Work> std::string Refusal(Work work) {
    try {
        work();
    } catch (const std::invalid_argument& error) { return error.what(); }
    return "nothing is wrong";
}

TEST(ArgumentsTest, WordsStandBetweenBlanksAndInQuotationMarks) {
    Arguments arguments("  talk\t5000 \"two words.wav\" ");
    EXPECT_EQ("talk", arguments.Next("the command"));
    EXPECT_EQ("5000", arguments.Next("the device"));
    EXPECT_EQ("two words.wav", arguments.Next("the file"));
    EXPECT_TRUE(arguments.AtEnd());
}

TEST(ArgumentsTest, AQuotationMarkBehindABackslashIsPartOfTheWord) {
    Arguments arguments(R"("a \"b" "c\\" d)");
    EXPECT_EQ("a \"b", arguments.Next("the first"));
    EXPECT_EQ("c\\", arguments.Next("the second"));
    EXPECT_EQ("d", arguments.Next("the third"));
    EXPECT_TRUE(arguments.AtEnd());
}

TEST(ArgumentsTest, OpenQuotationMarkIsRefused) {
    EXPECT_EQ("a quotation mark is not closed", Refusal([] { Arguments("a \"b"); }));
}

TEST(ArgumentsTest, MissingAndSurplusWordsAreNamed) {
    Arguments arguments("one two");
    arguments.Next("a word");
    EXPECT_EQ("\"two\" is too much", Refusal([&] { arguments.ExpectEnd(); }));
    arguments.Next("a word");
    arguments.ExpectEnd();
    EXPECT_EQ("the group is missing", Refusal([&] { arguments.Next("the group"); }));
}

TEST(ArgumentsTest, NumbersHaveBounds) {
    EXPECT_EQ(1U, Arguments("1").NextNumber("n", 1, 8));
    EXPECT_EQ(8U, Arguments("8").NextNumber("n", 1, 8));
    EXPECT_EQ(31U, Arguments("0x1F").NextNumber("n", 1, 40));
    EXPECT_EQ(4294967295U, Arguments("4294967295").NextNumber("n", 0, 4294967295));
    for (const char* bad : {"0", "9", "-1", "1x", "x", "0x", "4294967296", "1.5"}) {
        EXPECT_EQ(std::string("n \"") + bad + "\" is not in 1..8",
                  Refusal([&] { Arguments(bad).NextNumber("n", 1, 8); }));
    }
}

TEST(ArgumentsTest, ZonesAreAList) {
    EXPECT_EQ(0b1U, Arguments("1").NextZones());
    EXPECT_EQ(0b10000101U, Arguments("1,3,8").NextZones());
    EXPECT_EQ(0xFFU, Arguments("all").NextZones());
    EXPECT_EQ("zone \"9\" is not in 1..8", Refusal([] { Arguments("1,9").NextZones(); }));
    EXPECT_EQ("zone \"0\" is not in 1..8", Refusal([] { Arguments("0").NextZones(); }));
}

TEST(ArgumentsTest, GroupsAreMulticast) {
    EXPECT_EQ("224.0.0.1", Arguments("224.0.0.1").NextGroup());
    EXPECT_EQ("239.255.255.255", Arguments("239.255.255.255").NextGroup());
    for (const char* bad : {"223.255.255.255", "240.0.0.0", "225.1", "name"}) {
        EXPECT_NE("nothing is wrong", Refusal([&] { Arguments(bad).NextGroup(); })) << bad;
    }
}

TEST(ArgumentsTest, AChoiceThatIsNoneListsThem) {
    EXPECT_EQ(1U, Arguments("b").NextOf("letter", {"a", "b"}));
    EXPECT_EQ("letter \"c\" is none of a, b", Refusal([] { Arguments("c").NextOf("letter", {"a", "b"}); }));
}

} // namespace
} // namespace k740::sim
