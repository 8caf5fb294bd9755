// The frame of every exported function.
#pragma once

#include "app/application.h"
#include "app/k740.h"

#include <pthread.h>

#include <string>

inline constexpr int kOk = 0;
inline constexpr int kFail = -1;

/// Keeps a host thread from being cancelled inside the library, where locks may be held (pthread_setcancelstate(3)).
class CNoCancellation {
public:
    CNoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_former); }
    ~CNoCancellation() { pthread_setcancelstate(m_former, nullptr); }
    CNoCancellation(const CNoCancellation&) = delete;
    CNoCancellation& operator=(const CNoCancellation&) = delete;

private:
    int m_former = PTHREAD_CANCEL_ENABLE;
};

/// Runs body(app) of an exported function, uncancelled, and lets nothing thrown reach the host.
/// @return what body returns; kFail when something was thrown
template <typename Body> int Guarded(Body body) noexcept {
    const CNoCancellation uncancelled;
    try {
        return body(*g_app);
    } catch (...) { return kFail; }
}

/// Initialises the library on first use, then runs body(app) as Guarded does.
/// @return what body returns; kFail when the library cannot be initialised or something was thrown
template <typename Body> int Exported(Body body) noexcept {
    return Guarded([&](CK740ControlApp& app) { return app.EnsureInitialized() ? body(app) : kFail; });
}

/// Notes a call of the host.
inline void LogCall(CK740ControlApp& app, const std::string& line) {
    app.Log().PushLog("", kLogInfo, line);
}

/// @return a text from the host, which may be null
inline std::string Text(const char* text) {
    return text == nullptr ? "" : text;
}
