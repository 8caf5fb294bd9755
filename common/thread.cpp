#include "common/thread.h"

#include "common/immortal.h"
#include "common/sem.h"

#include <algorithm>

namespace {

struct RunningThreadCounter {
    CQBSem lock;
    int count K740_GUARDED_BY(lock) = 0;
};

// Worker threads may outlive main, so the counter must outlive it too.
constinit CImmortal<RunningThreadCounter> g_runningThreads;

void AddRunningThreads(int change) {
    const CQBSemLocker lock(&g_runningThreads->lock);
    g_runningThreads->count += change;
}

} // namespace

int createThread(pthread_t& id, void* (*start)(void*), void* arg, int detach, std::size_t stack) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (stack > 0) { pthread_attr_setstacksize(&attributes, stack); }
    if (detach == 1) { pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED); }
    pthread_t created{};
    const int error = pthread_create(&created, &attributes, start, arg);
    pthread_attr_destroy(&attributes);
    if (error == 0) {
        id = created;
        return 0;
    }
    // A host with much thread-local data, which is taken from the stack, may leave too little of a small one.
    return stack > 0 ? createThread(id, start, arg, detach) : -1;
}

void CloseThreadHandle(pthread_t thread) {
    pthread_detach(thread);
}

void CloseThreadHandle(const std::vector<pthread_t>& threads) {
    std::for_each(threads.begin(), threads.end(), [](pthread_t thread) { CloseThreadHandle(thread); });
}

void INTHREAD() {
    AddRunningThreads(1);
}

void DETHREAD() {
    AddRunningThreads(-1);
}

int RunningThreads() {
    const CQBSemLocker lock(&g_runningThreads->lock);
    return g_runningThreads->count;
}

CThreadScope::CThreadScope(const char* name) {
    INTHREAD();
    pthread_setname_np(pthread_self(), name);
}

CThreadScope::~CThreadScope() {
    DETHREAD();
}
