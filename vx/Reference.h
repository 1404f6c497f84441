#pragma once

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

/// Holds one `T*` that is null or counted. `T` is a class of the object tree or a component interface. Dereferencing null
/// is the holder's fault: look first.
template <class T>
class Reference {
public:
    constexpr Reference() noexcept = default;
    constexpr Reference(std::nullptr_t) noexcept { }
    /// Adds a count: a new object gets its first one here.
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

    /// Asks an object of another type for the interface `T`. Where it lacks it, the reference is null.
    template <class Source>
    requires(!std::convertible_to<Source*, T*> && ComponentInterface<T> && requires(Source & source, void** out) {
        source.QueryInterface(T::IID, out);
    }) Reference(Source* source)
    {
        void* view = nullptr;
        if (source != nullptr && source->QueryInterface(T::IID, &view) >= 0)
            m_object = static_cast<T*>(view);
    }

    /// An object that fails to go takes its failure with it: a reference is released where nobody can answer.
    ~Reference() { release(m_object); }

    Reference& operator=(T* object) noexcept
    {
        // Counted before the old one is released, which may be what keeps the new one alive.
        if (object != nullptr)
            object->AddRef();
        release(std::exchange(m_object, object));
        return *this;
    }
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
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Takes over a count that the caller holds.
    void attach(T* object) noexcept { release(std::exchange(m_object, object)); }
    /// Hands the count to the caller and holds null.
    [[nodiscard]] T* detach() noexcept { return std::exchange(m_object, nullptr); }
    /// Empties the reference and gives the place that an out-parameter fills with a counted pointer.
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
    static void release(T* object) noexcept
    {
        if (object == nullptr)
            return;
        try {
            object->Release();
        } catch (...) {
        }
    }

    T* m_object = nullptr;
};

} // namespace vx

template <class T>
struct std::hash<vx::Reference<T>> {
    std::size_t operator()(const vx::Reference<T>& reference) const noexcept
    {
        return std::hash<T*>()(reference.get());
    }
};
