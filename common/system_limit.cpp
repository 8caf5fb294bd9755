#include "common/system_limit.h"

#include <sys/resource.h>

namespace {
constexpr rlim_t kOpenFiles = 50000;
}

int SetSystemLimit() {
    const rlimit limit{kOpenFiles, kOpenFiles};
    return setrlimit(RLIMIT_NOFILE, &limit);
}
