// Memory that runs out, for one thread, at a chosen moment.
#pragma once

#include <new>

namespace k740::test {

/// Lets the calling thread make that many allocations more and refuses it every later one; below 0 it has its memory
/// back.
void GrantAllocations(int count);

/// Runs action on this thread with that many allocations. @return whether they sufficed
template <typename Action> bool SucceedsWith(int allocations, Action action) {
    GrantAllocations(allocations);
    bool succeeded = true;
    try {
        action();
    } catch (const std::bad_alloc&) { succeeded = false; }
    GrantAllocations(-1);
    return succeeded;
}

} // namespace k740::test
