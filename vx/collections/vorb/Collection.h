#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/detail/Walk.h"
#include "vx/collections/vorb/ConstIterator.h"
#include "vx/collections/vorb/Iterator.h"

#include <cstdint>
#include <iterator>

namespace vx::collections::vorb {

/// A group of components. It keeps a reference on each element; elements may be null. They are compared with the
/// collection's comparator only, whose failures are thrown as ResultException. Operations that a class does not support
/// throw UnsupportedOperationException.
///
/// Views and iterators keep a reference on the collection. There is no lock: one thread at a time.
class VX_API Collection : public IVXUnknown {
public:
    /// True if the collection has changed.
    virtual bool add(IVXUnknown* element) = 0;
    virtual bool addAll(const Collection& other) = 0;
    virtual void clear() = 0;
    virtual int compareTo(const Object& other) const = 0;
    virtual bool contains(const IVXUnknown* element) const = 0;
    virtual bool containsAll(const Collection& other) const = 0;
    virtual Reference<Iterator> createIterator() = 0;
    virtual Reference<ConstIterator> createConstIterator() const = 0;
    virtual bool equals(const Object& other) const = 0;
    virtual int getSize() const = 0;
    virtual std::uint32_t hashCode() const = 0;
    /// Removes the first element that equals `element`. Returns false if there is none.
    virtual bool remove(const IVXUnknown* element) = 0;
    /// Removes one occurrence for each element of `other`.
    virtual bool removeAll(const Collection& other) = 0;
    /// Removes the elements that `other` does not contain.
    virtual bool retainAll(const Collection& other) = 0;

    bool isEmpty() const { return getSize() == 0; }

    /// For a range-for, whose elements are `Reference<IVXUnknown>`.
    collections::detail::Walk<ConstIterator> begin() const
    {
        return collections::detail::Walk<ConstIterator>(createConstIterator());
    }
    collections::detail::Walk<ConstIterator> end() const noexcept { return {}; }

protected:
    ~Collection() = default;
};

} // namespace vx::collections::vorb
