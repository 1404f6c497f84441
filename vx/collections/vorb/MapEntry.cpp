#include "vx/collections/vorb/MapEntry.h"

#include "vx/Exceptions.h"

namespace vx::collections::vorb {

const MapEntry& MapEntry::of(const IVXUnknown* element)
{
    const auto* entry = dynamic_cast<const MapEntry*>(element);
    if (entry == nullptr)
        throw CastFailedException();
    return *entry;
}

Reference<MapEntry> MapEntry::of(const Reference<IVXUnknown>& element)
{
    return Reference<MapEntry>(const_cast<MapEntry*>(&of(element.get())));
}

} // namespace vx::collections::vorb
