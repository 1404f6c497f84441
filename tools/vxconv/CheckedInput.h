#pragma once

#include "Utf8Check.h"
#include "common/Input.h"
#include "common/Progress.h"

#include <vx/io/FilterInputStream.h>

#include <cstdint>
#include <string_view>

namespace vxconv {

/// Passes the bytes of the input to the decoder and checks for errors that the decoder does not report: it replaces
/// bytes that are not valid UTF-8, and an incomplete character at the end of the input.
class CheckedInput : public vx::io::FilterInputStream {
public:
    /// `encoding` is the canonical name. `start`: the bytes of the input that were read before.
    CheckedInput(
        const vxtools::Input& input, std::u16string_view encoding, std::int64_t start, vxtools::Progress& progress);

    // FilterInputStream
    using FilterInputStream::read;
    /// Throws Failure with the position of an error.
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    void checkEnd() const;
    [[noreturn]] void failAt(std::int64_t place, const vxtools::Text& why) const;

    vxtools::Text m_name;
    vxtools::Progress& m_progress;
    bool m_isUtf8;
    int m_unitSize = 1;
    const std::int64_t m_start;
    std::int64_t m_position = 0; ///< from the start
    Utf8Check m_utf8;
};

} // namespace vxconv
