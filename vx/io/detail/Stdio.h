#pragma once

#include <cstdint>
#include <cstdio>

namespace vx::io::detail {

/// Throws IoException with `message` when the stream has failed, and lets the next operation try again.
void checkStream(std::FILE* stream, const char16_t* message);

// What the two output streams of the C library do.
void writeByte(std::FILE* stream, signed char byte);
void writeBytes(std::FILE* stream, const signed char* bytes, std::int32_t length);
void flushStream(std::FILE* stream);

} // namespace vx::io::detail
