#pragma once

#include "vx/Object.h"

namespace vx::crypto {

/// A digest of a message that comes in pieces. One thread at a time.
class VX_API MessageDigest : public Object {
public:
    MessageDigest(const MessageDigest&) noexcept = default;
    MessageDigest& operator=(const MessageDigest&) noexcept = default;
    ~MessageDigest() noexcept override;

    /// A `length` below 1 adds nothing; null with more throws ResultException.
    virtual void update(const signed char* bytes, int length) = 0;
    /// Writes `getLength()` bytes and starts anew. Throws ResultException where `size` is less, and the message goes on.
    virtual void getDigest(signed char* target, int size) = 0;
    /// Forgets the message so far.
    virtual void reset() = 0;
    /// Of the digest, in bytes.
    virtual int getLength() const = 0;
    /// Of the algorithm.
    virtual String getName() const = 0;

protected:
    MessageDigest() noexcept = default;
};

} // namespace vx::crypto
