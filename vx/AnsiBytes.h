#pragma once

#include "vx/String.h"
#include "vx/util/RWByteBuffer.h"

#include <memory>

namespace vx {

/// A string's text in one encoding, as `String::getBytes` keeps it. Its length counts the terminating zero byte when there
/// was room for it.
class VX_API String::AnsiBytes : public util::RWByteBuffer {
public:
    /// Copies the name; null is the default encoding.
    explicit AnsiBytes(const char16_t* encoding);
    /// Both take the bytes as a copy and move the name out of the source.
    AnsiBytes(AnsiBytes& other);
    AnsiBytes& operator=(AnsiBytes& other);
    ~AnsiBytes() noexcept override;

    /// Names are equal without regard to the case of ASCII letters; null equals null alone.
    bool encodingEquals(const char16_t* name) const;

    /// Gives back the room that the encoding did not need; exhaustion leaves it.
    void releaseExtra() noexcept;

private:
    std::unique_ptr<char16_t[]> m_encoding;
};

} // namespace vx
