#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"

#include <concepts>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vx {

/// What was being done, and to what, when an exception was thrown: "open /etc/x.conf". It is kept beside the exception, since
/// many descriptions are empty and the result code alone does not name the thing that failed. describe() shows it.
///
/// Copies of the exception share it. Empty if it is not known, or if there was no memory to note it.
VX_API String getOccasion(const Exception& failure);

/// Notes `operation` and `object`, with a blank between them, for `failure` and its later copies. The first note stays: it
/// is the closest to the cause.
VX_API void noteOccasion(const Exception& failure, std::u16string_view operation, std::u16string_view object) noexcept;

/// The result code of the cause. It is getResult() of the exception. If that is only the general RESULT_FAIL, it is the code
/// that was noted, such as the one of a refused connection.
VX_API std::int32_t getCause(const Exception& failure) noexcept;

/// Notes `result` as the cause of `failure` and of its later copies. The first note stays.
VX_API void noteCause(const Exception& failure, std::int32_t result) noexcept;

namespace detail {

template <typename Thing>
void noteThing(const Exception& failure, std::u16string_view operation, const Thing& object) noexcept
{
    try {
        if constexpr (std::invocable<const Thing&>)
            noteOccasion(failure, operation, String(object()).view());
        else if constexpr (std::is_pointer_v<Thing>)
            noteOccasion(failure, operation, (object != nullptr ? String(object) : String()).view());
        else
            noteOccasion(failure, operation, String(object).view());
    } catch (...) { // the failure itself is worth more than its note
    }
}

} // namespace detail

/// Runs `work` and gives what it returns. If an exception leaves it, what was being done is noted.
///
/// `object` is a text, or a callable that gives one: it is called only after a failure.
/// @code
/// try {
///     during(u"read settings from", u"a.ini", [] { throwResult(RESULT_NOT_FOUND); });
/// } catch (const Exception& failure) {
///     assert(getOccasion(failure) == u"read settings from a.ini");
/// }
/// @endcode
template <typename Thing, std::invocable Work>
decltype(auto) during(std::u16string_view operation, const Thing& object, Work&& work)
{
    try {
        return std::forward<Work>(work)();
    } catch (const Exception& failure) {
        detail::noteThing(failure, operation, object);
        throw;
    }
}

/// Throws `failure` with a note of what was being done and, if `cause` is a failure, with a note of the cause. `object` as
/// for `during`.
template <typename Thing, std::derived_from<Exception> Failure>
[[noreturn]] void throwDuring(
    std::u16string_view operation, const Thing& object, const Failure& failure, std::int32_t cause = RESULT_OK)
{
    try {
        throw failure;
    } catch (const Exception& thrown) {
        detail::noteThing(thrown, operation, object);
        if (cause < 0)
            noteCause(thrown, cause);
        throw;
    }
}

/// As the form with one argument, with a note of what was being done.
template <typename Thing>
void throwIfFailed(std::int32_t result, std::u16string_view operation, const Thing& object)
{
    if (result < 0)
        throwDuring(operation, object, ResultException(result));
}

} // namespace vx
