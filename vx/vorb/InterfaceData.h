#pragma once

#include "vx/Api.h"
#include "vxsys/Guid.h"

#include <cstddef>
#include <cstdint>

namespace vx {
class ComObject;
}

namespace vx::vorb {

/// The function of a row of an interface map: stores an interface in `*out`, with a reference for the caller, and
/// returns 0, or fails.
using InterfaceFunction = std::int32_t (*)(ComObject* object, const _GUID& iid, void** out, std::uintptr_t data);

/// The `func` of a row that holds only an offset. It is compared, never called.
inline InterfaceFunction displacementMarker() noexcept
{
    return reinterpret_cast<InterfaceFunction>(std::uintptr_t {1});
}

/// One row of a class's interface map, a constant table that ends with a row whose `func` is null.
struct InterfaceData {
    const _GUID* iid; ///< null matches every identifier
    InterfaceFunction func;
    std::uintptr_t data; ///< bytes from the object to its view, or a word for the function
};

/// Looks `iid` up in `map`, row by row. A row with an identifier ends the search if it fails; one that matches every
/// identifier does not. `IVXUnknown` is answered before any row. A null `map` has no rows, a null `object` no
/// interface.
VX_API std::int32_t QueryInterfaceMap(const InterfaceData* map, ComObject* object, const _GUID& iid, void** out);

/// The row for interface `View` of `Class`, whose first base leads to `ComObject`.
template <class Class, class View>
InterfaceData viewRow() noexcept
{
    constexpr std::uintptr_t somewhere = 0x1000; // any aligned address: only the difference counts
    const auto view = reinterpret_cast<std::uintptr_t>(static_cast<View*>(reinterpret_cast<Class*>(somewhere)));
    return {&View::IID, displacementMarker(), view - somewhere};
}

/// The row that continues with the table of `Base`.
template <class Base>
InterfaceData forwardRow() noexcept
{
    return {nullptr,
        [](ComObject* object, const _GUID& iid, void** out, std::uintptr_t) {
            return QueryInterfaceMap(Base::GetComIntfMap(), object, iid, out);
        },
        0};
}

inline InterfaceData endRow() noexcept
{
    return {nullptr, nullptr, 0};
}

} // namespace vx::vorb

/// The root operations of a class that joins an interface to `Base`: they answer for every `IVXUnknown` in the object.
/// The class declares a static `GetComIntfMap()`.
#define VX_OBJECT_UNKNOWN(Base)                                                                                        \
    std::int32_t QueryInterface(const _GUID& iid, void** out) override                                                 \
    {                                                                                                                  \
        return ::vx::vorb::QueryInterfaceMap(GetComIntfMap(), this, iid, out);                                         \
    }                                                                                                                  \
    std::uint32_t AddRef() const override                                                                              \
    {                                                                                                                  \
        return Base::AddRef();                                                                                         \
    }                                                                                                                  \
    std::uint32_t Release() const override                                                                             \
    {                                                                                                                  \
        return Base::Release();                                                                                        \
    }
