#pragma once

#include "vx/String.h"

#include <vector>

namespace vx::text::charset {

/// An encoding with all its names.
struct EncodingNames {
    String name; ///< the canonical one
    std::vector<String> aliases; ///< in upper case
};

/// The encodings that have converters in the library, and those for which the library knows that components exist,
/// whether or not one is registered. The aliases are those of the library and of the IANA registry of character sets.
VX_API std::vector<EncodingNames> getEncodingNames();

} // namespace vx::text::charset
