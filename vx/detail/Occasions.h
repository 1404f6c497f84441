#pragma once

namespace vx {

class Exception;

namespace detail {

/// What follows the life of an exception that may have a note of its occasion.
void copyOccasion(const Exception& from, const Exception& to) noexcept;
void forgetOccasion(const Exception& failure) noexcept;

/// Frees the memory of all notes. No exception with a note is alive any more.
void freeOccasions() noexcept;

} // namespace detail

} // namespace vx
