// The dissector knows every code of the protocol and no other.
#include "protocol/commands.h"
#include "tests/support/sdk_log.h"
#include "tests/wireshark/packets.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <regex>
#include <set>

namespace k740::test {
namespace {

using KnownCodesTest = DissectorTest;
using Codes = std::set<std::uint16_t>;

std::uint16_t FromHex(const std::string& digits) {
    return static_cast<std::uint16_t>(std::stoul(digits, nullptr, 16));
}

/// All that the pattern finds in the text, by its groups.
std::vector<std::smatch> FindAll(const std::string& text, const std::regex& pattern) {
    return {std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()};
}

/// The codes in the first column of the tables of the wire format.
Codes DocumentedCodes() {
    const std::string text = ReadTextFile(K740_WIRE_FORMAT);
    Codes codes;
    for (const std::smatch& row : FindAll(text, std::regex("\n\\| (0x[^|]*)\\|"))) {
        const std::string cell = row[1];
        for (const std::smatch& code : FindAll(cell, std::regex("0x([0-9A-F]{4})"))) { codes.insert(FromHex(code[1])); }
    }
    codes.erase(0x8112); // a type of audio
    return codes;
}

/// The codes that the library names.
Codes LibraryCodes() {
    const std::string text = ReadTextFile(K740_COMMANDS);
    std::map<std::string, std::uint16_t> values;
    for (const std::smatch& constant : FindAll(text, std::regex("(kCmd\\w+) = 0x([0-9A-F]{4});"))) {
        values[constant[1]] = FromHex(constant[2]);
    }
    for (const std::smatch& constant : FindAll(text, std::regex("(kCmd\\w+) = (kCmd\\w+) \\| kReplyBit;"))) {
        values[constant[1]] = values.at(constant[2]) | kReplyBit;
    }
    Codes codes;
    for (const auto& [name, code] : values) { codes.insert(code); }
    return codes;
}

/// The codes, out of these, that the dissector does not know.
Codes Unknown(const std::vector<std::uint16_t>& codes) {
    {
        CaptureFile capture(kCapture);
        for (const std::uint16_t code : codes) { capture.Add(Request(code), kHost, kDevice); }
    }
    Codes unknown;
    for (const Row& row : Dissect(kCapture, {"k740.command"}, "-Y k740.expert.unknown_code")) {
        unknown.insert(FromHex(row.at("k740.command").substr(2)));
    }
    return unknown;
}

TEST_F(KnownCodesTest, TheDocumentListsTheCodesOfTheLibrary) {
    EXPECT_EQ(LibraryCodes(), DocumentedCodes());
    EXPECT_EQ(34U, DocumentedCodes().size());
}

TEST_F(KnownCodesTest, EveryCodeIsKnown) {
    const Codes codes = DocumentedCodes();
    EXPECT_EQ(Codes{}, Unknown({codes.begin(), codes.end()}));
}

TEST_F(KnownCodesTest, NoOtherCodeIsKnown) {
    const Codes codes = DocumentedCodes();
    std::vector<std::uint16_t> others;
    for (unsigned code = 0; code < 0x0800; ++code) { // and the same with the top bit
        for (const unsigned other : {code, code | kReplyBit}) {
            if (!codes.contains(static_cast<std::uint16_t>(other))) {
                others.push_back(static_cast<std::uint16_t>(other));
            }
        }
    }
    EXPECT_EQ(others.size(), Unknown(others).size());
}

} // namespace
} // namespace k740::test
