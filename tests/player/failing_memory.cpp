#include "tests/player/failing_memory.h"

#include "tests/support/allocation_failure.h"

namespace k740::test {
namespace {

thread_local int t_granted = -1;

bool IsOverdrawn() {
    if (t_granted > 0) {
        --t_granted;
        return false;
    }
    return t_granted == 0;
}

} // namespace

void GrantAllocations(int count) {
    static const AllocationFailure failure(IsOverdrawn);
    t_granted = count;
}

} // namespace k740::test
