#pragma once

#include "vx/collections/vorb/AbstractList.h"
#include "vx/util/RawArray.h"

namespace vx::collections::vorb {

/// A list in one array: constant time by index and at the end. It holds up to 0x3FFFFFFF elements, and throws
/// std::length_error beyond; a failed growth throws std::bad_alloc. Either leaves the list as it was.
///
/// `add` without an index disturbs no iterator, which then sees the new element at the end. The capacity grows by half
/// and never shrinks.
class VX_API ArrayList : public AbstractList {
public:
    ArrayList();
    explicit ArrayList(const IVXComparator* comparator);
    /// With the default comparator, whatever `other` has.
    explicit ArrayList(const Collection& other);
    ArrayList(const Collection& other, const IVXComparator* comparator);
    /// Shares the elements and the comparator.
    ArrayList(const ArrayList& other);
    ~ArrayList() noexcept(false) override;

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

private:
    void makeRoom();

    util::RawArray<IVXUnknown*> m_elements; ///< the first `m_size` of them counted
    int m_size = 0;
    int m_capacity = 0;
};

} // namespace vx::collections::vorb
