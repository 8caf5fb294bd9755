// The threads that trigger one zone controller each.
#include "common/worker.h"
#include "zcu/trigger_job.h"
#include "zcu/zcu.h"

#include <memory>

namespace {

using TriggerRequest = int (CZCU::*)(tagZCU_PARAM*, TriggerOutcome&);

void* RunTriggerJob(void* param, const char* threadName, TriggerRequest request) {
    if (param == nullptr) { return kTriggerThreadFailed; }
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    const CThreadScope scope(threadName);
    int success = 0;
    ContainExceptions([&] {
        TriggerOutcome outcome;
        success = (job->zcu.*request)(&job->param, outcome);
    });
    return success == 1 ? kTriggerThreadSucceeded : kTriggerThreadFailed;
}

} // namespace

void* CZCU::ThreadTriggerZCUJoinNetStream(void* param) {
    return RunTriggerJob(param, "k740-trigger", &CZCU::ZCU_Request_TriggerNetTask);
}

void* CZCU::ThreadTriggerZCUJoinNetAUX(void* param) {
    return RunTriggerJob(param, "k740-trigger-ax", &CZCU::ZCU_Request_TriggerLBXTask_V2);
}
