#pragma once

#include "vx/Exception.h"

#include <cstdint>
#include <exception>
#include <iosfwd>
#include <system_error>

namespace vx {

/// Failures as a person reads them, on one line and in English. None of these texts is ever empty.

/// What a result code means: "no such file or directory". Results of sockets give the text of the socket classes; a code that
/// the library does not know is named by its number.
VX_API String describe(std::int32_t result);

/// The name of the class, what was being done (vx/Occasion.h), the description, what the code means, and the code:
/// "vx::ResultException: open /etc/x.conf: no such file or directory (0x80070002)". The code is that of the cause. What is not
/// known is left out, and what would be said twice.
VX_API String describe(const Exception& failure);

/// What the user of a program has to know of it: what was being done, the description, and, if the description is empty or
/// the code is not the general RESULT_FAIL, what the code means: "open /etc/x.conf: no such file or directory".
VX_API String explain(const Exception& failure);

/// As describe(failure). For an exception of the standard library the text has its type and its `what`, for any other
/// exception its type.
VX_API String describe(const std::exception_ptr& failure);

/// Writes describe(failure) in UTF-8.
VX_API std::ostream& operator<<(std::ostream& stream, const Exception& failure);

/// After this call, a program that ends by an uncaught exception prints describe() of it on standard error and then
/// aborts. The library must stay loaded. It replaces the handler of std::set_terminate.
VX_API void installTerminateReport() noexcept;

/// Result codes among the error codes of the standard library. A code that stands for an error of the system compares equal
/// to its std::errc: `errorCodeOf(result) == std::errc::no_such_file_or_directory`.
VX_API const std::error_category& resultCategory() noexcept;

/// Codes of success give no error.
VX_API std::error_code errorCodeOf(std::int32_t result) noexcept;
/// The code of the cause (`getCause`).
VX_API std::error_code errorCodeOf(const Exception& failure) noexcept;

} // namespace vx
