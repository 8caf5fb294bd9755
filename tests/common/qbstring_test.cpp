#include "common/qbstring.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>

namespace k740::test {
namespace {

using Pieces = std::vector<std::string>;

Pieces Split(const std::string& text, const std::string& separator = ";") {
    Pieces pieces{"stale"};
    qbstring::SplitStringToVector(text, separator, pieces);
    return pieces;
}

Pieces Nodes(const std::string& text, const std::string& open, const std::string& close) {
    Pieces nodes{"stale"};
    EXPECT_EQ("", qbstring::get_node_string(text, open, close, nodes));
    return nodes;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    qbstring::replaceString(text, from, to);
    return text;
}

TEST(SplitTest, EndSeparatorAddsNoPiece) {
    EXPECT_EQ((Pieces{"0001FF", "0002FF"}), Split("0001FF;0002FF;"));
    EXPECT_EQ((Pieces{"0001FF", "0002FF"}), Split("0001FF;0002FF"));
    EXPECT_EQ(Pieces{"a"}, Split("a;"));
}

TEST(SplitTest, EmptyPiecesCount) {
    EXPECT_EQ((Pieces{"a", "", "b"}), Split("a;;b"));
    EXPECT_EQ((Pieces{"", "a"}), Split(";a"));
    EXPECT_EQ((Pieces{"a", ""}), Split("a;;"));
}

TEST(SplitTest, SeparatorAloneIsOneEmptyPiece) {
    EXPECT_EQ(Pieces{""}, Split(";"));
}

TEST(SplitTest, EmptyTextHasNoPieces) {
    EXPECT_EQ(Pieces{}, Split(""));
}

TEST(SplitTest, SeparatorMayBeLonger) {
    EXPECT_EQ((Pieces{"a", "b,c"}), Split("a, b,c, ", ", "));
}

TEST(SplitTest, SeparatorThatOverlapsItselfEndsNoPieceTwice) {
    EXPECT_EQ((Pieces{"x"}), Split("x;;;", ";;")); // the last ";" stands before no separator
}

TEST(SplitTest, EmptySeparatorDoesNotCut) {
    EXPECT_EQ(Pieces{"a;b"}, Split("a;b", ""));
}

TEST(TrimTest, BlanksAtBothEndsGo) {
    EXPECT_EQ("a b", qbstring::trimString("  a b   "));
    EXPECT_EQ("a", qbstring::trimString("a"));
    EXPECT_EQ("", qbstring::trimString(""));
    EXPECT_EQ("", qbstring::trimString("   "));
}

TEST(TrimTest, TabsAndLineEndsStay) {
    EXPECT_EQ("\ta\t", qbstring::trimString(" \ta\t "));
    EXPECT_EQ("\na\r\n", qbstring::trimString(" \na\r\n "));
}

TEST(ReplaceTest, EveryOccurrenceFromLeftToRight) {
    EXPECT_EQ("b-b-b", Replaced("a-a-a", "a", "b"));
    EXPECT_EQ("Xa", Replaced("aaa", "aa", "X"));
    EXPECT_EQ("--", Replaced("a-a-a", "a", ""));
}

TEST(ReplaceTest, WhatWasInsertedIsNotReplacedAgain) {
    EXPECT_EQ("aaaa", Replaced("aa", "a", "aa"));
}

TEST(ReplaceTest, TheLastSearchFindsNothing) {
    std::string text = "a-a";
    EXPECT_FALSE(qbstring::replaceString(text, "a", "b"));
    EXPECT_FALSE(qbstring::replaceString(text, "a", "b"));
}

TEST(ReplaceTest, EmptyFromChangesNothing) {
    EXPECT_EQ("abc", Replaced("abc", "", "x"));
}

TEST(CaseTest, AsciiLettersOnly) {
    EXPECT_EQ("az09@[`{\xC4\xE4", qbstring::lowerString("AZ09@[`{\xC4\xE4"));
    EXPECT_EQ("AZ09@[`{\xC4\xE4", qbstring::upperString("az09@[`{\xC4\xE4"));
}

TEST(CaseTest, LowersInPlaceAndReturnsTheText) {
    std::array<char, 8> text{"AbC-1Z"};
    EXPECT_EQ(text.data(), qbstring::strlwr(text.data()));
    EXPECT_STREQ("abc-1z", text.data());
}

TEST(NodeTest, TextsBetweenTheMarks) {
    EXPECT_EQ((Pieces{"one", "two"}), Nodes("<n>one</n> and <n>two</n>", "<n>", "</n>"));
}

TEST(NodeTest, CaseOfTheMarksDoesNotMatterAndThatOfTheTextStays) {
    EXPECT_EQ((Pieces{"One", "TWO"}), Nodes("<N>One</n><n>TWO</N>", "<n>", "</N>"));
}

TEST(NodeTest, StopsWhereAMarkIsMissing) {
    EXPECT_EQ((Pieces{"one"}), Nodes("<n>one</n><n>two", "<n>", "</n>"));
    EXPECT_EQ(Pieces{}, Nodes("one</n>", "<n>", "</n>"));
    EXPECT_EQ(Pieces{}, Nodes("", "<n>", "</n>"));
}

TEST(NodeTest, EmptyTextBetweenTheMarksCounts) {
    EXPECT_EQ(Pieces{""}, Nodes("<n></n>", "<n>", "</n>"));
}

TEST(NodeTest, EmptyMarksFindNothing) {
    EXPECT_EQ(Pieces{}, Nodes("abc", "", "</n>"));
    EXPECT_EQ(Pieces{}, Nodes("abc", "<n>", ""));
    EXPECT_EQ(Pieces{}, Nodes("abc", "", ""));
}

TEST(BytesToStringTest, UpperCaseWithABlankBehindEveryByte) {
    const std::array<unsigned char, 3> bytes{0x00, 0xAB, 0xFF};
    EXPECT_EQ("00 AB FF ", qbstring::BytesToString(bytes.data(), 3, 1));
    EXPECT_EQ("00ABFF", qbstring::BytesToString(bytes.data(), 3, 0));
    EXPECT_EQ("00ABFF", qbstring::BytesToString(bytes.data(), 3, 2)); // 1 alone asks for blanks
    EXPECT_EQ("00", qbstring::BytesToString(bytes.data(), 1, 0));
}

TEST(BytesToStringTest, NothingForNullOrNoLength) {
    const unsigned char byte = 1;
    EXPECT_EQ("", qbstring::BytesToString(nullptr, 3, 1));
    EXPECT_EQ("", qbstring::BytesToString(&byte, 0, 1));
    EXPECT_EQ("", qbstring::BytesToString(&byte, -1, 1));
}

TEST(StringIsDigitTest, OnlyTheTenDigits) {
    EXPECT_TRUE(qbstring::StringIsDigit("0123456789"));
    EXPECT_TRUE(qbstring::StringIsDigit(""));
    for (const char* text : {"-1", "1 ", "1a", "1.0", "/", ":", "\xB2", "1\t"}) {
        EXPECT_FALSE(qbstring::StringIsDigit(text)) << text;
    }
}

TEST(NumberTest, DecimalText) {
    EXPECT_EQ("0", NUM2STR(0));
    EXPECT_EQ("2147483647", NUM2STR(INT_MAX));
    EXPECT_EQ("-2147483648", NUM2STR(INT_MIN));
}

TEST(NumberTest, HexadecimalTextWithOrWithoutPrefix) {
    EXPECT_EQ(0x1FU, HSTR2DWORD("1F"));
    EXPECT_EQ(0x1FU, HSTR2DWORD("1f"));
    EXPECT_EQ(0x1FU, HSTR2DWORD("0x1F"));
    EXPECT_EQ(0x1FU, HSTR2DWORD("0X1f"));
    EXPECT_EQ(0xFFFFFFFFU, HSTR2DWORD("FFFFFFFF"));
}

TEST(NumberTest, HexadecimalTextIsReadAsFarAsItGoes) {
    EXPECT_EQ(0x12U, HSTR2DWORD("12G4"));
    EXPECT_EQ(0x12U, HSTR2DWORD(" 12"));
    EXPECT_EQ(0xFFFFFFFFU, HSTR2DWORD("-1"));
}

TEST(NumberTest, NoHexadecimalTextIsZero) {
    for (const char* text : {"", "G1", " ", "-", "zone"}) { EXPECT_EQ(0U, HSTR2DWORD(text)) << text; }
}

TEST(XstrcpyTest, CopiesAtMostNCharactersAndAZero) {
    std::array<char, 6> field{'#', '#', '#', '#', '#', '#'};
    Xstrcpy(field.data(), "abcdef", 3);
    EXPECT_EQ((std::array<char, 6>{'a', 'b', 'c', '\0', '#', '#'}), field);
}

TEST(XstrcpyTest, ClearsNPlus1BytesAlsoForAShorterText) {
    std::array<char, 6> field{'#', '#', '#', '#', '#', '#'};
    Xstrcpy(field.data(), "a", 4);
    EXPECT_EQ((std::array<char, 6>{'a', '\0', '\0', '\0', '\0', '#'}), field);
}

TEST(XstrcpyTest, TextOfExactlyNFits) {
    std::array<char, 5> field{'#', '#', '#', '#', '#'};
    Xstrcpy(field.data(), "abc", 3);
    EXPECT_EQ((std::array<char, 5>{'a', 'b', 'c', '\0', '#'}), field);
}

TEST(XstrcpyTest, NothingForNullOrNBelow1) {
    std::array<char, 2> field{'#', '#'};
    Xstrcpy(field.data(), "abc", 0);
    Xstrcpy(field.data(), "abc", -1);
    Xstrcpy(nullptr, "abc", 3);
    EXPECT_EQ((std::array<char, 2>{'#', '#'}), field);
}

} // namespace
} // namespace k740::test
