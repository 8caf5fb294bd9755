#include "tests/support/allocation_failure.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace k740::test {
namespace {

std::atomic<AllocationFailure::Fails> g_fails{nullptr};
thread_local bool t_isAsking = false;

void* Allocate(std::size_t size) noexcept {
    const AllocationFailure::Fails fails = g_fails;
    if (fails != nullptr && !std::exchange(t_isAsking, true)) {
        const bool shallFail = fails();
        t_isAsking = false;
        if (shallFail) { return nullptr; }
    }
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

AllocationFailure::AllocationFailure(Fails fails) {
    g_fails = fails;
}

AllocationFailure::~AllocationFailure() {
    g_fails = nullptr;
}

} // namespace k740::test

// These stand before the standard library's in this executable.

void* operator new(std::size_t size) {
    if (void* const memory = k740::test::Allocate(size)) { return memory; }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
    return k740::test::Allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*unused*/) noexcept {
    std::free(memory);
}
