#pragma once

#include <vx/Exception.h>
#include <vx/util/ICharBuffer.h>
#include <vx/util/vorb/VorbPropertySet.h>
#include <vx/vorb/Boundary.h>

#include <cstdint>
#include <utility>

// The text of IVXFailureText, which the objects of a component library share.

namespace vx::components {

/// The operation of a component that gives a text.
std::int32_t storeText(IVXCharBuffer* target, String text);

/// Keeps or clears the text that GetFailureText gives on this thread.
void keepFailureText(const Exception& failure) noexcept;
void clearFailureText() noexcept;
/// The operation of IVXFailureText for all objects of the library.
std::int32_t storeFailureText(IVXCharBuffer* text);

/// Runs an operation of a component, as `resultAtBoundary` does, and keeps the text of its failure.
template <class Work>
std::int32_t withFailureText(Work&& work)
{
    clearFailureText();
    return vorb::resultAtBoundary([&] {
        try {
            return std::forward<Work>(work)();
        } catch (const Exception& failure) {
            keepFailureText(failure);
            throw;
        }
    });
}

/// The operation of a component that creates an object from properties, which are only read. `make` returns it.
template <class Make>
std::int32_t createFrom(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result, Make&& make)
{
    if (properties == nullptr || result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    return withFailureText([&] {
        const util::vorb::VorbPropertySet set(const_cast<util::vorb::IPropertySet*>(properties), nullptr);
        return make(set)->QueryInterface(iid, result);
    });
}

} // namespace vx::components
