#pragma once

#include <cstdint>
#include <cstring>

/// A 128-bit identifier of an interface or a class. The fields have the byte order of the machine. Only the text form
/// defines an order: the highest byte of each number comes first.
struct _GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};

static_assert(sizeof(_GUID) == 16, "an identifier crosses component borders as 16 bytes");

inline bool operator==(const _GUID& left, const _GUID& right) noexcept
{
    return std::memcmp(&left, &right, sizeof(_GUID)) == 0;
}
