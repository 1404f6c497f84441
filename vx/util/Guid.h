#pragma once

#include "vx/String.h"
#include "vxsys/Component.h"

#include <compare>
#include <iosfwd>

namespace vx::util {

/// A 128-bit identifier as a value. It can be used wherever a `_GUID` is expected.
class VX_API Guid {
public:
    /// All bytes 0.
    Guid() noexcept = default;
    Guid(const _GUID& guid) noexcept
        : m_guid(guid)
    {
    }
    /// The form {00000000-0000-0000-C000-000000000046}. Throws Exception "invalid GUID string".
    Guid(const char16_t* text);
    Guid& operator=(const _GUID& guid) noexcept
    {
        m_guid = guid;
        return *this;
    }

    /// A new random identifier (RFC 4122, version 4), which the caller deletes; null when memory is exhausted.
    static Guid* Generate();

    operator const _GUID&() const noexcept { return m_guid; }

    /// The text form, with digits in upper case.
    String toString() const;

    /// Compares the fields in their order. Returns -1, 0 or 1.
    static int compare(const Guid& left, const Guid& right) noexcept
    {
        return VXComCompareGUID(&left.m_guid, &right.m_guid);
    }

    friend bool operator==(const Guid& left, const Guid& right) noexcept { return compare(left, right) == 0; }
    friend bool operator==(const Guid& left, const _GUID& right) noexcept { return compare(left, right) == 0; }
    friend std::strong_ordering operator<=>(const Guid& left, const Guid& right) noexcept
    {
        return compare(left, right) <=> 0;
    }
    friend std::strong_ordering operator<=>(const Guid& left, const _GUID& right) noexcept
    {
        return compare(left, right) <=> 0;
    }

private:
    _GUID m_guid {};
};

static_assert(sizeof(Guid) == sizeof(_GUID));

/// Writes the text form.
VX_API std::ostream& operator<<(std::ostream& stream, const Guid& guid);

} // namespace vx::util
