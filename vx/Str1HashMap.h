#pragma once

#include "vx/Api.h"
#include "vx/ComObject.h"
#include "vx/Reference.h"
#include "vx/Str1.h"
#include "vx/detail/ChainIndex.h"
#include "vx/detail/HashOrder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace vx {

/// A chained hash map from text to `T`.
///
/// Keys, and values that are `Str1`, are kept by `Str1::detached`: text in embedded or foreign storage is copied. Iteration
/// visits the buckets from the first to the last, and in a bucket the newest entry first. Each rehash reverses the order of
/// the entries that stay together in a bucket.
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

    struct Wanted {
        std::uint32_t hash;
        std::u16string_view key;
    };
    /// No two entries have the same key, so that the hash does not count.
    struct KeyOrder {
        static Wanted wanted(const Node* node) noexcept { return {node->hash, node->key.view()}; }
        static Wanted wanted(const Wanted& wanted) noexcept { return wanted; }

        template <class Key>
        static std::uint32_t tagOf(const Key& key) noexcept
        {
            return detail::tagForIndex(wanted(key).key);
        }
        template <class Key>
        static int compare(const Node* left, const Key& right) noexcept
        {
            return detail::compareForIndex(wanted(left).key, wanted(right).key);
        }
        template <class Key>
        static bool areOrdered(const Node*, const Key&) noexcept
        {
            return true;
        }
        static bool mayMeet(const Node*, const Wanted&) noexcept { return true; }
    };
    using ChainIndex = detail::ChainIndex<Node*, nullptr, KeyOrder>;
    using Order = detail::HashOrder<float>;

public:
    static constexpr int DEFAULT_CAPACITY = Order::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = Order::DEFAULT_LOAD;

    using ValueArgument = std::conditional_t<std::is_pointer_v<T>, T, const T&>;

    /// A place in the map, valid until the map changes.
    struct KeyValueIterator {
        const Str1HashMap* map = nullptr;
        std::uint32_t modificationCount = 0;
        std::int32_t nextBucket = 0;
        Node* nextNode = nullptr;
    };

    /// A `capacity` below 1 is taken as 1. The default replaces a `load` that is below 0.01 or not finite.
    explicit Str1HashMap(int capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD);
    Str1HashMap(const Str1HashMap&) = delete;
    Str1HashMap& operator=(const Str1HashMap&) = delete;
    virtual ~Str1HashMap();

    /// Keeps the capacity.
    virtual void clear();
    virtual bool containsKey(const Str1& key) const;
    /// False, and `value` is unchanged, if the key is missing.
    virtual bool get(const Str1& key, T& value) const;
    virtual int getSize() const;
    /// Stores the old value, if there is one, in `*previous`, which may be null. A new value for an existing key leaves
    /// iterators valid.
    virtual void put(const Str1& key, ValueArgument value, T* previous = nullptr);
    virtual void remove(const Str1& key, T* previous = nullptr);
    virtual void iteratorInit(KeyValueIterator& iterator) const;
    /// False also if the map has changed since `iteratorInit`.
    virtual bool iteratorHasNext(KeyValueIterator& iterator) const;
    /// Stores a pointer into the map, through which the value may be changed. Stores nothing if there is no next entry.
    virtual void iteratorNext(KeyValueIterator& iterator, const Str1** key, T** value) const;
    /// Stores in `out` the form of `key` that is hashed, compared and kept.
    virtual void normalizeKey(Str1& out, const Str1& key) const;

    /// The value of a key, or null. It may be changed in place, and the pointer is valid until the map changes. Counting
    /// words this way takes one look-up for a known word, where `get` and `put` take two.
    T* find(const Str1& key)
    {
        Node* node = findByKey(key);
        return node != nullptr ? &node->value : nullptr;
    }
    const T* find(const Str1& key) const
    {
        const Node* node = findByKey(key);
        return node != nullptr ? &node->value : nullptr;
    }
    bool isEmpty() const { return getSize() == 0; }
    /// The hash of a key in its normalised form.
    std::uint32_t getKeyHashCode(const Str1& key) const { return key.hashCode(); }

protected:
    /// Replaces the table by an empty one, and removes all entries.
    void allocTable(int capacity);

private:
    static constexpr float LEAST_LOAD = 0.01F;

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
    static T kept(ValueArgument value);

    static Node* following(const Node* node) noexcept { return node->next.get(); }

    std::size_t bucketNumberOf(std::uint32_t hash) const noexcept { return m_order.bucketOf(hash); }
    NodePtr& bucketOf(std::uint32_t hash) const noexcept { return m_table[bucketNumberOf(hash)]; }
    /// Whether the map is exactly this class: then a key is already in its normalised form.
    bool keepsKeys() const noexcept { return &typeid(*this) == &typeid(Str1HashMap); }
    void putNormalized(const Str1& normalized, ValueArgument value, T* previous);
    /// These two return null if there is no such entry.
    Node* findByKey(const Str1& key) const;
    Node* find(const Str1& normalized, std::uint32_t hash) const noexcept;
    /// The pointer that owns an entry, out of the index of whose chain the entry is taken.
    NodePtr& linkTo(Node* node) noexcept;
    void indexIfLong(std::size_t bucket) noexcept;
    void rehash();
    /// Moves to the first entry of the next bucket that is not empty.
    void findBucket(KeyValueIterator& iterator) const noexcept;

    std::int32_t m_size = 0;
    Order m_order;
    std::unique_ptr<NodePtr[]> m_table;
    std::uint32_t m_modificationCount = 0;
    ChainIndex m_chains;
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
    : m_order(capacity, load >= LEAST_LOAD && load <= std::numeric_limits<float>::max() ? load : DEFAULT_LOAD)
{
    allocTable(capacity);
}

template <class T>
Str1HashMap<T>::~Str1HashMap()
{
    while (m_size != 0) { // destructors of values may add entries
        NodePtr all;
        NodePtr* end = &all;
        for (std::int32_t bucket = 0; bucket < m_order.capacity(); ++bucket) {
            *end = std::move(m_table[static_cast<std::size_t>(bucket)]);
            while (*end != nullptr)
                end = &(*end)->next;
        }
        m_chains.clear();
        m_size = 0;
        ++m_modificationCount;
        release(std::move(all));
    }
}

template <class T>
void Str1HashMap<T>::clear()
{
    allocTable(m_order.capacity());
}

template <class T>
bool Str1HashMap<T>::containsKey(const Str1& key) const
{
    return findByKey(key) != nullptr;
}

template <class T>
bool Str1HashMap<T>::get(const Str1& key, T& value) const
{
    const Node* node = findByKey(key);
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
    if (keepsKeys())
        return putNormalized(key, value, previous);
    Str1 normalized;
    normalizeKey(normalized, key);
    putNormalized(normalized, value, previous);
}

template <class T>
void Str1HashMap<T>::putNormalized(const Str1& normalized, ValueArgument value, T* previous)
{
    const std::uint32_t hash = getKeyHashCode(normalized);
    if (Node* node = find(normalized, hash)) {
        T old = std::exchange(node->value, kept(value)); // `previous` may be where `value` lies
        if (previous != nullptr)
            *previous = std::move(old);
        return;
    }

    NodePtr node(new Node {normalized.detached(), kept(value), hash, nullptr});
    ++m_modificationCount;
    if (m_order.isFull(m_size))
        rehash();
    const std::size_t bucket = bucketNumberOf(hash);
    NodePtr& head = m_table[bucket];
    node->next = std::move(head);
    head = std::move(node);
    ++m_size;
    if (m_chains.has(bucket))
        m_chains.prepend(bucket, head.get());
    else
        indexIfLong(bucket);
}

template <class T>
void Str1HashMap<T>::remove(const Str1& key, T* previous)
{
    Node* found = findByKey(key);
    if (found == nullptr)
        return;
    ++m_modificationCount;
    NodePtr& link = linkTo(found);
    const NodePtr node = std::move(link);
    link = std::move(node->next);
    --m_size;
    if (previous != nullptr)
        *previous = std::move(node->value); // last: the destructor of what it held may use the map
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
    const Order order(capacity, m_order.load());
    auto table = newTable(order.capacity());
    table.swap(m_table);
    const std::int32_t oldCapacity = std::exchange(m_order, order).capacity();
    m_chains.clear();
    m_size = 0;
    ++m_modificationCount; // before destructors of values run, which may use an iterator
    release(std::move(table), oldCapacity);
}

template <class T>
inline T Str1HashMap<T>::kept(ValueArgument value)
{
    if constexpr (std::is_same_v<T, Str1>)
        return value.detached();
    else
        return value;
}

template <class T>
auto Str1HashMap<T>::findByKey(const Str1& key) const -> Node*
{
    if (keepsKeys())
        return find(key, getKeyHashCode(key));
    Str1 normalized;
    normalizeKey(normalized, key);
    return find(normalized, getKeyHashCode(normalized));
}

template <class T>
auto Str1HashMap<T>::find(const Str1& normalized, std::uint32_t hash) const noexcept -> Node*
{
    int first = ChainIndex::FIRST;
    Node* node = bucketOf(hash).get();
    while (node != nullptr && (node->hash != hash || !(node->key == normalized))) {
        if (--first == 0 && !m_chains.isEmpty()) {
            if (const std::optional<Node*> found
                = m_chains.find(bucketNumberOf(hash), Wanted {hash, normalized.view()}))
                return *found;
        }
        node = following(node);
    }
    return node;
}

template <class T>
auto Str1HashMap<T>::linkTo(Node* node) noexcept -> NodePtr&
{
    const std::size_t bucket = bucketNumberOf(node->hash);
    if (m_chains.has(bucket)) {
        if (const std::optional<Node*> previous = m_chains.remove(bucket, node))
            return *previous != nullptr ? (*previous)->next : m_table[bucket];
    }
    NodePtr* link = &m_table[bucket];
    while (link->get() != node)
        link = &(*link)->next;
    return *link;
}

template <class T>
void Str1HashMap<T>::indexIfLong(std::size_t bucket) noexcept
{
    if (ChainIndex::isLong(m_table[bucket].get(), following))
        m_chains.complete(bucket, m_table[bucket].get(), following, KeyOrder());
}

template <class T>
void Str1HashMap<T>::rehash()
{
    const Order grown = m_order.grown();
    auto table = newTable(grown.capacity());
    std::vector<std::uint8_t> lengths(static_cast<std::size_t>(grown.capacity()));
    table.swap(m_table);
    const std::int32_t oldCapacity = std::exchange(m_order, grown).capacity();
    for (std::int32_t bucket = oldCapacity - 1; bucket >= 0; --bucket) {
        NodePtr chain = std::move(table[static_cast<std::size_t>(bucket)]);
        while (chain != nullptr) {
            std::uint8_t& length = lengths[bucketNumberOf(chain->hash)];
            if (length <= ChainIndex::FEW)
                ++length;
            NodePtr& head = bucketOf(chain->hash);
            chain->next.swap(head); // `head` holds the rest of the chain now ...
            chain.swap(head); // ... and the node after this
        }
    }
    m_chains.regroup([this](const Node* node) { return bucketNumberOf(node->hash); });
    for (std::size_t bucket = 0; bucket < lengths.size(); ++bucket)
        if (lengths[bucket] > ChainIndex::FEW)
            indexIfLong(bucket);
}

template <class T>
void Str1HashMap<T>::findBucket(KeyValueIterator& iterator) const noexcept
{
    while (iterator.nextNode == nullptr && iterator.nextBucket < m_order.capacity())
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
