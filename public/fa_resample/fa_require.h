// A check of a programmer's promise that holds in release builds too.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process with the text, as assert(3) does, when a promise is broken.
inline void Require(bool kept, const char* text) {
    if (kept) { return; }
    std::fprintf(stderr, "Assertion `%s' failed.\n", text);
    std::abort();
}
