#pragma once

#include "vx/IVXComparator.h"
#include "vx/Object.h"
#include "vx/collections/vorb/Collection.h"

namespace vx::collections::vorb {

/// Implements all operations of a collection with its iterators. A derived class supplies the iterators and the size,
/// and `add` if it stores elements.
class VX_API AbstractCollection : public Object, public virtual Collection {
public:
    VX_OBJECT_UNKNOWN(Object)

    ~AbstractCollection() noexcept(false) override;

    // Collection
    /// Throws UnsupportedOperationException.
    bool add(IVXUnknown* element) override;
    /// A list that is added to itself gets each of its present elements once more; a set stays as it is. A sublist
    /// throws the Exception of a changed list, because its own iterator notices the first addition.
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

    /// Equality according to the comparator.
    bool elementsEqual(const IVXUnknown* stored, const IVXUnknown* other) const;

private:
    Reference<const IVXComparator> m_comparator;
};

} // namespace vx::collections::vorb
