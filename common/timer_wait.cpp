#include "common/timer_wait.h"

#include "common/deadline.h"

#include <pthread.h>

namespace {
pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t g_condition = PTHREAD_COND_INITIALIZER;
} // namespace

void timer_wait(unsigned ms) {
    const timespec deadline = DeadlineAfter(ms * kMicrosecondsPerMillisecond);
    pthread_mutex_lock(&g_mutex);
    pthread_cond_timedwait(&g_condition, &g_mutex, &deadline);
    pthread_mutex_unlock(&g_mutex);
}

int initialize_out_timer() {
    return 0;
}
