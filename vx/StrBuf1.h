#pragma once

#include "vx/Api.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace vx {

/// The storage behind `Str1`: where the units lie, how many of them there are and how many strings hold them.
///
/// The count is a plain number, so all holders belong to one thread. It starts at 0, and the `Release` that takes it
/// back there deletes the buffer, which therefore comes from `new`, unless it holds a count on itself
/// (`initStaticInstance`).
class VX_API StrBuf1 {
public:
    /// What 24 bits hold; more is an OutOfMemoryException.
    static constexpr std::uint32_t MAX_CAPACITY = 0x00FFFFFF;

    /// Bits of `getHeapBits`: what the destructor does with the data.
    static constexpr std::uint32_t HEAP_FREE = 0x01000000; ///< gives them back to the C runtime
    static constexpr std::uint32_t HEAP_DELETE = 0x02000000; ///< gives them back to `vxsys::deallocate`

    /// A null `data` has a capacity of 0. The data stay the caller's until a heap bit is set.
    StrBuf1(char16_t* data, std::uint32_t capacity);
    StrBuf1(const StrBuf1&) = delete;
    StrBuf1& operator=(const StrBuf1&) = delete;
    virtual ~StrBuf1();

    /// Both give the new count.
    virtual std::uint32_t AddRef();
    virtual std::uint32_t Release();
    /// The capacity if a write may go in place, else 0. With a `noSelfCount` other than 0 the count that a static
    /// instance holds on itself is not forgiven.
    virtual std::uint32_t isPrivatelyHeld(short noSelfCount) const;
    virtual std::uint32_t getBufCapacity() const;

    static void* operator new(std::size_t bytes);
    static void operator delete(void* memory) noexcept;
    static void* operator new(std::size_t bytes, std::align_val_t alignment);
    static void operator delete(void* memory, std::align_val_t alignment) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) noexcept { }

    /// Takes one count for the buffer itself, so that it is never deleted: it is part of another object. With an
    /// `alwaysPrivate` other than 0 every write goes in place, whoever else holds the buffer.
    void initStaticInstance(short alwaysPrivate);

    char16_t* getData() const noexcept { return m_data; }
    std::uint32_t getCapacityValue() const noexcept { return m_flags & MAX_CAPACITY; }
    void setCapacityValue(std::uint32_t capacity);
    std::uint32_t getHeapBits() const noexcept { return m_flags & HEAP_BITS; }
    void setHeapBits(std::uint32_t bits) noexcept { m_flags = (m_flags & ~HEAP_BITS) | (bits & HEAP_BITS); }

    /// The buffer is part of another object, and its holders must be gone before that.
    bool isStaticInstance() const noexcept { return (m_flags & STATIC_INSTANCE) != 0; }
    /// The data live exactly as long as the buffer: they are its own memory, in one allocation with it or beside it.
    bool ownsData() const noexcept;

private:
    static constexpr std::uint32_t HEAP_BITS = HEAP_FREE | HEAP_DELETE;
    static constexpr std::uint32_t STATIC_INSTANCE = 0x04000000;
    static constexpr std::uint32_t ALWAYS_PRIVATE = 0x08000000;

    char16_t* m_data;
    std::uint32_t m_count = 0;
    std::uint32_t m_flags = 0;
};

/// Over memory that is not freed: foreign, a member array, or the rest of the buffer's own allocation.
class VX_API StrBuf1Wrap : public StrBuf1 {
public:
    using StrBuf1::StrBuf1;
    ~StrBuf1Wrap() override;
};

/// `Units` units in a member array, which start with no value.
template <std::uint32_t Units>
class VX_API StrBuf1Fixed : public StrBuf1Wrap {
    static_assert(Units <= MAX_CAPACITY);

public:
    StrBuf1Fixed()
        : StrBuf1Wrap(m_units, Units)
    {
    }

private:
    char16_t m_units[Units];
};

/// Part of the one string that owns it, over text that is never written: it counts nobody, and every write copies.
class VX_API StrBuf1Static : public StrBuf1 {
public:
    explicit StrBuf1Static(const char16_t* text);
    ~StrBuf1Static() override;

    // StrBuf1
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;
    std::uint32_t isPrivatelyHeld(short noSelfCount) const override;
};

extern template class VX_API StrBuf1Fixed<128>;

} // namespace vx
