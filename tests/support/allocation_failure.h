// Want of memory, for tests that link allocation_failure.cpp.
#pragma once

namespace k740::test {

/// Has a function asked at each operator new of this executable, on the thread that allocates, whether it shall fail.
/// What the function itself allocates is not asked for. One at a time.
class AllocationFailure {
public:
    using Fails = bool (*)();

    explicit AllocationFailure(Fails fails);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;
};

} // namespace k740::test
