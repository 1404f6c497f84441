#pragma once

#include "vx/Exception.h"

namespace vx::text::charset {

/// Input that is malformed for its encoding.
class VX_API InvalidCharacterException : public Exception {
public:
    using Exception::Exception;
    ~InvalidCharacterException() noexcept override;

    // Exception
    std::int32_t getResult() const override;
};

/// A well-formed character without a mapping, while substitution is off.
class VX_API UnmappableCharacterException : public Exception {
public:
    using Exception::Exception;
    ~UnmappableCharacterException() noexcept override;

    // Exception
    std::int32_t getResult() const override;
};

/// The description is the unknown name.
class VX_API UnknownEncodingException : public Exception {
public:
    using Exception::Exception;
    ~UnknownEncodingException() noexcept override;

    // Exception
    std::int32_t getResult() const override;
};

} // namespace vx::text::charset
