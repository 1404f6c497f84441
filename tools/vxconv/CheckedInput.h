#pragma once

#include "Files.h"
#include "common/Progress.h"

#include <vx/io/FilterInputStream.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vxconv {

/// Passes the bytes of the input to the decoder and checks for errors that the decoder does not report: it replaces
/// bytes that are not valid UTF-8, and an incomplete character at the end of the input.
class CheckedInput : public vx::io::FilterInputStream {
public:
    /// `encoding` is the canonical name.
    CheckedInput(const Input& input, std::u16string_view encoding, vxtools::Progress& progress);

    // FilterInputStream
    using FilterInputStream::read;
    /// Throws Failure with the position of an error.
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    void checkUtf8(const signed char* bytes, std::int32_t length);
    void checkEnd() const;
    [[noreturn]] void failAt(std::int64_t place, const char* why) const;

    vxtools::Text m_name;
    vxtools::Progress& m_progress;
    bool m_isUtf8;
    int m_unitSize = 1;
    std::int64_t m_position = 0;
    // Of an incomplete UTF-8 character: the number of bytes read and missing, and the range of the next byte.
    int m_bytesHere = 0;
    int m_bytesMissing = 0;
    unsigned char m_lowest = 0x80;
    unsigned char m_highest = 0xBF;
};

} // namespace vxconv
