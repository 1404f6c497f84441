#pragma once

#include <cstddef>
#include <string_view>

namespace vxsys::detail {

/// The name of the file of a named object: `kind`, "-" and the object's name, in which each byte but letters, digits,
/// "_", "." and "-" is written as "%" with two digits. A name that becomes too long is cut and continues with "~" and its
/// digest. So each name has one file, two names have two, and no name leads out of a folder.
class ObjectName {
public:
    /// With the terminator.
    static constexpr std::size_t SIZE = 256;

    ObjectName(char kind, std::string_view name) noexcept;

    const char* get() const noexcept { return m_text; }

private:
    void append(char character) noexcept;
    void appendHex(unsigned char byte) noexcept;

    char m_text[SIZE] = "";
    std::size_t m_length = 0;
};

} // namespace vxsys::detail
