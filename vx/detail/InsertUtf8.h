#pragma once

#include <ostream>
#include <string>

namespace vx::detail {

/// Inserts a text in UTF-8 as the inserters of the standard library do. If the bytes cannot be made, sets badbit, and
/// throws only if the stream's exceptions() ask for that.
template <class Text>
std::ostream& insertUtf8(std::ostream& stream, const Text& text)
{
    std::string bytes;
    try {
        bytes = text.toUtf8();
    } catch (...) {
        const bool isAskedFor = (stream.exceptions() & std::ios_base::badbit) != 0;
        try {
            stream.setstate(std::ios_base::badbit);
        } catch (const std::ios_base::failure&) { // the failure of the text says more
        }
        if (isAskedFor)
            throw;
        return stream;
    }
    return stream << bytes;
}

} // namespace vx::detail
