#pragma once

#include "vx/Object.h"

namespace vx::crypto {

/// The digest of a message that is passed in pieces. One thread at a time.
class VX_API MessageDigest : public Object {
public:
    MessageDigest(const MessageDigest&) noexcept = default;
    MessageDigest& operator=(const MessageDigest&) noexcept = default;
    ~MessageDigest() noexcept override;

    /// A `length` below 1 adds nothing; null with more throws ResultException.
    virtual void update(const signed char* bytes, int length) = 0;
    /// Writes `getLength()` bytes and starts a new message. If `size` is less, throws ResultException, and the message
    /// may be continued.
    virtual void getDigest(signed char* target, int size) = 0;
    /// Discards the message so far.
    virtual void reset() = 0;
    /// The length of the digest in bytes.
    virtual int getLength() const = 0;
    /// The name of the algorithm.
    virtual String getName() const = 0;

protected:
    MessageDigest() noexcept = default;
};

} // namespace vx::crypto
