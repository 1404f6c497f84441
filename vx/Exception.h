#pragma once

#include "vx/String.h"

#include <cstdint>

namespace vx {

/// Root of what the library throws: by value, caught by reference, never counted.
class VX_API Exception : public Object {
public:
    Exception() noexcept;
    Exception(const Exception& other) noexcept;
    Exception(const String& description) noexcept;
    Exception& operator=(const Exception& other);
    ~Exception() noexcept override;

    /// Empty unless the thrower gave one.
    virtual String getDescription() const;
    /// The code that stands for this exception at a component border: RESULT_FAIL unless the class has one of its own.
    virtual std::int32_t getResult() const;

private:
    String m_description;
};

/// A result code on its way through class operations.
class VX_API ResultException : public Exception {
public:
    /// With RESULT_FAIL.
    ResultException() noexcept;
    ResultException(const ResultException& other) noexcept;
    /// Any code goes, one of success too.
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

/// Throws std::bad_alloc with the text "bad allocation": storage that no new handler serves is exhausted, or a size is
/// beyond what can be counted.
[[noreturn]] VX_API void throwBadAllocation();

/// The way back from a component operation: a negative result becomes a ResultException.
inline void throwIfFailed(std::int32_t result)
{
    if (result < 0)
        throwResult(result);
}

} // namespace vx
