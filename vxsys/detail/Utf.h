#pragma once

#include <cstddef>
#include <string_view>

namespace vxsys::detail {

enum class Outcome {
    done,
    noRoom,
    /// A lone surrogate, or bytes that are not UTF-8 (RFC 3629).
    badText
};

struct Conversion {
    Outcome outcome;
    /// The number of units in the target, also if the conversion stopped early. They are not terminated.
    std::size_t written;
};

/// Convert between the text of the library and that of the operating system. `size` is the room in `target`.
Conversion utf16ToUtf8(std::u16string_view source, char* target, std::size_t size) noexcept;
Conversion utf8ToUtf16(std::string_view source, char16_t* target, std::size_t size) noexcept;

} // namespace vxsys::detail
