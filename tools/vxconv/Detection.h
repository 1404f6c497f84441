#pragma once

#include "common/Input.h"

#include <cstdint>
#include <string>

namespace vxconv {

/// What `-f auto` finds out about an input.
struct Detected {
    std::string encoding;
    std::int64_t start; ///< the length of the byte order mark, which is not part of the text
};

/// The encoding of a byte order mark; otherwise UTF-8 if the whole input is UTF-8; otherwise `fallback`, but an input
/// with a byte that is zero is refused then. Afterwards the input is read from `start` on. An input that cannot be read
/// twice, such as a pipe, is first copied to a temporary file. Throws Failure.
Detected detectEncoding(const vxtools::Input& input, const std::string& fallback);

} // namespace vxconv
