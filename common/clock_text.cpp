#include "common/clock_text.h"

#include "common/format.h"
#include "common/immortal.h"
#include "common/sem.h"

#include <sys/time.h>
#include <time.h>

namespace {

constinit CImmortal<CQBSem> g_zoneLock; // tzset replaces what localtime_r reads

enum class Parts { Date, DateAndTime };

bool BreakDown(time_t t, tm& local) {
    const CQBSemLocker lock(&*g_zoneLock);
    tzset(); // localtime_r(3) need not look at TZ again; the host may have changed it
    return localtime_r(&t, &local) != nullptr;
}

std::string LocalTime(time_t t, Parts wanted) {
    tm local{};
    if (!BreakDown(t, local)) { return {}; }
    char text[64];
    const std::size_t length = wanted == Parts::Date ? strftime(text, sizeof(text), "%Y-%m-%d", &local)
                                                     : strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local);
    return {text, length};
}

} // namespace

std::string GetNowString(int mode) {
    timeval now{};
    gettimeofday(&now, nullptr);
    if (mode == kDateOnly) { return LocalTime(now.tv_sec, Parts::Date); }
    if (mode != kDateAndMilliseconds) { return {}; }
    return Format("%s.%03d", LocalTime(now.tv_sec, Parts::DateAndTime).c_str(), static_cast<int>(now.tv_usec / 1000));
}

std::string TimeToString(long t) {
    return LocalTime(t, Parts::DateAndTime);
}
