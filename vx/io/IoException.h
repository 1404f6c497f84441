#pragma once

#include "vx/Exception.h"

namespace vx::io {

/// A stream that fails.
class VX_API IoException : public Exception {
public:
    using Exception::Exception;
    ~IoException() noexcept override;
};

/// A read that has waited for as long as it may. The stream is as it was.
class VX_API TimeoutException : public IoException {
public:
    using IoException::IoException;
    ~TimeoutException() noexcept override;
};

/// Structured data that ends too early. It is no IoException: the stream itself works.
class VX_API UnexpectedEOFException : public Exception {
public:
    using Exception::Exception;
    ~UnexpectedEOFException() noexcept override;
};

} // namespace vx::io
