#pragma once

#include <cstdint>
#include <string>

namespace vx::util::detail {

/// Appends the whole content of a file. After a failure `bytes` has what was read until then.
std::int32_t readFile(const char16_t* path, std::string& bytes);

} // namespace vx::util::detail
