#include "vx/io/NullOutputStream.h"

namespace vx::io {

void NullOutputStream::write(const signed char*, std::int32_t) { }

void NullOutputStream::write(signed char) { }

void NullOutputStream::flush() { }

void NullOutputStream::close() { }

} // namespace vx::io
