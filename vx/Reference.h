#pragma once

#if __cplusplus < 202002L
#error "vxlib4 needs C++20: compile with -std=c++20 or a later standard"
#endif

#include "vx/IVXUnknown.h"

#include <concepts>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace vx {

/// A type with an identifier of its own, not one that it inherits.
template <class T>
concept ComponentInterface = std::same_as<typename T::InterfaceType, T>;

/// A type that a range-for can walk through.
template <class T>
concept Walkable = requires(T& object)
{
    object.begin();
    object.end();
};

template <class T>
class Walked;

/// Holds a `T*` that is null, or on which it keeps one reference. `T` is a class of the object tree or a component
/// interface. Dereferencing null is undefined: compare with null first.
///
/// @code
/// const Reference<String> text(new String(u"shared")); // the first reference
/// Reference<Object> object = text; // the second
/// const Reference<IVXComparable> view(text.get()); // asks the object for this interface, and is null if it has none
/// assert(view != nullptr && object == text.get());
/// object = nullptr; // releases one reference; the last one deletes the object
/// @endcode
template <class T>
class Reference {
public:
    constexpr Reference() noexcept = default;
    constexpr Reference(std::nullptr_t) noexcept { }
    /// Adds a reference; the first one of a new object.
    Reference(T* object) noexcept
        : m_object(object)
    {
        if (m_object != nullptr)
            m_object->AddRef();
    }
    Reference(const Reference& other) noexcept
        : Reference(other.m_object)
    {
    }
    Reference(Reference&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    template <class Derived>
    requires std::convertible_to<Derived*, T*> Reference(const Reference<Derived>& other)
    noexcept
        : Reference(static_cast<T*>(other.get()))
    {
    }

    /// Asks an object of another type for the interface `T`. Null if the object does not have it.
    template <class Source>
    requires(!std::convertible_to<Source*, T*> && ComponentInterface<T> && requires(Source & source, void** out) {
        source.QueryInterface(T::IID, out);
    }) Reference(Source* source)
    {
        void* view = nullptr;
        if (source != nullptr && source->QueryInterface(T::IID, &view) >= 0)
            m_object = static_cast<T*>(view);
    }

    /// Exceptions from the object's destructor are swallowed: a destructor has no caller that could handle them.
    ~Reference() { release(m_object); }

    Reference& operator=(T* object) noexcept;
    Reference& operator=(const Reference& other) noexcept
    {
        *this = other.m_object;
        return *this;
    }
    Reference& operator=(Reference&& other) noexcept
    {
        Reference taken(std::move(other));
        swap(taken);
        return *this;
    }
    Reference& operator=(std::nullptr_t) noexcept
    {
        release(std::exchange(m_object, nullptr));
        return *this;
    }

    T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const& noexcept { return *m_object; }
    /// `for (auto& key : *set->createKeySet())` keeps the collection alive until the loop ends.
    template <class Collection = T>
    requires Walkable<Collection> Walked<Collection>
    operator*() const&& noexcept { return Walked<Collection>(*this); }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Takes over a reference that the caller owns.
    void attach(T* object) noexcept { release(std::exchange(m_object, object)); }
    /// Gives the reference to the caller, who must release it, and holds null.
    [[nodiscard]] T* detach() noexcept { return std::exchange(m_object, nullptr); }
    /// Releases the object and returns the address for an out-parameter that receives a counted pointer.
    T** out() noexcept
    {
        *this = nullptr;
        return &m_object;
    }
    void** outVoid() noexcept { return reinterpret_cast<void**>(out()); }

    void swap(Reference& other) noexcept { std::swap(m_object, other.m_object); }
    friend void swap(Reference& left, Reference& right) noexcept { left.swap(right); }

    friend bool operator==(const Reference& left, const Reference& right) noexcept
    {
        return left.m_object == right.m_object;
    }
    friend bool operator==(const Reference& left, const T* right) noexcept { return left.m_object == right; }
    friend bool operator==(const Reference& left, std::nullptr_t) noexcept { return left.m_object == nullptr; }

private:
    static void release(T* object) noexcept;

    T* m_object = nullptr;
};

/// A collection as `*` gives it for a reference that is about to end: it stands for the collection and keeps it alive.
template <class T>
class Walked {
public:
    explicit Walked(const Reference<T>& object) noexcept
        : m_object(object)
    {
    }

    operator T&() const noexcept { return *m_object.get(); }

    decltype(auto) begin() const { return m_object->begin(); }
    decltype(auto) end() const { return m_object->end(); }

private:
    Reference<T> m_object;
};

template <class T>
inline Reference<T>& Reference<T>::operator=(T* object) noexcept
{
    // First, because the old object may be the only owner of the new one.
    if (object != nullptr)
        object->AddRef();
    release(std::exchange(m_object, object));
    return *this;
}

template <class T>
inline void Reference<T>::release(T* object) noexcept
{
    if (object == nullptr)
        return;
    try {
        object->Release();
    } catch (...) {
    }
}

} // namespace vx

template <class T>
struct std::hash<vx::Reference<T>> {
    std::size_t operator()(const vx::Reference<T>& reference) const noexcept
    {
        return std::hash<T*>()(reference.get());
    }
};
