#pragma once

#include "vx/collections/vorb/AbstractCollection.h"
#include "vx/collections/vorb/List.h"

#include <cstdint>

namespace vx::collections::vorb {

class AbstractListIterator;
class AbstractListSubList;

/// Everything of a list but its storage. Iterators and sublists notice changes behind them by a count of modifications,
/// to which the storing class adds exactly 1 in each `add` with an index, `remove` with an index, and `set`.
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

    // Object, Collection: by the elements in their order
    /// Throws CastFailedException for an `other` that is no List.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;

protected:
    AbstractList();
    explicit AbstractList(const IVXComparator* comparator);
    /// Shares the comparator and counts from 0.
    AbstractList(const AbstractList& other);

    int compareToList(const List& other) const;

    /// A new iterator at `index`, which is in range: what all the ways to create one come down to.
    virtual AbstractListIterator* newIterator(int index);

    /// Unsigned, since it comes around in a list that lives long.
    std::uint32_t m_modificationCount = 0;

private:
    friend class AbstractListIterator;
    friend class AbstractListSubList;
};

} // namespace vx::collections::vorb
