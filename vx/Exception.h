#pragma once

#include "vx/String.h"

#include <cstdint>

namespace vx {

/// Root of the exceptions of the library. They are thrown by value and caught by reference, and have no reference
/// count.
class VX_API Exception : public Object {
public:
    Exception() noexcept;
    Exception(const Exception& other) noexcept;
    Exception(const String& description) noexcept;
    Exception& operator=(const Exception& other);
    ~Exception() noexcept override;

    /// Empty unless the thrower gave one.
    virtual String getDescription() const;
    /// The result code of this exception for components: RESULT_FAIL unless the class has a more special one.
    virtual std::int32_t getResult() const;

private:
    String m_description;
};

/// A result code as an exception.
class VX_API ResultException : public Exception {
public:
    /// The code is RESULT_FAIL.
    ResultException() noexcept;
    ResultException(const ResultException& other) noexcept;
    /// `result` may be any code, also one of success.
    explicit ResultException(std::int32_t result) noexcept;
    ResultException(std::int32_t result, const String& description) noexcept;
    ResultException& operator=(const ResultException& other);
    ~ResultException() noexcept override;

    // Exception
    std::int32_t getResult() const override;

private:
    std::int32_t m_result;
};

/// Throws ResultException with `result`, which is negative.
[[noreturn]] VX_API void throwResult(std::int32_t result);

/// Throws std::bad_alloc with the text "bad allocation", after memory was exhausted or for a size that is too large.
[[noreturn]] VX_API void throwBadAllocation();

/// Throws a negative result of a component operation as ResultException.
inline void throwIfFailed(std::int32_t result)
{
    if (result < 0)
        throwResult(result);
}

} // namespace vx
