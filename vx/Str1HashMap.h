#pragma once

#include "vx/Api.h"
#include "vx/ComObject.h"
#include "vx/Reference.h"
#include "vx/Str1.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace vx {

/// A chained hash map from text to `T`.
///
/// Keys, and values that are `Str1`, are kept by `Str1::detached`: text in embedded or foreign storage is copied. Iteration
/// goes through the buckets in order, and within a bucket from the newest entry to the oldest; each rehash reverses the
/// order of the entries that stay together in a bucket.
///
/// Threads: one at a time. While no thread writes, several may call `containsKey`, and `get` where `T` is not `Str1`, if
/// each thread passes a key whose buffer no other thread uses: a look-up changes the key's reference count, which is
/// a plain number. For the same reason `get` of a `Str1` value, which shares the buffer of the entry, needs a lock.
template <class T>
class VX_API Str1HashMap {
    struct Node {
        Str1 key;
        T value;
        std::uint32_t hash;
        std::unique_ptr<Node> next;
    };
    using NodePtr = std::unique_ptr<Node>;

public:
    static constexpr int DEFAULT_CAPACITY = 101;
    static constexpr float DEFAULT_LOAD = 0.75F;

    using ValueArgument = std::conditional_t<std::is_pointer_v<T>, T, const T&>;

    /// A place in the map, valid until the map changes.
    struct KeyValueIterator {
        const Str1HashMap* map = nullptr;
        std::uint32_t modificationCount = 0;
        std::int32_t nextBucket = 0;
        Node* nextNode = nullptr;
    };

    /// A `capacity` below 1 is taken as 1; a `load` below 0.01, and one that is no finite number, as the default.
    explicit Str1HashMap(int capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD);
    Str1HashMap(const Str1HashMap&) = delete;
    Str1HashMap& operator=(const Str1HashMap&) = delete;
    virtual ~Str1HashMap();

    /// Keeps the capacity.
    virtual void clear();
    virtual bool containsKey(const Str1& key) const;
    /// False leaves `value` as it is.
    virtual bool get(const Str1& key, T& value) const;
    virtual int getSize() const;
    /// Stores the old value, if there is one, in `*previous`, which may be null. Iterators stay valid when the key was
    /// there before.
    virtual void put(const Str1& key, ValueArgument value, T* previous = nullptr);
    virtual void remove(const Str1& key, T* previous = nullptr);
    virtual void iteratorInit(KeyValueIterator& iterator) const;
    /// False also for a map that changed since `iteratorInit`.
    virtual bool iteratorHasNext(KeyValueIterator& iterator) const;
    /// Points into the map, where the value may be changed. Without a next entry nothing is stored.
    virtual void iteratorNext(KeyValueIterator& iterator, const Str1** key, T** value) const;
    /// Makes `out` the form of `key` that is hashed, compared and kept.
    virtual void normalizeKey(Str1& out, const Str1& key) const;

    bool isEmpty() const { return getSize() == 0; }
    /// The hash of a key in its normalised form.
    std::uint32_t getKeyHashCode(const Str1& key) const { return key.hashCode(); }

protected:
    /// Replaces the table by an empty one, and removes all entries.
    void allocTable(int capacity);

private:
    static constexpr float LEAST_LOAD = 0.01F;
    static constexpr std::int32_t LARGEST = std::numeric_limits<std::int32_t>::max();

    /// Releases a chain entry by entry, since the recursion of the destructors could exceed the stack.
    static void release(NodePtr chain) noexcept
    {
        while (chain != nullptr)
            chain = std::move(chain->next);
    }
    static void release(std::unique_ptr<NodePtr[]> table, std::int32_t capacity) noexcept
    {
        for (std::int32_t bucket = 0; table != nullptr && bucket < capacity; ++bucket)
            release(std::move(table[static_cast<std::size_t>(bucket)]));
    }
    static std::unique_ptr<NodePtr[]> newTable(std::int32_t capacity)
    {
        return std::make_unique<NodePtr[]>(static_cast<std::size_t>(capacity));
    }

    /// The form of a value in which an entry keeps it.
    static T kept(ValueArgument value)
    {
        if constexpr (std::is_same_v<T, Str1>)
            return value.detached();
        else
            return value;
    }

    NodePtr& bucketOf(std::uint32_t hash) const noexcept
    {
        return m_table[hash % static_cast<std::uint32_t>(m_capacity)];
    }
    /// The pointer that owns the entry, or the null one at the end of its chain.
    NodePtr& find(const Str1& normalized, std::uint32_t hash) const noexcept;
    void setCapacity(std::int32_t capacity) noexcept;
    void rehash();
    /// Moves to the first entry of the next bucket that is not empty.
    void findBucket(KeyValueIterator& iterator) const noexcept;

    std::int32_t m_size = 0;
    std::int32_t m_capacity = 0;
    float m_load;
    std::int32_t m_threshold = 0;
    std::unique_ptr<NodePtr[]> m_table;
    std::uint32_t m_modificationCount = 0;
};

/// Keys are kept, and found, in lower case.
template <class T>
class VX_API Str1HashMapLC : public Str1HashMap<T> {
public:
    using Str1HashMap<T>::Str1HashMap;

    // Str1HashMap
    void normalizeKey(Str1& out, const Str1& key) const override;
};

template <class T>
Str1HashMap<T>::Str1HashMap(int capacity, float load)
    : m_load(load >= LEAST_LOAD && load <= std::numeric_limits<float>::max() ? load : DEFAULT_LOAD)
{
    allocTable(capacity);
}

template <class T>
Str1HashMap<T>::~Str1HashMap()
{
    release(std::move(m_table), m_capacity);
}

template <class T>
void Str1HashMap<T>::clear()
{
    allocTable(m_capacity);
}

template <class T>
bool Str1HashMap<T>::containsKey(const Str1& key) const
{
    Str1 normalized;
    normalizeKey(normalized, key);
    return find(normalized, getKeyHashCode(normalized)) != nullptr;
}

template <class T>
bool Str1HashMap<T>::get(const Str1& key, T& value) const
{
    Str1 normalized;
    normalizeKey(normalized, key);
    const NodePtr& node = find(normalized, getKeyHashCode(normalized));
    if (node == nullptr)
        return false;
    value = node->value;
    return true;
}

template <class T>
int Str1HashMap<T>::getSize() const
{
    return m_size;
}

template <class T>
void Str1HashMap<T>::put(const Str1& key, ValueArgument value, T* previous)
{
    Str1 normalized;
    normalizeKey(normalized, key);
    const std::uint32_t hash = getKeyHashCode(normalized);
    if (const NodePtr& node = find(normalized, hash)) {
        T old = std::exchange(node->value, kept(value)); // `previous` may be where `value` lies
        if (previous != nullptr)
            *previous = std::move(old);
        return;
    }

    NodePtr node(new Node {normalized.detached(), kept(value), hash, nullptr});
    ++m_modificationCount;
    if (m_size >= m_threshold)
        rehash();
    NodePtr& head = bucketOf(hash);
    node->next = std::move(head);
    head = std::move(node);
    ++m_size;
}

template <class T>
void Str1HashMap<T>::remove(const Str1& key, T* previous)
{
    Str1 normalized;
    normalizeKey(normalized, key);
    NodePtr& link = find(normalized, getKeyHashCode(normalized));
    if (link == nullptr)
        return;
    if (previous != nullptr)
        *previous = link->value;
    ++m_modificationCount;
    const NodePtr node = std::move(link);
    link = std::move(node->next);
    --m_size;
}

template <class T>
void Str1HashMap<T>::iteratorInit(KeyValueIterator& iterator) const
{
    iterator = {this, m_modificationCount, 0, nullptr};
    findBucket(iterator);
}

template <class T>
bool Str1HashMap<T>::iteratorHasNext(KeyValueIterator& iterator) const
{
    return iterator.map == this && iterator.modificationCount == m_modificationCount && iterator.nextNode != nullptr;
}

template <class T>
void Str1HashMap<T>::iteratorNext(KeyValueIterator& iterator, const Str1** key, T** value) const
{
    if (!Str1HashMap::iteratorHasNext(iterator))
        return;
    if (key != nullptr)
        *key = &iterator.nextNode->key;
    if (value != nullptr)
        *value = &iterator.nextNode->value;
    iterator.nextNode = iterator.nextNode->next.get();
    if (iterator.nextNode == nullptr)
        findBucket(iterator);
}

template <class T>
void Str1HashMap<T>::normalizeKey(Str1& out, const Str1& key) const
{
    out.setTo(key);
}

template <class T>
void Str1HashMap<T>::allocTable(int capacity)
{
    capacity = std::max(capacity, 1);
    auto table = newTable(capacity);
    table.swap(m_table);
    const std::int32_t oldCapacity = std::exchange(m_capacity, capacity);
    setCapacity(capacity);
    m_size = 0;
    ++m_modificationCount; // before destructors of values run, which may use an iterator
    release(std::move(table), oldCapacity);
}

template <class T>
auto Str1HashMap<T>::find(const Str1& normalized, std::uint32_t hash) const noexcept -> NodePtr&
{
    NodePtr* link = &bucketOf(hash);
    while (*link != nullptr && ((*link)->hash != hash || !((*link)->key == normalized)))
        link = &(*link)->next;
    return *link;
}

template <class T>
void Str1HashMap<T>::setCapacity(std::int32_t capacity) noexcept
{
    m_capacity = capacity;
    const float threshold = m_load * static_cast<float>(capacity);
    m_threshold = threshold < static_cast<float>(LARGEST) ? static_cast<std::int32_t>(threshold) : LARGEST;
}

template <class T>
void Str1HashMap<T>::rehash()
{
    if (m_capacity > (LARGEST - 1) / 2)
        return; // chains grow instead
    const std::int32_t oldCapacity = m_capacity;
    auto table = newTable(2 * oldCapacity + 1);
    table.swap(m_table);
    setCapacity(2 * oldCapacity + 1);
    for (std::int32_t bucket = oldCapacity - 1; bucket >= 0; --bucket) {
        NodePtr chain = std::move(table[static_cast<std::size_t>(bucket)]);
        while (chain != nullptr) {
            NodePtr& head = bucketOf(chain->hash);
            chain->next.swap(head); // `head` holds the rest of the chain now ...
            chain.swap(head); // ... and the node after this
        }
    }
}

template <class T>
void Str1HashMap<T>::findBucket(KeyValueIterator& iterator) const noexcept
{
    while (iterator.nextNode == nullptr && iterator.nextBucket < m_capacity)
        iterator.nextNode = m_table[static_cast<std::size_t>(iterator.nextBucket++)].get();
}

template <class T>
void Str1HashMapLC<T>::normalizeKey(Str1& out, const Str1& key) const
{
    out.setTo(key);
    out.toLower();
}

extern template class VX_API Str1HashMap<Reference<ComObject>>;
extern template class VX_API Str1HashMap<Str1>;
extern template class VX_API Str1HashMap<void*>;
extern template class VX_API Str1HashMapLC<Reference<ComObject>>;
extern template class VX_API Str1HashMapLC<Str1>;

} // namespace vx
