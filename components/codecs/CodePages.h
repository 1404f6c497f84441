#pragma once

#include "SingleByteTables.h"

#include <cstdint>
#include <iterator>
#include <string_view>

namespace vx::components {

class Codec;
struct CodePage;

// Each makes a codec with reference count 0. Throws Exception if the system does not know an encoding that it converts.
Codec* makeSystemCodec(const CodePage& page);
Codec* makeComposingCodec(const CodePage& page);
Codec* makeSingleByteCodec(const CodePage& page);
Codec* makeShiftJisCodec(const CodePage& page);
Codec* makeEucKrCodec(const CodePage& page);
Codec* makeGb18030Codec(const CodePage& page);
Codec* makeIso2022JpCodec(const CodePage& page);
Codec* makeUtf16Codec(const CodePage& page);
Codec* makeUtf32Codec(const CodePage& page);

/// An encoding in this library.
struct CodePage {
    const char16_t* progId;
    std::uint16_t number; ///< part of its class identifier: the code page, or the MIBenum of the IANA registry
    std::int32_t maxBytesPerChar;
    const char* systemName; ///< its name in the system's converter; null if this library has a table for it
    Codec* (*make)(const CodePage&);
    const char16_t (*upper)[128]; ///< of a single-byte encoding: the characters of the bytes from 0x80 on

    /// The name of the encoding, which is the end of its ProgID.
    constexpr const char16_t* name() const noexcept
    {
        return progId + std::u16string_view(u"Velmaris.CharCodec.").size();
    }
};

inline constexpr CodePage CODE_PAGES[] = {
    {u"Velmaris.CharCodec.CP1250", 1250, 1, nullptr, makeSingleByteCodec, &CP1250_UPPER},
    {u"Velmaris.CharCodec.CP1251", 1251, 1, nullptr, makeSingleByteCodec, &CP1251_UPPER},
    {u"Velmaris.CharCodec.CP1253", 1253, 1, nullptr, makeSingleByteCodec, &CP1253_UPPER},
    {u"Velmaris.CharCodec.CP1254", 1254, 1, nullptr, makeSingleByteCodec, &CP1254_UPPER},
    {u"Velmaris.CharCodec.CP1255", 1255, 3, "CP1255", makeComposingCodec, nullptr}, // a letter with its points
    {u"Velmaris.CharCodec.CP1256", 1256, 1, nullptr, makeSingleByteCodec, &CP1256_UPPER},
    {u"Velmaris.CharCodec.CP1257", 1257, 1, nullptr, makeSingleByteCodec, &CP1257_UPPER},
    {u"Velmaris.CharCodec.CP1258", 1258, 3, "CP1258", makeComposingCodec, nullptr}, // a letter with its tone
    {u"Velmaris.CharCodec.CP720", 720, 1, nullptr, makeSingleByteCodec, &CP720_UPPER},
    {u"Velmaris.CharCodec.CP737", 737, 1, nullptr, makeSingleByteCodec, &CP737_UPPER},
    {u"Velmaris.CharCodec.CP775", 775, 1, nullptr, makeSingleByteCodec, &CP775_UPPER},
    {u"Velmaris.CharCodec.CP850", 850, 1, nullptr, makeSingleByteCodec, &CP850_UPPER},
    {u"Velmaris.CharCodec.CP852", 852, 1, nullptr, makeSingleByteCodec, &CP852_UPPER},
    {u"Velmaris.CharCodec.CP855", 855, 1, nullptr, makeSingleByteCodec, &CP855_UPPER},
    {u"Velmaris.CharCodec.CP857", 857, 1, nullptr, makeSingleByteCodec, &CP857_UPPER},
    {u"Velmaris.CharCodec.CP858", 858, 1, nullptr, makeSingleByteCodec, &CP858_UPPER},
    {u"Velmaris.CharCodec.CP862", 862, 1, nullptr, makeSingleByteCodec, &CP862_UPPER},
    {u"Velmaris.CharCodec.CP866", 866, 1, nullptr, makeSingleByteCodec, &CP866_UPPER},
    {u"Velmaris.CharCodec.CP932", 932, 2, "CP932", makeSystemCodec, nullptr},
    {u"Velmaris.CharCodec.CP936", 936, 2, "CP936", makeSystemCodec, nullptr},
    {u"Velmaris.CharCodec.CP949", 949, 2, "CP949", makeSystemCodec, nullptr},
    {u"Velmaris.CharCodec.CP950", 950, 2, "CP950", makeSystemCodec, nullptr},
    {u"Velmaris.CharCodec.EUCJP", 20932, 3, "EUC-JP", makeSystemCodec, nullptr},
    {u"Velmaris.CharCodec.ISO-8859-2", 5, 1, nullptr, makeSingleByteCodec, &ISO_8859_2_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-3", 6, 1, nullptr, makeSingleByteCodec, &ISO_8859_3_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-4", 7, 1, nullptr, makeSingleByteCodec, &ISO_8859_4_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-5", 8, 1, nullptr, makeSingleByteCodec, &ISO_8859_5_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-6", 9, 1, nullptr, makeSingleByteCodec, &ISO_8859_6_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-7", 10, 1, nullptr, makeSingleByteCodec, &ISO_8859_7_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-8", 11, 1, nullptr, makeSingleByteCodec, &ISO_8859_8_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-9", 12, 1, nullptr, makeSingleByteCodec, &ISO_8859_9_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-10", 13, 1, nullptr, makeSingleByteCodec, &ISO_8859_10_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-11", 2259, 1, nullptr, makeSingleByteCodec, &ISO_8859_11_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-13", 109, 1, nullptr, makeSingleByteCodec, &ISO_8859_13_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-14", 110, 1, nullptr, makeSingleByteCodec, &ISO_8859_14_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-15", 111, 1, nullptr, makeSingleByteCodec, &ISO_8859_15_UPPER},
    {u"Velmaris.CharCodec.ISO-8859-16", 112, 1, nullptr, makeSingleByteCodec, &ISO_8859_16_UPPER},
    {u"Velmaris.CharCodec.KOI8-R", 2084, 1, nullptr, makeSingleByteCodec, &KOI8_R_UPPER},
    {u"Velmaris.CharCodec.KOI8-U", 2088, 1, nullptr, makeSingleByteCodec, &KOI8_U_UPPER},
    {u"Velmaris.CharCodec.Shift_JIS", 17, 2, nullptr, makeShiftJisCodec, nullptr},
    {u"Velmaris.CharCodec.EUC-KR", 38, 2, nullptr, makeEucKrCodec, nullptr},
    {u"Velmaris.CharCodec.GB18030", 114, 4, nullptr, makeGb18030Codec, nullptr},
    {u"Velmaris.CharCodec.ISO-2022-JP", 39, 8, nullptr, makeIso2022JpCodec, nullptr}, // with an escape before and after
    {u"Velmaris.CharCodec.UTF-16", 1015, 4, nullptr, makeUtf16Codec, nullptr}, // with the mark
    {u"Velmaris.CharCodec.UTF-32", 1017, 8, nullptr, makeUtf32Codec, nullptr},
};

inline constexpr std::size_t CODE_PAGE_COUNT = std::size(CODE_PAGES);

} // namespace vx::components
