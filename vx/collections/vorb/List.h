#pragma once

#include "vx/collections/vorb/Collection.h"
#include "vx/collections/vorb/ListIterator.h"

namespace vx::collections::vorb {

/// A collection in an order of the caller's, counted from 0. An index out of range throws RangeErrorException and changes
/// nothing.
class VX_API List : public virtual Collection {
public:
    using Collection::add;
    using Collection::addAll;
    using Collection::remove;

    virtual bool add(int index, IVXUnknown* element) = 0;
    /// True if `other` held anything.
    virtual bool addAll(int index, const Collection& other) = 0;
    virtual Reference<IVXUnknown> remove(int index) = 0;
    /// An iterator whose next element is the one at `index`, which may be the size.
    virtual Reference<ListIterator> createListIterator(int index) = 0;
    virtual Reference<ConstListIterator> createConstListIterator(int index) const = 0;
    /// A live view of the elements from `from` up to and without `to`. It holds for as long as this list changes through
    /// the view alone.
    virtual Reference<List> createSubList(int from, int to) = 0;
    virtual Reference<const List> createSubList(int from, int to) const = 0;
    virtual Reference<IVXUnknown> get(int index) const = 0;
    /// -1 where there is none.
    virtual int indexOf(const IVXUnknown* element) const = 0;
    virtual int lastIndexOf(const IVXUnknown* element) const = 0;
    /// Gives back what was there.
    virtual Reference<IVXUnknown> set(int index, IVXUnknown* element) = 0;

protected:
    ~List() = default;
};

} // namespace vx::collections::vorb
