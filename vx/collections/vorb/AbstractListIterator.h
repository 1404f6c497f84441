#pragma once

#include "vx/ComObject.h"
#include "vx/collections/vorb/AbstractList.h"
#include "vx/collections/vorb/ListIterator.h"

#include <cstdint>

namespace vx::collections::vorb {

/// Walks a list by index, through the list's own operations. It keeps a reference on the list.
class VX_API AbstractListIterator : public ComObject, public virtual ListIterator {
public:
    /// `cursor` is the index of the next element, in range.
    AbstractListIterator(AbstractList* list, int cursor);
    AbstractListIterator(const AbstractListIterator&) = delete;
    AbstractListIterator& operator=(const AbstractListIterator&) = delete;
    ~AbstractListIterator() noexcept(false) override;

    VX_OBJECT_UNKNOWN(ComObject)

    // ConstIterator
    bool hasNext() override;
    Reference<IVXUnknown> next() override;

    // Iterator
    void remove() override;

    // ConstListIterator
    bool hasPrevious() override;
    Reference<IVXUnknown> previous() override;
    int nextIndex() override;
    int previousIndex() override;

    // ListIterator
    void add(IVXUnknown* element) override;
    void set(IVXUnknown* element) override;

protected:
    // These access the list. A list that has something faster than its operations by index overrides all four. The last
    // two return the old element, so that it is released only after the iterator has recorded the change.
    virtual Reference<IVXUnknown> elementAt(int index);
    virtual bool addAt(int index, IVXUnknown* element);
    virtual Reference<IVXUnknown> removeAt(int index);
    virtual Reference<IVXUnknown> setAt(int index, IVXUnknown* element);

    /// Throws if the list was changed other than through this iterator.
    void check() const
    {
        if (m_expectedCount != m_list->m_modificationCount)
            throwChanged();
    }

    int m_cursor;
    int m_last = -1; ///< the element that the last step gave, -1 if none

private:
    void checkLast() const;
    [[noreturn]] static void throwChanged();

    Reference<AbstractList> m_list;
    std::uint32_t m_expectedCount;
};

} // namespace vx::collections::vorb
