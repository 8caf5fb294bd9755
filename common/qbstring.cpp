#include "common/qbstring.h"

#include "common/format.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace qbstring {
namespace {

// The host's locale must not change what the library reads or writes, so the case functions of the C library are out.
char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace

void SplitStringToVector(const std::string& text, const std::string& separator, std::vector<std::string>& out) {
    out.clear();
    if (text.empty()) { return; }
    if (separator.empty()) {
        out.push_back(text);
        return;
    }
    const std::string closed = text.ends_with(separator) ? text : text + separator;
    std::size_t start = 0;
    for (std::size_t end; (end = closed.find(separator, start)) != std::string::npos; start = end + separator.size()) {
        out.push_back(closed.substr(start, end - start));
    }
}

std::string trimString(const std::string& s) {
    const std::size_t first = s.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : s.substr(first, s.find_last_not_of(' ') - first + 1);
}

bool replaceString(std::string& s, const std::string& from, const std::string& to) {
    if (from.empty()) { return false; }
    std::size_t at = 0;
    while ((at = s.find(from, at)) != std::string::npos) {
        s.replace(at, from.size(), to);
        at += to.size();
    }
    return false;
}

char* strlwr(char* s) {
    std::transform(s, s + std::strlen(s), s, Lower);
    return s;
}

std::string lowerString(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), Lower);
    return s;
}

std::string upperString(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), Upper);
    return s;
}

std::string get_node_string(const std::string& text, const std::string& open, const std::string& close,
                            std::vector<std::string>& out) {
    out.clear();
    if (open.empty() || close.empty()) { return {}; }
    const std::string lowerText = lowerString(text);
    const std::string lowerOpen = lowerString(open);
    const std::string lowerClose = lowerString(close);
    std::size_t at = 0;
    while ((at = lowerText.find(lowerOpen, at)) != std::string::npos) {
        const std::size_t first = at + lowerOpen.size();
        const std::size_t end = lowerText.find(lowerClose, first);
        if (end == std::string::npos) { break; }
        out.push_back(text.substr(first, end - first));
        at = end + lowerClose.size();
    }
    return {};
}

std::string BytesToString(const unsigned char* data, int length, int spaced) {
    std::string dump;
    for (int i = 0; data != nullptr && i < length; ++i) {
        dump += Format(spaced == 1 ? "%02X " : "%02X", static_cast<unsigned>(data[i]));
    }
    return dump;
}

bool StringIsDigit(const std::string& s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace qbstring

std::string NUM2STR(int n) {
    return std::to_string(n);
}

uint32_t HSTR2DWORD(const std::string& s) {
    unsigned value = 0;
    return std::sscanf(s.c_str(), "%x", &value) == 1 ? value : 0;
}

void Xstrcpy(char* dst, const std::string& src, int n) {
    if (dst == nullptr || n < 1) { return; }
    const std::size_t capacity = static_cast<std::size_t>(n);
    std::memset(dst, 0, capacity + 1);
    src.copy(dst, capacity);
}
