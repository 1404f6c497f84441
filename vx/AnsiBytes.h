#pragma once

#include "vx/String.h"
#include "vx/util/RWByteBuffer.h"

#include <memory>

namespace vx {

/// The text of a string in one encoding, as `String::getBytes` stores it. The length includes the terminating zero byte
/// if there was room for it.
class VX_API String::AnsiBytes : public util::RWByteBuffer {
public:
    /// Copies the name; null is the default encoding.
    explicit AnsiBytes(const char16_t* encoding);
    /// Both copy the bytes and move the name out of the source.
    AnsiBytes(AnsiBytes& other);
    AnsiBytes& operator=(AnsiBytes& other);
    ~AnsiBytes() noexcept override;

    /// Compares names without the case of ASCII letters. Null equals only null.
    bool encodingEquals(const char16_t* name) const;

    /// Frees the room that the encoding did not need. If memory is exhausted, nothing changes.
    void releaseExtra() noexcept;

private:
    std::unique_ptr<char16_t[]> m_encoding;
};

} // namespace vx
