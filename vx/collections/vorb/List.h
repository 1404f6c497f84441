#pragma once

#include "vx/collections/vorb/Collection.h"
#include "vx/collections/vorb/ListIterator.h"

namespace vx::collections::vorb {

/// A collection whose order the caller decides, with indexes from 0. An index out of range throws RangeErrorException
/// and changes nothing.
class VX_API List : public virtual Collection {
public:
    using Collection::add;
    using Collection::addAll;
    using Collection::remove;

    virtual bool add(int index, IVXUnknown* element) = 0;
    /// True if `other` has elements.
    virtual bool addAll(int index, const Collection& other) = 0;
    virtual Reference<IVXUnknown> remove(int index) = 0;
    /// An iterator whose next element is the one at `index`, which may be the size.
    virtual Reference<ListIterator> createListIterator(int index) = 0;
    virtual Reference<ConstListIterator> createConstListIterator(int index) const = 0;
    /// A view of the elements from `from` up to, but not including, `to`. It is valid as long as this list changes only
    /// through the view.
    virtual Reference<List> createSubList(int from, int to) = 0;
    virtual Reference<const List> createSubList(int from, int to) const = 0;
    virtual Reference<IVXUnknown> get(int index) const = 0;
    /// -1 if there is none.
    virtual int indexOf(const IVXUnknown* element) const = 0;
    virtual int lastIndexOf(const IVXUnknown* element) const = 0;
    /// Returns the old element.
    virtual Reference<IVXUnknown> set(int index, IVXUnknown* element) = 0;

protected:
    ~List() = default;
};

} // namespace vx::collections::vorb
