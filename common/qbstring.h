// Text helpers: splitting, trimming, case, numbers and dumps. All of them are pure and ASCII-only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qbstring {

/// Cuts text at every separator, empty pieces included; a separator at the very end adds no piece. An empty
/// separator does not cut.
/// @param out  cleared first
void SplitStringToVector(const std::string& text, const std::string& separator, std::vector<std::string>& out);

/// @return s without the blanks at both ends; tabs and line ends stay
std::string trimString(const std::string& s);

/// Replaces every occurrence from left to right; what was inserted is not searched again. Nothing for an empty from.
/// @return whether the last search found something; the search goes on until none does, so false
bool replaceString(std::string& s, const std::string& from, const std::string& to);

/// Turns A-Z into a-z in place. @return s
char* strlwr(char* s);
std::string lowerString(std::string s);
std::string upperString(std::string s);

/// Collects the texts between each open and the next close, whatever the case of the two marks.
/// @param out  cleared first; receives the texts as they stand
/// @return     an empty text
std::string get_node_string(const std::string& text, const std::string& open, const std::string& close,
                            std::vector<std::string>& out);

/// @param spaced  1: a blank after every byte
/// @return        upper-case hexadecimal digits; empty for null or a length below 1
std::string BytesToString(const unsigned char* data, int length, int spaced);

/// @return true when every character is 0-9, so for an empty text too
bool StringIsDigit(const std::string& s);

} // namespace qbstring

/// @return n in decimal
std::string NUM2STR(int n);

/// Reads a hexadecimal number as sscanf(3) does with %x: blanks, a sign and "0x" may lead, text may follow.
/// @return the number, 0 when there is none
uint32_t HSTR2DWORD(const std::string& s);

/// Copies at most n characters into a field of n + 1 bytes, which is cleared first, so the copy is always terminated.
/// Nothing happens when dst is null or n is below 1.
void Xstrcpy(char* dst, const std::string& src, int n);

/// A hook for debugging output; does nothing.
inline void TRACE(const std::string& /*text*/) {}
