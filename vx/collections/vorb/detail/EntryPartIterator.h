#pragma once

#include "vx/ComObject.h"
#include "vx/collections/vorb/Iterator.h"
#include "vx/collections/vorb/MapEntry.h"

#include <utility>

namespace vx::collections::vorb::detail {

/// One part of each entry, `MapEntry::getKey` or `MapEntry::getValue`, over an iterator of an entry set.
template <Reference<IVXUnknown> (MapEntry::*part)() const>
class EntryPartIterator : public ComObject, public virtual Iterator {
public:
    explicit EntryPartIterator(Reference<Iterator> entries)
        : m_entries(std::move(entries))
    {
    }
    EntryPartIterator(const EntryPartIterator&) = delete;

    VX_OBJECT_UNKNOWN(ComObject)

    // Iterator
    bool hasNext() override { return m_entries->hasNext(); }
    Reference<IVXUnknown> next() override { return (*MapEntry::of(m_entries->next()).*part)(); }
    void remove() override { m_entries->remove(); }

private:
    Reference<Iterator> m_entries;
};

} // namespace vx::collections::vorb::detail
