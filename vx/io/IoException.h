#pragma once

#include "vx/Exception.h"

namespace vx::io {

/// The failure of a stream.
class VX_API IoException : public Exception {
public:
    using Exception::Exception;
    ~IoException() noexcept override;
};

/// A read that exceeded its time limit. The stream is unchanged.
class VX_API TimeoutException : public IoException {
public:
    using IoException::IoException;
    ~TimeoutException() noexcept override;
};

/// Structured data that ends too early. Not an IoException, because the stream itself works.
class VX_API UnexpectedEOFException : public Exception {
public:
    using Exception::Exception;
    ~UnexpectedEOFException() noexcept override;
};

} // namespace vx::io
