#pragma once

#include <cstdint>
#include <cstdio>

namespace vx::io::detail {

/// Throws IoException with `message` if the stream has failed, and clears the error so that the next operation can try
/// again.
void checkStream(std::FILE* stream, const char16_t* message);

/// The next byte, or EOF. A signal does not end the wait for it.
int readByte(std::FILE* stream);

// Common operations of the two output streams over the C library.
void writeByte(std::FILE* stream, signed char byte);
void writeBytes(std::FILE* stream, const signed char* bytes, std::int32_t length);
void flushStream(std::FILE* stream);

} // namespace vx::io::detail
