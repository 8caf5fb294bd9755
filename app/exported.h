// The frame of every exported function.
#pragma once

#include "app/application.h"
#include "app/k740.h"

#include <string>

inline constexpr int kOk = 0;
inline constexpr int kFail = -1;

/// Initialises the library on first use, runs body(app) and lets nothing thrown reach the host.
/// @return what body returns; kFail when the library cannot be initialised or something was thrown
template <typename Body> int Exported(Body body) noexcept {
    try {
        return g_app->EnsureInitialized() ? body(*g_app) : kFail;
    } catch (...) { return kFail; }
}

/// @return a text from the host, which may be null
inline std::string Text(const char* text) {
    return text == nullptr ? "" : text;
}
