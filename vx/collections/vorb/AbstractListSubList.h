#pragma once

#include "vx/collections/vorb/AbstractList.h"

#include <cstdint>

namespace vx::collections::vorb {

class ArrayList;

/// A live view of a part of a list, with its own size. After the list was changed other than through the view, operations
/// that reach the list throw an Exception without a message.
class VX_API AbstractListSubList : public AbstractList {
public:
    /// `from` and `to` are in range. The comparator is that of `parent`, on which the view keeps a reference.
    AbstractListSubList(AbstractList* parent, int from, int to);
    AbstractListSubList(const AbstractListSubList&) = delete;
    ~AbstractListSubList() noexcept(false) override;

    using AbstractList::add;
    using AbstractList::remove;

    // Collection
    bool addAll(const Collection& other) override;
    void clear() override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;
    bool retainAll(const Collection& other) override;

    // List
    bool add(int index, IVXUnknown* element) override;
    bool addAll(int index, const Collection& other) override;
    Reference<IVXUnknown> remove(int index) override;
    Reference<ListIterator> createListIterator(int index) override;
    Reference<ConstListIterator> createConstListIterator(int index) const override;
    Reference<IVXUnknown> get(int index) const override;
    Reference<IVXUnknown> set(int index, IVXUnknown* element) override;

private:
    class SubListIterator;

    /// The list that stores the elements, if it is an ArrayList and all views up to it are valid. `offset` becomes the
    /// index of the first element.
    ArrayList* findStorage(int& offset) noexcept;
    void check() const;
    /// Records changes of the storage, one for each of `count` elements that are new, or that are gone if it is negative.
    void storageChanged(int count) noexcept;
    /// Records a change through this view, which now has `change` elements more.
    void changed(int change) noexcept;
    /// Undoes `changed(-1)`.
    void unchanged() noexcept;

    Reference<AbstractList> m_parent;
    std::uint32_t m_expectedCount;
    int m_offset;
    int m_size;
};

} // namespace vx::collections::vorb
