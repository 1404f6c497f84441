#pragma once

#include "vx/collections/detail/Failures.h"
#include "vx/collections/vorb/AbstractList.h"
#include "vx/detail/RawArray.h"
#include "vxsys/Memory.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <vector>

namespace vx::collections::vorb {

/// A list in one array: constant time by index and at the end. It holds up to 0x3FFFFFFF elements. One more throws
/// std::length_error, exhausted memory std::bad_alloc; both leave the list as it was.
///
/// `add` without an index leaves iterators valid; they will reach the new element at the end. The capacity grows by
/// half and never shrinks.
class VX_API ArrayList : public AbstractList {
public:
    ArrayList();
    explicit ArrayList(const IVXComparator* comparator);
    /// With the default comparator, whichever one `other` has.
    explicit ArrayList(const Collection& other);
    ArrayList(const Collection& other, const IVXComparator* comparator);
    /// Shares the elements and the comparator.
    ArrayList(const ArrayList& other);
    ~ArrayList() noexcept(false) override;

    using AbstractList::addAll;

    // Collection
    bool add(IVXUnknown* element) override;
    void clear() override;
    bool contains(const IVXUnknown* element) const override;
    bool remove(const IVXUnknown* element) override;
    bool retainAll(const Collection& other) override;
    int getSize() const override;

    // List
    bool add(int index, IVXUnknown* element) override;
    bool addAll(int index, const Collection& other) override;
    Reference<IVXUnknown> remove(int index) override;
    Reference<IVXUnknown> get(int index) const override;
    Reference<IVXUnknown> set(int index, IVXUnknown* element) override;
    int indexOf(const IVXUnknown* element) const override;
    int lastIndexOf(const IVXUnknown* element) const override;

    class Look;
    /// For a range-for, whose elements are `IVXUnknown*` without a reference added: each is valid as long as it stays
    /// in the list. As with iterators, a change of the list, other than at the end, is noticed at the next element.
    Look begin() const noexcept;
    Look end() const noexcept;

protected:
    AbstractListIterator* newIterator(int index) override;

private:
    friend class AbstractListSubList;
    class ArrayIterator;

    using Elements = std::vector<Reference<IVXUnknown>, vxsys::Allocator<Reference<IVXUnknown>>>;

    /// Whether `other` is of a class that cannot reach this list while its elements are read.
    bool isApartFrom(const Collection& other) const noexcept;
    static Elements elementsOf(const Collection& other);
    /// As `addAll`, for a new list.
    void append(const Collection& other);

    // These move the rest of the list once. Each element counts as one modification. The caller releases the elements
    // that were taken after it has recorded the change.
    void insert(int index, Elements& elements);
    /// As `insert`, but counts no modification.
    void place(int index, Elements& elements);
    Elements take(int from, int to);
    /// Takes the elements from `from` on that `other` does not contain, up to `to`, or to the end if `to` is negative.
    /// If that fails, `failure` is set, and the elements before the failure are taken.
    Elements takeForeign(int from, int to, const Collection& other, std::exception_ptr& failure);

    void makeRoom(int count = 1);
    /// The index of the first element equal to `element`, from `index` on in steps of 1 or -1; -1 if there is none.
    int find(const IVXUnknown* element, int index, int step) const;

    vx::detail::RawArray<IVXUnknown*> m_elements; ///< references are kept on the first `m_size` of them
    int m_size = 0;
    int m_capacity = 0;
};

/// A position in an ArrayList, which must outlive it.
class ArrayList::Look {
public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; // it gives no reference to a stored pointer
    using difference_type = std::ptrdiff_t;
    using value_type = IVXUnknown*;
    using reference = IVXUnknown*;
    using pointer = void;

    /// The end of any list.
    Look() noexcept = default;

    IVXUnknown* operator*() const
    {
        if (m_expectedCount != m_list->m_modificationCount)
            collections::detail::throwChanged();
        return m_list->m_elements[m_index];
    }
    Look& operator++() noexcept
    {
        ++m_index;
        return *this;
    }
    Look operator++(int) noexcept
    {
        const Look before = *this;
        ++m_index;
        return before;
    }

    /// The end moves with the size of the list.
    bool operator==(const Look& other) const noexcept
    {
        return m_list != nullptr && other.m_list != nullptr ? m_index == other.m_index : isAtEnd() == other.isAtEnd();
    }
    bool operator==(std::default_sentinel_t) const noexcept { return isAtEnd(); }
    operator std::default_sentinel_t() const noexcept { return {}; }

private:
    friend class ArrayList;

    explicit Look(const ArrayList* list) noexcept
        : m_list(list)
        , m_expectedCount(list->m_modificationCount)
    {
    }

    bool isAtEnd() const noexcept { return m_list == nullptr || m_index >= m_list->m_size; }

    const ArrayList* m_list = nullptr;
    std::uint32_t m_expectedCount = 0;
    int m_index = 0;
};

inline ArrayList::Look ArrayList::begin() const noexcept
{
    return Look(this);
}

inline ArrayList::Look ArrayList::end() const noexcept
{
    return {};
}

} // namespace vx::collections::vorb
