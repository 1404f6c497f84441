#pragma once

#include "vx/Api.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace vx {

/// The storage of `Str1`: the place of its units, their number, and the number of strings that share them.
///
/// The reference count is a plain number, so all strings that share a buffer belong to one thread. It starts at 0. The
/// `Release` that takes it back to 0 deletes the buffer, so the buffer comes from `new`, unless it holds a reference to
/// itself (`initStaticInstance`).
class VX_API StrBuf1 {
public:
    /// The largest number of 24 bits. More throws OutOfMemoryException.
    static constexpr std::uint32_t MAX_CAPACITY = 0x00FFFFFF;

    /// Bits of `getHeapBits`: what the destructor does with the data.
    static constexpr std::uint32_t HEAP_FREE = 0x01000000; ///< returns them to the C runtime
    static constexpr std::uint32_t HEAP_DELETE = 0x02000000; ///< returns them to `vxsys::deallocate`

    /// A null `data` has a capacity of 0. The caller owns the data until a heap bit is set.
    StrBuf1(char16_t* data, std::uint32_t capacity);
    StrBuf1(const StrBuf1&) = delete;
    StrBuf1& operator=(const StrBuf1&) = delete;
    virtual ~StrBuf1();

    /// Both return the new count.
    virtual std::uint32_t AddRef();
    virtual std::uint32_t Release();
    /// The capacity if the buffer may be changed in place, otherwise 0. A `noSelfCount` other than 0 counts the
    /// reference of a static instance to itself as a reference of another string.
    virtual std::uint32_t isPrivatelyHeld(short noSelfCount) const;
    virtual std::uint32_t getBufCapacity() const;

    static void* operator new(std::size_t bytes);
    static void operator delete(void* memory) noexcept;
    static void* operator new(std::size_t bytes, std::align_val_t alignment);
    static void operator delete(void* memory, std::align_val_t alignment) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) noexcept { }

    /// Adds a reference of the buffer to itself, so that it is never deleted: it is part of another object. With an
    /// `alwaysPrivate` other than 0 every write changes it in place, even if strings share it.
    void initStaticInstance(short alwaysPrivate);

    char16_t* getData() const noexcept { return m_data; }
    std::uint32_t getCapacityValue() const noexcept { return m_flags & MAX_CAPACITY; }
    void setCapacityValue(std::uint32_t capacity);
    std::uint32_t getHeapBits() const noexcept { return m_flags & HEAP_BITS; }
    void setHeapBits(std::uint32_t bits) noexcept { m_flags = (m_flags & ~HEAP_BITS) | (bits & HEAP_BITS); }

    /// The buffer is part of another object. Strings that use it must be destroyed before that object.
    bool isStaticInstance() const noexcept { return (m_flags & STATIC_INSTANCE) != 0; }
    /// Frees nothing: the data are in the same allocation or the same object as the buffer.
    bool ownsData() const noexcept;

protected:
    struct Uncounted { };
    /// A static instance whose class counts no references, for text that is never written to.
    StrBuf1(Uncounted, const char16_t* text) noexcept
        : m_data(const_cast<char16_t*>(text))
        , m_flags(STATIC_INSTANCE)
    {
    }

private:
    friend class Str1; // counts without a call

    /// No class overrides how it counts.
    bool countsPlainly() const noexcept { return (m_flags & PLAIN_COUNT) != 0; }

    static constexpr std::uint32_t HEAP_BITS = HEAP_FREE | HEAP_DELETE;
    static constexpr std::uint32_t STATIC_INSTANCE = 0x04000000;
    static constexpr std::uint32_t ALWAYS_PRIVATE = 0x08000000;
    static constexpr std::uint32_t PLAIN_COUNT = 0x10000000;

    char16_t* m_data;
    std::uint32_t m_count = 0;
    std::uint32_t m_flags = 0;
};

/// For data that the buffer does not free: of another owner, in a member array, or after the buffer in its allocation.
class VX_API StrBuf1Wrap : public StrBuf1 {
public:
    using StrBuf1::StrBuf1;
    ~StrBuf1Wrap() override;
};

/// `Units` units in a member array, which start uninitialised.
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

/// Part of one string, for text that is never written to. It counts no references, and every write copies.
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
