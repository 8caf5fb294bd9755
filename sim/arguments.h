// The words of a command, read one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace k740::sim {

/// Decimal, also behind zeros, or hexadecimal behind 0x. @return nothing for any other text
std::optional<std::uint32_t> ReadNumber(std::string_view text);

/// Every function that reads throws std::invalid_argument, with what is wrong, when the word is not there or not such.
class Arguments {
public:
    /// @param text  words between blanks; one with blanks in it stands in quotation marks, in which \ precedes a
    ///              quotation mark or a \ that is part of the word
    explicit Arguments(const std::string& text);

    [[nodiscard]] bool AtEnd() const { return m_next == m_words.size(); }
    /// @return the word that is next, empty at the end
    [[nodiscard]] std::string Peek() const { return AtEnd() ? "" : m_words[m_next]; }
    /// Reads the word if it is this one. @return whether it was
    bool Skip(const std::string& word);
    void ExpectEnd() const;

    /// @param what  is expected, for the sentence when it is not there
    std::string Next(const std::string& what);
    /// Decimal, or hexadecimal behind 0x.
    std::uint32_t NextNumber(const std::string& what, std::uint32_t least, std::uint32_t most);
    /// @return the place of the word among the choices
    std::size_t NextOf(const std::string& what, const std::vector<std::string>& choices);
    /// A multicast address.
    std::string NextGroup();
    /// Zones as 1,3 or all. @return mask, bit 0 is zone 1
    std::uint32_t NextZones();

private:
    std::vector<std::string> m_words;
    std::size_t m_next = 0;
};

} // namespace k740::sim
