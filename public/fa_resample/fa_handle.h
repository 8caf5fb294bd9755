// Objects behind integer handles.
#pragma once

#include "public/fa_resample/fa_fir.h"

#include <bit>
#include <exception>
#include <memory>

/// Moves an object to the heap.
/// @param make  makes the object; what it throws becomes kFaRefused
/// @return      the handle that ReleaseHandle takes
template <typename Make> uintptr_t CreateHandle(Make make) noexcept {
    try {
        auto object = std::make_unique<decltype(make())>(make());
        return std::bit_cast<uintptr_t>(object.release());
    } catch (const std::exception&) { return kFaRefused; }
}

/// @return  null for 0 and for kFaRefused
template <typename Object> Object* FromHandle(uintptr_t handle) {
    return handle == kFaRefused ? nullptr : std::bit_cast<Object*>(handle);
}

template <typename Object> void ReleaseHandle(uintptr_t handle) {
    const std::unique_ptr<Object> object(FromHandle<Object>(handle));
}
