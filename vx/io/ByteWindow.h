#pragma once

#include "vx/ByteOrder.h"
#include "vx/Exceptions.h"
#include "vx/Object.h"
#include "vx/Result.h"
#include "vx/detail/RawArray.h"
#include "vx/io/InputStream.h"
#include "vx/io/IoException.h"
#include "vx/io/OutputStream.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

namespace vx::io {

/// A window on a block of bytes with a position and a limit: the common base of the two generations of byte buffers.
///
/// `Buffer` is the derived class, and `Pointer<Buffer>` owns one by reference count. `Buffer::acceptOrder` returns the
/// byte order that is used for one that a caller sets. The block is owned or borrowed; a borrowed one must outlive the
/// buffer. Copies share the block. An owned block is freed with the last of them. One thread at a time.
template <class Buffer, class Byte, class Order, template <class> class Pointer>
class VX_API ByteWindow : public Object {
public:
    /// Releases an owned block and borrows this one. The position becomes 0, the limit the end of the block.
    void setBuffer(Byte* bytes, unsigned int size, Order order, bool readOnly)
    {
        *this = ByteWindow(bytes, size, Buffer::acceptOrder(order), readOnly);
    }
    /// As above, and read-only.
    void setBuffer(const Byte* bytes, unsigned int size, Order order)
    {
        setBuffer(const_cast<Byte*>(bytes), size, order, true);
    }

    /// A copy that owns a new block of `size` bytes; 0 means as large as this one. Its limit is the capacity of this
    /// buffer. Throws RangeErrorException for a `size` below that.
    Pointer<Buffer> duplicate(bool readOnly, unsigned int size = 0) const;
    /// The bytes from the position to the limit as a buffer that borrows them.
    Pointer<Buffer> slice() const { return new Buffer(m_bytes + m_position, room(m_position), m_order, m_isReadOnly); }

    unsigned int getPosition() const { return m_position; }
    /// Throws RangeErrorException above the limit.
    void setPosition(unsigned int position);
    unsigned int getLimit() const { return m_limit; }
    /// Throws RangeErrorException above the capacity. The position stays, even above the limit.
    void setLimit(unsigned int limit);
    unsigned int getCapacity() const { return m_capacity; }
    Order getOrder() const { return m_order; }
    void setOrder(Order order) { m_order = Buffer::acceptOrder(order); }
    bool isReadOnly() const { return m_isReadOnly; }
    /// Prepares for writing: the limit becomes the capacity, the position 0.
    void clear()
    {
        m_limit = m_capacity;
        m_position = 0;
    }
    /// Prepares for reading what was written: the limit becomes the position, the position 0.
    void flip()
    {
        m_limit = m_position;
        m_position = 0;
    }
    void rewind() { m_position = 0; }
    /// Limit minus position. If the limit was set below the position, the difference wraps around.
    unsigned int remaining() const { return m_limit - m_position; }
    /// Throws ReadOnlyException.
    Byte* getBuffer() const
    {
        checkReadOnly();
        return m_bytes;
    }
    const Byte* getConstBuffer() const { return m_bytes; }

    /// Typed access checks neither limit nor capacity; the caller does. `index` counts bytes. Operations without it use
    /// the position and advance it. Writing to a read-only buffer throws ReadOnlyException.
    Byte get(unsigned int index) const { return m_bytes[index]; }
    Byte get() { return m_bytes[advance(1)]; }
    short getInt16(unsigned int index) const { return load<short>(index); }
    short getInt16() { return loadNext<short>(); }
    std::int32_t getInt32(unsigned int index) const { return load<std::int32_t>(index); }
    std::int32_t getInt32() { return loadNext<std::int32_t>(); }
    std::int64_t getInt64(unsigned int index) const { return load<std::int64_t>(index); }
    std::int64_t getInt64() { return loadNext<std::int64_t>(); }
    float getFloat(unsigned int index) const { return load<float>(index); }
    float getFloat() { return loadNext<float>(); }
    double getDouble(unsigned int index) const { return load<double>(index); }
    double getDouble() { return loadNext<double>(); }

    void put(unsigned int index, Byte value)
    {
        checkReadOnly();
        m_bytes[index] = value;
    }
    /// A literal 0 is an index here, not a null pointer.
    template <std::same_as<int> Index>
    void put(Index index, Byte value)
    {
        put(static_cast<unsigned int>(index), value);
    }
    void put(Byte value)
    {
        checkReadOnly();
        m_bytes[advance(1)] = value;
    }
    /// A literal 0 is a byte here, not a null pointer.
    template <std::integral Number>
    requires(!std::same_as<Number, Byte>) void put(Number value) { put(static_cast<Byte>(value)); }
    void putInt16(unsigned int index, short value) { store(index, value); }
    void putInt16(short value) { storeNext(value); }
    void putInt32(unsigned int index, std::int32_t value) { store(index, value); }
    void putInt32(std::int32_t value) { storeNext(value); }
    void putInt64(unsigned int index, std::int64_t value) { store(index, value); }
    void putInt64(std::int64_t value) { storeNext(value); }
    void putFloat(unsigned int index, float value) { store(index, value); }
    void putFloat(float value) { storeNext(value); }
    void putDouble(unsigned int index, double value) { store(index, value); }
    void putDouble(double value) { storeNext(value); }

    /// Copy up to `count` bytes, but none after the limit, and return how many.
    unsigned int get(unsigned int index, Byte* target, unsigned int count) const
    {
        return copy(target, m_bytes + index, std::min(count, room(index)));
    }
    unsigned int get(Byte* target, unsigned int count) { return skip(get(m_position, target, count)); }
    unsigned int put(unsigned int index, const Byte* bytes, unsigned int count)
    {
        checkReadOnly();
        return copy(m_bytes + index, bytes, std::min(count, room(index)));
    }
    unsigned int put(const Byte* bytes, unsigned int count) { return skip(put(m_position, bytes, count)); }
    /// Copies as many of the remaining bytes of `source` as there is room for. Advances both positions.
    void put(Buffer* source);

    /// Reads once, up to the limit at most. Returns the number of bytes, 0 at the end of the stream.
    unsigned int readFrom(InputStream* stream);
    /// Reads until the limit is reached or a read returns nothing. Returns the sum.
    unsigned int readFully(InputStream* stream);
    /// Writes the remaining bytes, with as few calls as 32-bit lengths allow. Returns the number of bytes.
    unsigned int writeTo(OutputStream* stream);

    // Object: all three use the whole block and ignore position and limit.
    /// By capacity, then by unsigned bytes. Throws CastFailedException for another class.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override
    {
        return dynamic_cast<const Buffer*>(&other) != nullptr && compareTo(other) == 0;
    }
    /// Reads some 32 bytes, even of a large block.
    std::uint32_t hashCode() const override;

protected:
    /// A new uninitialised block.
    ByteWindow(unsigned int capacity, Order order, bool readOnly);
    ByteWindow(Byte* bytes, unsigned int size, Order order, bool readOnly) noexcept;
    ByteWindow(const ByteWindow&) noexcept = default;
    ByteWindow& operator=(const ByteWindow&) noexcept = default;
    ~ByteWindow() noexcept override = default;

private:
    template <class Number>
    using Bits = std::conditional_t<sizeof(Number) == 2, std::uint16_t,
        std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>>;

    void checkReadOnly() const
    {
        if (m_isReadOnly)
            throw ReadOnlyException();
    }

    bool isLittle() const { return static_cast<int>(m_order) == 0; }
    /// Bytes from `index` to the limit.
    unsigned int room(unsigned int index) const { return index < m_limit ? m_limit - index : 0; }
    static std::int32_t atOnce(unsigned int count)
    {
        return static_cast<std::int32_t>(std::min<unsigned int>(count, std::numeric_limits<std::int32_t>::max()));
    }
    /// Returns the old position.
    unsigned int advance(unsigned int count)
    {
        const unsigned int before = m_position;
        m_position += count;
        return before;
    }
    unsigned int skip(unsigned int count)
    {
        m_position += count;
        return count;
    }
    /// Slices and copies share blocks, so the two may overlap.
    static unsigned int copy(Byte* target, const Byte* source, unsigned int count)
    {
        if (count > 0)
            std::memmove(target, source, count);
        return count;
    }

    template <class Number>
    Number load(unsigned int index) const
    {
        const Byte* const bytes = m_bytes + index;
        return std::bit_cast<Number>(isLittle() ? vx::detail::loadNumber<Bits<Number>, std::endian::little>(bytes)
                                                : vx::detail::loadNumber<Bits<Number>, std::endian::big>(bytes));
    }
    template <class Number>
    Number loadNext()
    {
        return load<Number>(advance(sizeof(Number)));
    }
    template <class Number>
    void store(unsigned int index, Number value);
    template <class Number>
    void storeNext(Number value)
    {
        store(m_position, value);
        m_position += sizeof(Number);
    }

    Order m_order;
    unsigned int m_position = 0;
    unsigned int m_capacity;
    unsigned int m_limit;
    Byte* m_bytes;
    std::shared_ptr<Byte[]> m_block; ///< null for a borrowed one
    bool m_isReadOnly;
};

template <class Buffer, class Byte, class Order, template <class> class Pointer>
ByteWindow<Buffer, Byte, Order, Pointer>::ByteWindow(unsigned int capacity, Order order, bool readOnly)
    : ByteWindow(nullptr, capacity, order, readOnly)
{
    m_block = vx::detail::makeRawArray<Byte>(capacity);
    m_bytes = m_block.get();
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
ByteWindow<Buffer, Byte, Order, Pointer>::ByteWindow(
    Byte* bytes, unsigned int size, Order order, bool readOnly) noexcept
    : m_order(order)
    , m_capacity(size)
    , m_limit(size)
    , m_bytes(bytes)
    , m_isReadOnly(readOnly)
{
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
Pointer<Buffer> ByteWindow<Buffer, Byte, Order, Pointer>::duplicate(bool readOnly, unsigned int size) const
{
    if (size != 0 && size < m_capacity)
        throw RangeErrorException();
    const Pointer<Buffer> copy(new Buffer(size != 0 ? size : m_capacity, m_order, readOnly));
    if (m_capacity > 0)
        std::memcpy(copy->m_bytes, m_bytes, m_capacity);
    copy->m_limit = m_capacity;
    return copy;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
void ByteWindow<Buffer, Byte, Order, Pointer>::setPosition(unsigned int position)
{
    if (position > m_limit)
        throw RangeErrorException();
    m_position = position;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
void ByteWindow<Buffer, Byte, Order, Pointer>::setLimit(unsigned int limit)
{
    if (limit > m_capacity)
        throw RangeErrorException();
    m_limit = limit;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
void ByteWindow<Buffer, Byte, Order, Pointer>::put(Buffer* source)
{
    checkReadOnly();
    if (source == nullptr)
        throwResult(RESULT_POINTER);
    const unsigned int count = put(source->m_bytes + source->m_position, source->room(source->m_position));
    if (source != this)
        source->skip(count);
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
unsigned int ByteWindow<Buffer, Byte, Order, Pointer>::readFrom(InputStream* stream)
{
    checkReadOnly();
    const std::int32_t wanted = atOnce(room(m_position));
    if (wanted == 0)
        return 0;
    if (stream == nullptr)
        throwResult(RESULT_POINTER);
    const unsigned int start = m_position; // a stream on this buffer changes it
    const std::int32_t got = stream->read(m_bytes + start, wanted);
    if (got > wanted) // there is no room for that many
        throw IoException(u"stream read more than asked");
    m_position = start + static_cast<unsigned int>(std::max(got, 0));
    return m_position - start;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
unsigned int ByteWindow<Buffer, Byte, Order, Pointer>::readFully(InputStream* stream)
{
    unsigned int total = 0;
    while (const unsigned int got = readFrom(stream))
        total += got;
    return total;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
unsigned int ByteWindow<Buffer, Byte, Order, Pointer>::writeTo(OutputStream* stream)
{
    if (stream == nullptr)
        throwResult(RESULT_POINTER);
    unsigned int position = m_position; // a stream on this buffer changes it
    unsigned int left = room(position);
    const unsigned int total = left;
    do {
        const std::int32_t count = atOnce(left);
        stream->write(const_cast<const Byte*>(m_bytes) + position, count);
        position += static_cast<unsigned int>(count);
        left -= static_cast<unsigned int>(count);
        m_position = position;
    } while (left > 0);
    return total;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
int ByteWindow<Buffer, Byte, Order, Pointer>::compareTo(const Object& other) const
{
    if (this == &other)
        return 0;
    const auto* buffer = dynamic_cast<const Buffer*>(&other);
    if (buffer == nullptr)
        throw CastFailedException();
    if (m_capacity != buffer->m_capacity)
        return m_capacity > buffer->m_capacity ? 1 : -1;
    const int order = m_capacity > 0 ? std::memcmp(m_bytes, buffer->m_bytes, m_capacity) : 0;
    return (order > 0) - (order < 0);
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
std::uint32_t ByteWindow<Buffer, Byte, Order, Pointer>::hashCode() const
{
    constexpr unsigned int SAMPLES = 32;
    const unsigned int step = m_capacity < SAMPLES ? 1 : ((m_capacity - SAMPLES) >> 5) + 1;
    std::uint32_t hash = 0;
    for (std::uint64_t index = 0; index < m_capacity; index += step)
        hash = hash * 37 + static_cast<std::uint32_t>(m_bytes[index]);
    return hash;
}

template <class Buffer, class Byte, class Order, template <class> class Pointer>
template <class Number>
void ByteWindow<Buffer, Byte, Order, Pointer>::store(unsigned int index, Number value)
{
    checkReadOnly();
    const auto bits = std::bit_cast<Bits<Number>>(value);
    if (isLittle())
        vx::detail::storeNumber<std::endian::little>(m_bytes + index, bits);
    else
        vx::detail::storeNumber<std::endian::big>(m_bytes + index, bits);
}

} // namespace vx::io
