#pragma once

#include "vx/IVXComparator.h"
#include "vx/Object.h"
#include "vx/collections/vorb/Collection.h"

namespace vx::collections::vorb {

/// Everything that a collection can do by its iterators alone. A class of its own gives the iterators and the size, and
/// `add` if it stores.
class VX_API AbstractCollection : public Object, public virtual Collection {
public:
    VX_OBJECT_UNKNOWN(Object)

    ~AbstractCollection() noexcept(false) override;

    // Collection
    /// Throws UnsupportedOperationException.
    bool add(IVXUnknown* element) override;
    /// A list that is added to itself gets each element that it has at the call once more, and a set stays as it is. A
    /// sublist throws the Exception of a changed list: its own iterator notices the first addition.
    bool addAll(const Collection& other) override;
    void clear() override;
    bool contains(const IVXUnknown* element) const override;
    bool containsAll(const Collection& other) const override;
    bool remove(const IVXUnknown* element) override;
    bool removeAll(const Collection& other) override;
    bool retainAll(const Collection& other) override;

    // Object, Collection: by address
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;

    /// Not counted.
    const IVXComparator* getComparator() const noexcept { return m_comparator.get(); }

protected:
    /// With the default comparator.
    AbstractCollection();
    /// `comparator` is not null.
    explicit AbstractCollection(const IVXComparator* comparator);
    /// Shares the comparator.
    AbstractCollection(const AbstractCollection& other);
    AbstractCollection& operator=(const AbstractCollection&) = delete;

    /// Equality as the comparator has it.
    bool elementsEqual(const IVXUnknown* stored, const IVXUnknown* other) const;

private:
    Reference<const IVXComparator> m_comparator;
};

} // namespace vx::collections::vorb
