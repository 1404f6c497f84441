#pragma once

#include "vx/util/BufferFace.h"
#include "vx/vorb/Boundary.h"

namespace vx::util {

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
    return vorb::atBoundary(out, [&] { return static_cast<const Owner&>(*this).getReadLock(); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::ReleaseReadLock() const
{
    return vorb::atBoundary([&] { static_cast<const Owner&>(*this).releaseReadLock(); });
}

template <class Interface, class Owner, class Unit>
std::int16_t BufferFace<Interface, Owner, Unit>::IsWritable() const
{
    return static_cast<const Owner&>(*this).isWritable() ? 1 : 0;
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::GetWriteLock(int minimumLength, Unit** out)
{
    return vorb::atBoundary(out, [&] { return static_cast<Owner&>(*this).getWriteLock(minimumLength); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::EnsureCapacity(int minimumLength, Unit** out)
{
    return vorb::atBoundary(out, [&] { return static_cast<Owner&>(*this).ensureCapacity(minimumLength); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::ReleaseWriteLock(int length)
{
    return vorb::atBoundary([&] { static_cast<Owner&>(*this).releaseWriteLock(length); });
}

template <class Interface, class Owner, class Unit>
std::int32_t BufferFace<Interface, Owner, Unit>::FreeExtra()
{
    return vorb::atBoundary([&] { static_cast<Owner&>(*this).freeExtra(); });
}

} // namespace vx::util
