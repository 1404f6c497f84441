#include "vx/text/charset/CharsetException.h"

#include "vx/Result.h"

namespace vx::text::charset {

InvalidCharacterException::~InvalidCharacterException() noexcept = default;

std::int32_t InvalidCharacterException::getResult() const
{
    return RESULT_INVALID_CHARACTER;
}

UnmappableCharacterException::~UnmappableCharacterException() noexcept = default;

std::int32_t UnmappableCharacterException::getResult() const
{
    return RESULT_UNMAPPABLE_CHARACTER;
}

UnknownEncodingException::~UnknownEncodingException() noexcept = default;

std::int32_t UnknownEncodingException::getResult() const
{
    return RESULT_UNKNOWN_ENCODING;
}

} // namespace vx::text::charset
