#pragma once

#include "vx/Api.h"

#include <cstdint>

namespace vx::util::detail {

/// The component view of an abstract buffer, for both widths: each operation calls the class operation of `Owner`,
/// which derives from this face, and returns its result.
template <class Interface, class Owner, class Unit>
class BufferFace : public Interface {
public:
    int GetLength() const override;
    const Unit* GetData() const override;
    std::int32_t GetReadLock(const Unit** out) const override;
    std::int32_t ReleaseReadLock() const override;
    std::int16_t IsWritable() const override;
    std::int32_t GetWriteLock(int minimumLength, Unit** out) override;
    std::int32_t EnsureCapacity(int minimumLength, Unit** out) override;
    std::int32_t ReleaseWriteLock(int length) override;
    std::int32_t FreeExtra() override;

protected:
    BufferFace() = default;
    ~BufferFace() = default;
};

} // namespace vx::util::detail
