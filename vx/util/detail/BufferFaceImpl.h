#pragma once

#include "vx/util/detail/BufferFace.h"
#include "vx/util/detail/StoredBuffer.h"
#include "vx/vorb/Boundary.h"

namespace vx::util::detail {

/// Whether the view itself answers a write operation with RESULT_NOT_IMPLEMENTED. It does so for the read-only buffers: if
/// they overrode the operation of the view, the class would get one more slot.
template <class Unit, class Owner>
bool refusesWriting(const Owner& owner)
{
    return !owner.isWritable() && dynamic_cast<const ROBuffer<Owner, Unit>*>(&owner) != nullptr;
}

template <class Interface, class Owner, class Unit>
int BufferFace<Interface, Owner, Unit>::GetLength() const
{
    return static_cast<const Owner&>(*this).getLength();
}

template <class Interface, class Owner, class Unit>
const Unit* BufferFace<Interface, Owner, Unit>::GetData() const
{
    return static_cast<const Owner&>(*this).getData();
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::GetReadLock(const Unit** out) const
{
    return vx::vorb::atBoundary(out, [&] { return static_cast<const Owner&>(*this).getReadLock(); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::ReleaseReadLock() const
{
    return vx::vorb::atBoundary([&] { static_cast<const Owner&>(*this).releaseReadLock(); });
}

template <class Interface, class Owner, class Unit>
std::int16_t BufferFace<Interface, Owner, Unit>::IsWritable() const
{
    return static_cast<const Owner&>(*this).isWritable() ? 1 : 0;
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::GetWriteLock(int minimumLength, Unit** out)
{
    auto& owner = static_cast<Owner&>(*this);
    if (out != nullptr && refusesWriting<Unit>(owner)) {
        *out = nullptr;
        return RESULT_NOT_IMPLEMENTED;
    }
    return vx::vorb::atBoundary(out, [&] { return owner.getWriteLock(minimumLength); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::EnsureCapacity(int minimumLength, Unit** out)
{
    auto& owner = static_cast<Owner&>(*this);
    if (out != nullptr && refusesWriting<Unit>(owner)) {
        *out = nullptr;
        return RESULT_NOT_IMPLEMENTED;
    }
    return vx::vorb::atBoundary(out, [&] { return owner.ensureCapacity(minimumLength); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::ReleaseWriteLock(int length)
{
    auto& owner = static_cast<Owner&>(*this);
    if (refusesWriting<Unit>(owner))
        return RESULT_NOT_IMPLEMENTED;
    return vx::vorb::atBoundary([&] { owner.releaseWriteLock(length); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::FreeExtra()
{
    return vx::vorb::atBoundary([&] { static_cast<Owner&>(*this).freeExtra(); });
}

} // namespace vx::util::detail
