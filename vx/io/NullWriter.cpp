#include "vx/io/NullWriter.h"

namespace vx::io {

void NullWriter::write(const String&) { }

void NullWriter::write(const char16_t*) { }

void NullWriter::write(const char16_t*, std::int32_t) { }

void NullWriter::write(char16_t) { }

void NullWriter::flush() { }

void NullWriter::close() { }

} // namespace vx::io
