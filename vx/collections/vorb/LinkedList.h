#pragma once

#include "vx/collections/vorb/AbstractList.h"
#include "vxsys/Memory.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>

namespace vx::collections::vorb {

/// A list of nodes: constant time at the end and for a step of an iterator, but a walk from the front to reach an index.
/// It holds up to 0x3FFFFFFF elements, and throws std::length_error beyond that, std::bad_alloc if memory is short. Either
/// leaves the list as it was.
///
/// `add` without an index leaves iterators valid; they will reach the new element at the end.
class VX_API LinkedList : public AbstractList {
public:
    LinkedList();
    explicit LinkedList(const IVXComparator* comparator);
    /// With the default comparator, whichever one `other` has.
    explicit LinkedList(const Collection& other);
    LinkedList(const Collection& other, const IVXComparator* comparator);
    /// Shares the elements and the comparator.
    LinkedList(const LinkedList& other);
    ~LinkedList() noexcept(false) override;

    // Collection
    bool add(IVXUnknown* element) override;
    void clear() override;
    bool contains(const IVXUnknown* element) const override;
    bool remove(const IVXUnknown* element) override;
    int getSize() const override;

    // List
    bool add(int index, IVXUnknown* element) override;
    Reference<IVXUnknown> remove(int index) override;
    Reference<IVXUnknown> get(int index) const override;
    Reference<IVXUnknown> set(int index, IVXUnknown* element) override;
    int indexOf(const IVXUnknown* element) const override;
    int lastIndexOf(const IVXUnknown* element) const override;

    class Look;
    /// For a range-for, whose elements are `const Reference<IVXUnknown>&`. As with iterators, a change of the list,
    /// other than at the end, is noticed at the next element.
    Look begin() const;
    Look end() const noexcept;

protected:
    AbstractListIterator* newIterator(int index) override;

private:
    using Nodes = std::list<Reference<IVXUnknown>, vxsys::Allocator<Reference<IVXUnknown>>>;
    class NodeIterator;
    struct Found {
        int index; ///< -1 if there is none
        Nodes::const_iterator node;
    };

    /// The first element equal to `element`.
    Found find(const IVXUnknown* element) const;
    /// `index` is in range, the size included. Always walks from the front.
    Nodes::iterator internalGet(int index);
    Nodes::const_iterator internalGet(int index) const;
    Nodes::iterator link(Nodes::iterator place, IVXUnknown* element);
    Reference<IVXUnknown> unlink(Nodes::iterator node);
    Reference<IVXUnknown> replace(Nodes::iterator node, IVXUnknown* element);

    Nodes m_nodes;
};

/// A position in a LinkedList, which must outlive it; the list may be on the stack.
class LinkedList::Look {
public:
    using iterator_concept = std::input_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = Reference<IVXUnknown>;
    using reference = const value_type&;
    using pointer = const value_type*;

    /// The end of any list.
    Look() noexcept = default;

    const value_type& operator*() const noexcept { return m_element; }
    const value_type* operator->() const noexcept { return &m_element; }
    Look& operator++()
    {
        ++m_index;
        take();
        return *this;
    }
    Look operator++(int)
    {
        Look before = *this;
        ++*this;
        return before;
    }

    friend bool operator==(const Look& left, const Look& right) noexcept
    {
        return left.m_isAtEnd == right.m_isAtEnd && (left.m_isAtEnd || left.m_index == right.m_index);
    }
    friend bool operator==(const Look& look, std::default_sentinel_t) noexcept { return look.m_isAtEnd; }
    operator std::default_sentinel_t() const noexcept { return {}; }

private:
    friend class LinkedList;

    explicit Look(const LinkedList& list)
        : m_list(&list)
        , m_expectedCount(list.m_modificationCount)
    {
        take();
    }

    VX_API void take();

    const LinkedList* m_list = nullptr;
    std::uint32_t m_expectedCount = 0;
    int m_index = 0;
    bool m_isAtEnd = true;
    Nodes::const_iterator m_node;
    Reference<IVXUnknown> m_element; ///< kept while the loop uses it
};

inline LinkedList::Look LinkedList::begin() const
{
    return Look(*this);
}

inline LinkedList::Look LinkedList::end() const noexcept
{
    return {};
}

} // namespace vx::collections::vorb
