#pragma once

#include <vx/Exception.h>
#include <vx/util/ICharBuffer.h>
#include <vx/vorb/Boundary.h>

#include <cstdint>
#include <utility>

// The text of IVXFailureText, which the objects of a component library share.

namespace vx::components {

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

} // namespace vx::components
