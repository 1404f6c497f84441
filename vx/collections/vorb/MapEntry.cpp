#include "vx/collections/vorb/MapEntry.h"

#include "vx/Exceptions.h"
#include "vx/collections/vorb/HashMapEntry.h"
#include "vx/detail/StringLocks.h"

namespace vx::collections::vorb {

const MapEntry& MapEntry::of(const IVXUnknown* element)
{
    // The usual class, for which no search through its bases is needed.
    if (element != nullptr && vx::detail::isExactly<HashMapEntry>(*element))
        return *static_cast<const HashMapEntry*>(dynamic_cast<const void*>(element));
    const auto* entry = dynamic_cast<const MapEntry*>(element);
    if (entry == nullptr)
        throw CastFailedException();
    return *entry;
}

Reference<MapEntry> MapEntry::of(Reference<IVXUnknown> element)
{
    Reference<MapEntry> entry;
    entry.attach(const_cast<MapEntry*>(&of(element.get())));
    (void)element.detach(); // the reference now belongs to the other view
    return entry;
}

} // namespace vx::collections::vorb
