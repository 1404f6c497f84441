#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/ConstIterator.h"
#include "vx/collections/Iterator.h"
#include "vx/collections/detail/Element.h"
#include "vx/collections/detail/Walk.h"
#include "vx/collections/vorb/Collection.h"

#include <cstdint>
#include <initializer_list>

namespace vx::collections {

/// Gives a collection of components the static element type `T`, a class derived from Object. It stores nothing:
/// elements, order, comparator and failures are those of the wrapped collection, on which it keeps a reference and
/// which other wrappers may share.
///
/// The type of an element that is returned is not checked: the caller makes sure that all elements have it. `compareTo`
/// and `equals` pass their argument unchanged to the wrapped collection, so that no wrapper is equal to anything.
template <class T>
class VX_API Collection : public Object {
public:
    using Element = T;

    explicit Collection(vorb::Collection* collection)
        : m_collection(collection)
    {
    }

    /// Adds the elements to the collection. Each is a pointer, a reference, or a value of which an object is made.
    Collection(vorb::Collection* collection, std::initializer_list<detail::Given<T>> elements)
        : Collection(collection)
    {
        for (const detail::Given<T>& element : elements)
            m_collection->add(detail::toElement(element.get()));
    }

    // Object
    int compareTo(const Object& other) const override { return m_collection->compareTo(other); }
    bool equals(const Object& other) const override { return m_collection->equals(other); }
    std::uint32_t hashCode() const override { return m_collection->hashCode(); }

    virtual bool add(T* element) { return m_collection->add(detail::toElement(element)); }
    virtual bool contains(const T* element) const { return m_collection->contains(detail::toElement(element)); }
    virtual bool remove(const T* element) { return m_collection->remove(detail::toElement(element)); }
    virtual bool addAll(const Collection<T>& other) { return m_collection->addAll(*other.m_collection); }
    virtual void clear() { m_collection->clear(); }
    virtual Reference<Iterator<T>> createIterator() { return new Iterator<T>(m_collection->createIterator().get()); }
    virtual Reference<ConstIterator<T>> createConstIterator() const
    {
        return new ConstIterator<T>(m_collection->createConstIterator().get());
    }
    virtual int getSize() const { return m_collection->getSize(); }
    virtual bool isEmpty() const { return m_collection->getSize() == 0; }
    virtual bool removeAll(const Collection<T>& other) { return m_collection->removeAll(*other.m_collection); }
    virtual bool retainAll(const Collection<T>& other) { return m_collection->retainAll(*other.m_collection); }

    /// The wrapped collection. Adds no reference.
    vorb::Collection* getCollection() const noexcept { return m_collection.get(); }

    using Walk = detail::Walk<vorb::ConstIterator, detail::FromElement<T>>;
    /// For a range-for and for algorithms that make one pass. The elements are `Reference<T>`. If the collection is
    /// changed in another way than through the iterator, the next step throws.
    Walk begin() const { return Walk(m_collection->createConstIterator()); }
    Walk end() const noexcept { return {}; }

private:
    Reference<vorb::Collection> m_collection;
};

} // namespace vx::collections
