#pragma once

#include "vx/collections/vorb/AbstractList.h"
#include "vxsys/Memory.h"

#include <list>

namespace vx::collections::vorb {

/// A list of nodes: constant time at the end and for a step of an iterator, but a walk from the front to reach an index.
/// It holds up to 0x3FFFFFFF elements, and throws std::length_error beyond; where memory is short it throws
/// std::bad_alloc. Either leaves the list as it was.
///
/// `add` without an index disturbs no iterator, which then sees the new element at the end.
class VX_API LinkedList : public AbstractList {
public:
    LinkedList();
    explicit LinkedList(const IVXComparator* comparator);
    /// With the default comparator, whatever `other` has.
    explicit LinkedList(const Collection& other);
    LinkedList(const Collection& other, const IVXComparator* comparator);
    /// Shares the elements and the comparator.
    LinkedList(const LinkedList& other);
    ~LinkedList() noexcept(false) override;

    using AbstractList::remove;

    // Collection
    bool add(IVXUnknown* element) override;
    void clear() override;
    int getSize() const override;

    // List
    bool add(int index, IVXUnknown* element) override;
    Reference<IVXUnknown> remove(int index) override;
    Reference<IVXUnknown> get(int index) const override;
    Reference<IVXUnknown> set(int index, IVXUnknown* element) override;

protected:
    AbstractListIterator* newIterator(int index) override;

private:
    using Nodes = std::list<Reference<IVXUnknown>, vxsys::Allocator<Reference<IVXUnknown>>>;
    class NodeIterator;

    /// `index` is in range, the size included. Always walks from the front.
    Nodes::iterator internalGet(int index);
    Nodes::const_iterator internalGet(int index) const;
    Nodes::iterator link(Nodes::iterator place, IVXUnknown* element);
    Reference<IVXUnknown> unlink(Nodes::iterator node);
    Reference<IVXUnknown> replace(Nodes::iterator node, IVXUnknown* element);

    Nodes m_nodes;
};

} // namespace vx::collections::vorb
