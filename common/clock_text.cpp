#include "common/clock_text.h"

#include "common/format.h"

#include <sys/time.h>
#include <time.h>

namespace {

enum class Parts { Date, DateAndTime };

std::string LocalTime(time_t t, Parts wanted) {
    tzset(); // localtime_r(3) need not look at TZ again; the host may have changed it
    tm local{};
    if (localtime_r(&t, &local) == nullptr) { return {}; }
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
