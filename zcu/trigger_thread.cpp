// The threads that trigger one zone controller each.
#include "common/worker.h"
#include "zcu/trigger_job.h"
#include "zcu/zcu.h"

#include <memory>

namespace {

template <typename Request> void* RunTriggerJob(void* param, const char* threadName, Request request) {
    if (param == nullptr) { return kTriggerThreadFailed; }
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    const CThreadScope scope(threadName);
    int success = 0;
    ContainExceptions([&] {
        TriggerOutcome outcome;
        if (!job->isOver()) { success = request(*job, outcome); }
    });
    return success == 1 ? kTriggerThreadSucceeded : kTriggerThreadFailed;
}

} // namespace

void* CZCU::ThreadTriggerZCUJoinNetStream(void* param) {
    return RunTriggerJob(param, "k740-trigger", [](TriggerJob& job, TriggerOutcome& outcome) {
        return job.zcu.ZCU_Request_TriggerNetTask(&job.param, outcome);
    });
}

void* CZCU::ThreadTriggerZCUJoinNetAUX(void* param) {
    return RunTriggerJob(param, "k740-trigger-ax", [](TriggerJob& job, TriggerOutcome& outcome) {
        return job.zcu.ZCU_Request_TriggerLBXTask_V2(&job.param, outcome, job.isSuperseded);
    });
}
