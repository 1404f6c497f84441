#pragma once

#include "vx/util/AbstractByteBuffer.h"
#include "vx/util/AbstractCharBuffer.h"
#include "vx/util/detail/BufferStorage.h"

namespace vx::detail {
class PlainBuffer;
}

namespace vx::util::detail {

/// What the buffers without locks share. `Storage` holds the units and says whether they may be written.
template <class Abstract, class Storage>
class VX_API StoredBuffer : public Abstract {
public:
    using Unit = typename Storage::Unit;

    ~StoredBuffer() noexcept(false) override;

    int getLength() const override;
    const Unit* getData() const override;
    const Unit* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    Unit* getWriteLock(int minimumLength) override;
    Unit* ensureCapacity(int minimumLength) override;
    void releaseWriteLock(int length) override;
    void freeExtra() override;

protected:
    StoredBuffer() noexcept = default;
    template <class Place>
    StoredBuffer(Place* place, int units) noexcept
        : m_storage(place, units)
    {
    }
    StoredBuffer(const StoredBuffer& other) noexcept = default;
    StoredBuffer& operator=(const StoredBuffer& other) noexcept = default;

    Storage m_storage;

    friend class vx::detail::PlainBuffer;
};

/// Base of `ROCharBuffer` and `ROByteBuffer`.
template <class Abstract, class Unit>
class VX_API ROBuffer : public StoredBuffer<Abstract, BufferView<Unit>> {
public:
    ROBuffer() noexcept = default;
    ROBuffer(const Unit* data, int length, int capacity = 0) noexcept;
    ROBuffer(const ROBuffer& other) noexcept = default;
    ROBuffer& operator=(const ROBuffer& other) noexcept = default;
    ~ROBuffer() noexcept(false) override;
};

/// Base of `RWCharBuffer` and `RWByteBuffer`.
template <class Abstract, class Unit>
class VX_API RWBuffer : public StoredBuffer<Abstract, BufferStorage<Unit>> {
public:
    RWBuffer() noexcept = default;
    explicit RWBuffer(int capacity);
    RWBuffer(const Unit* data, int length, int capacity = 0);
    RWBuffer(const RWBuffer& other);
    RWBuffer& operator=(const RWBuffer& other);
    ~RWBuffer() noexcept(false) override;

protected:
    void allocBuffer(int capacity);
    void reallocBuffer(int capacity);
    void freeBuffer();
    static int adjustCapacity(int n);

private:
    friend class vx::detail::PlainBuffer;

    /// Distinguishes storage at a given place from text to copy.
    struct Placed { };

    RWBuffer(Placed, Unit* place, int units) noexcept
        : StoredBuffer<Abstract, BufferStorage<Unit>>(place, units)
    {
    }
};

extern template class VX_API StoredBuffer<AbstractByteBuffer, BufferView<signed char>>;
extern template class VX_API StoredBuffer<AbstractCharBuffer, BufferView<char16_t>>;
extern template class VX_API StoredBuffer<AbstractByteBuffer, BufferStorage<signed char>>;
extern template class VX_API StoredBuffer<AbstractCharBuffer, BufferStorage<char16_t>>;
extern template class VX_API ROBuffer<AbstractByteBuffer, signed char>;
extern template class VX_API ROBuffer<AbstractCharBuffer, char16_t>;
extern template class VX_API RWBuffer<AbstractByteBuffer, signed char>;
extern template class VX_API RWBuffer<AbstractCharBuffer, char16_t>;

} // namespace vx::util::detail
