#pragma once

#include <cstddef>
#include <string_view>

namespace vxsys::detail {

/// The file name of a named object: `kind`, "-" and the name of the object. Each byte except letters, digits, "_", "."
/// and "-" is written as "%" and two digits. A name that becomes too long is cut and ends with "~" and its digest. So
/// each object has one file name, two objects have different ones, and no name is a path to another folder.
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
