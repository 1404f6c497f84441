#pragma once

#include <string_view>

namespace vxsys {

/// "UTF-8", "UTF8" and "UTF_8" in upper or lower case.
constexpr bool isNameOfUtf8(const char16_t* name) noexcept
{
    constexpr std::u16string_view START = u"utf";
    for (const char16_t unit : START) {
        if ((*name | 0x20) != unit)
            return false;
        ++name;
    }
    if (*name == u'-' || *name == u'_')
        ++name;
    return name[0] == u'8' && name[1] == 0;
}

} // namespace vxsys
