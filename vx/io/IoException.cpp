#include "vx/io/IoException.h"

namespace vx::io {

IoException::~IoException() noexcept = default;
TimeoutException::~TimeoutException() noexcept = default;
UnexpectedEOFException::~UnexpectedEOFException() noexcept = default;

} // namespace vx::io
