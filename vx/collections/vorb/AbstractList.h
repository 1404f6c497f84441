#pragma once

#include "vx/collections/vorb/AbstractCollection.h"
#include "vx/collections/vorb/List.h"

#include <cstdint>

namespace vx::collections::vorb {

class AbstractListIterator;
class AbstractListSubList;

/// Implements a list apart from its storage. Iterators and sublists notice other changes by a modification count, to
/// which the derived class adds exactly 1 in each `add` with an index, `remove` with an index, and `set`.
class VX_API AbstractList : public AbstractCollection, public virtual List {
public:
    ~AbstractList() noexcept(false) override;

    using AbstractCollection::addAll;
    using AbstractCollection::remove;

    // Collection
    bool add(IVXUnknown* element) override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;

    // List
    bool add(int index, IVXUnknown* element) override = 0;
    bool addAll(int index, const Collection& other) override;
    Reference<IVXUnknown> remove(int index) override = 0;
    Reference<ListIterator> createListIterator(int index) override;
    Reference<ConstListIterator> createConstListIterator(int index) const override;
    Reference<List> createSubList(int from, int to) override;
    Reference<const List> createSubList(int from, int to) const override;
    int indexOf(const IVXUnknown* element) const override;
    int lastIndexOf(const IVXUnknown* element) const override;

    // Object, Collection: compare the elements in their order
    /// Throws CastFailedException for an `other` that is no List.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;

protected:
    AbstractList();
    explicit AbstractList(const IVXComparator* comparator);
    /// Shares the comparator. The modification count starts at 0.
    AbstractList(const AbstractList& other);

    int compareToList(const List& other) const;

    /// A new iterator at `index`, which is in range. All operations that create an iterator call this one.
    virtual AbstractListIterator* newIterator(int index);

    /// Unsigned, since it may wrap around in a list that lives long.
    std::uint32_t m_modificationCount = 0;

private:
    friend class AbstractListIterator;
    friend class AbstractListSubList;
};

} // namespace vx::collections::vorb
