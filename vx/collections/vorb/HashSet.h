#pragma once

#include "vx/collections/vorb/AbstractSet.h"
#include "vx/collections/vorb/HashMap.h"

namespace vx::collections::vorb {

/// The keys of a `HashMap` of its own, whose order and growth are the set's.
class VX_API HashSet : public AbstractSet {
public:
    HashSet();
    /// `comparator` is not null.
    explicit HashSet(const IVXComparator* comparator);
    /// With the default comparator, whatever `other` has.
    explicit HashSet(const Collection& other);
    HashSet(const Collection& other, const IVXComparator* comparator);
    /// Comparator, capacity and elements are those of `other`.
    HashSet(const HashSet& other);
    ~HashSet() noexcept(false) override;

    // Collection
    /// False for an element that is there already; the one in the set stays.
    bool add(IVXUnknown* element) override;
    void clear() override;
    bool contains(const IVXUnknown* element) const override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;
    bool remove(const IVXUnknown* element) override;

    // Object, Collection
    /// Throws CastFailedException for an `other` that is no HashSet, and so does `equals`.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    /// 0.
    std::uint32_t hashCode() const override;

private:
    Reference<HashMap> m_map;
};

} // namespace vx::collections::vorb
