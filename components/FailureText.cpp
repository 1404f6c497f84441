#include "FailureText.h"

#include <vx/Describe.h>
#include <vx/Occasion.h>
#include <vx/String.h>
#include <vx/util/CopyCharBuffer.h>

#include <array>
#include <new>
#include <string_view>

namespace vx::components {

namespace {

// Without a destructor: the library could not be unloaded before a thread with a destructor to run has ended.
constinit thread_local std::array<char16_t, 512> t_failure {};
constinit thread_local std::size_t t_failureLength = 0;

} // namespace

std::int32_t storeText(IVXCharBuffer* target, String text)
{
    return vorb::atBoundary([&] { VXCopyCharBuffer(target, &text); });
}

void keepFailureText(const Exception& failure) noexcept
{
    try {
        const String description = failure.getDescription();
        String text = getOccasion(failure);
        if (text.isEmpty())
            text = description;
        else
            text.append(u": ").append(description.isEmpty() ? describe(getCause(failure)) : description);
        const std::u16string_view kept = text.view().substr(0, t_failure.size());
        t_failureLength = kept.copy(t_failure.data(), kept.size());
    } catch (const std::bad_alloc&) { // the result code remains
    }
}

void clearFailureText() noexcept
{
    t_failureLength = 0;
}

std::int32_t storeFailureText(IVXCharBuffer* text)
{
    return vorb::resultAtBoundary(
        [&] { return storeText(text, String(std::u16string_view(t_failure.data(), t_failureLength))); });
}

} // namespace vx::components
