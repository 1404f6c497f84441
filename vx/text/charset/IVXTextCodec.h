#pragma once

#include "vx/IVXUnknown.h"

#include <cstdint>

/// Beside IVXCharCodec: an encoding from a component that converts many characters in one call. A codec has it for its
/// speed, or because its text has a state, such as shift sequences or a byte order mark: the codec keeps the state
/// between calls. So a codec serves one text in one direction. One thread at a time.
///
/// Both conversions stop before what they cannot convert. Their result codes:
/// - 0: all of the input is taken, except for an incomplete character at its end;
/// - RESULT_BUFFER_TOO_SMALL: there is no room for the next character;
/// - RESULT_UNMAPPABLE_CHARACTER: the next sequence has no character, or the next character has no bytes. The caller
///   replaces and passes over it. For the length of such a sequence it calls IVXCharCodec::ConvertBytes.
class VX_API IVXTextCodec : public IVXUnknown {
public:
    using InterfaceType = IVXTextCodec;
    static constexpr _GUID IID {0x3B0C65A7, 0x91DE, 0x4F28, {0x8A, 0x6B, 0xD5, 0x12, 0x7E, 0x40, 0xC9, 0x33}};

    /// `*length` is the number of bytes and becomes how many were taken; `*count` is the room in units and becomes how
    /// many were stored.
    virtual std::int32_t Decode(const signed char* bytes, std::int32_t* length, char16_t* units, std::int32_t* count)
        = 0;
    /// The opposite. Halves of surrogate pairs are characters without bytes, unless the encoding has such; the first
    /// half of a pair at the end is incomplete.
    virtual std::int32_t Encode(const char16_t* units, std::int32_t* length, signed char* bytes, std::int32_t* count)
        = 0;
    /// Stores the bytes that lead back to the initial state, all or none.
    virtual std::int32_t EndText(signed char* bytes, std::int32_t* count) = 0;
    /// The next call begins a new text.
    virtual std::int32_t Reset() = 0;

protected:
    ~IVXTextCodec() = default;
};
