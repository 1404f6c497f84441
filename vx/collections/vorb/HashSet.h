#pragma once

#include "vx/collections/vorb/AbstractSet.h"
#include "vx/collections/vorb/HashMap.h"

namespace vx::collections::vorb {

/// A set that stores its elements as the keys of a `HashMap`, with the order and growth of that map.
class VX_API HashSet : public AbstractSet {
public:
    HashSet();
    /// `comparator` is not null.
    explicit HashSet(const IVXComparator* comparator);
    /// With the default comparator, whichever one `other` has.
    explicit HashSet(const Collection& other);
    HashSet(const Collection& other, const IVXComparator* comparator);
    /// Comparator, capacity and elements are those of `other`.
    HashSet(const HashSet& other);
    ~HashSet() noexcept(false) override;

    // Collection
    /// Returns false if the set has an equal element, which it keeps.
    bool add(IVXUnknown* element) override;
    void clear() override;
    bool contains(const IVXUnknown* element) const override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;
    bool remove(const IVXUnknown* element) override;

    // Object, Collection
    /// Like `equals`, throws CastFailedException for an `other` that is no HashSet.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    /// 0.
    std::uint32_t hashCode() const override;

private:
    friend class ArrayList;

    Reference<HashMap> m_map;
};

} // namespace vx::collections::vorb
