// A process-wide object that is built on first use and never destroyed.
#pragma once

#include <mutex>
#include <new>

/// Storage for one T of static lifetime.
///
/// Detached threads run until the very end of the process; an object that they use must still be there after main
/// has returned and must already be there before main begins. The storage itself is constant-initialised.
template <typename T> class CImmortal {
public:
    constexpr CImmortal() = default;
    CImmortal(const CImmortal&) = delete;
    CImmortal& operator=(const CImmortal&) = delete;

    T& operator*() {
        std::call_once(m_built, [this] { new (m_storage) T; });
        return *std::launder(reinterpret_cast<T*>(m_storage));
    }
    T* operator->() { return &**this; }

private:
    std::once_flag m_built;
    alignas(T) unsigned char m_storage[sizeof(T)]{};
};
