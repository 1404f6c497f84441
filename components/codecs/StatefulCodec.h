#pragma once

#include "TextCodec.h"

namespace vx::components {

/// A codec whose text has a state. A caller that knows only IVXCharCodec gets one character at a time from the same
/// conversions.
class StatefulCodec : public TextCodec {
protected:
    using TextCodec::TextCodec;

private:
    /// The length of the sequence without a character at the beginning of `bytes`. `codePoint` may become a number that
    /// is not a character.
    virtual int passOver(const unsigned char* bytes, int length, std::uint32_t& codePoint) = 0;

    int decode(const signed char* bytes, int length, std::uint32_t& codePoint) override
    {
        const auto* const start = reinterpret_cast<const unsigned char*>(bytes);
        char16_t units[2];
        Decoding pass {start, start + length, units, units + 1};
        std::int32_t result = decodeText(pass);
        if (pass.out == units && result == RESULT_BUFFER_TOO_SMALL) {
            pass.outEnd = units + 2;
            result = decodeText(pass);
        }
        const int taken = static_cast<int>(pass.in - start);
        if (pass.out != units) {
            codePoint = pass.out == units + 1 ? units[0] : vxsys::codePoint(units[0], units[1]);
            return taken;
        }
        return result == RESULT_UNMAPPABLE_CHARACTER ? taken + passOver(pass.in, length - taken, codePoint) : 0;
    }

    int encode(std::uint32_t codePoint, char* bytes) override
    {
        char16_t units[2];
        Decoding stored {nullptr, nullptr, units, units + 2};
        storeUnits(codePoint, stored);
        auto* const start = reinterpret_cast<unsigned char*>(bytes);
        Encoding pass {units, stored.out, start, start + MOST_BYTES};
        encodeText(pass);
        return static_cast<int>(pass.out - start);
    }
};

} // namespace vx::components
