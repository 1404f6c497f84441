#pragma once

#include <cstdint>
#include <iterator>

namespace vx::components {

/// An encoding in this library.
struct CodePage {
    const char16_t* progId;
    const char16_t* name;
    const char* systemName; ///< its name in the system's converter; null if this library has a table for it
    std::uint16_t number; ///< part of its class identifier
    std::int32_t maxBytesPerChar;
};

inline constexpr CodePage CODE_PAGES[] = {
    {u"Velmaris.CharCodec.CP1250", u"CP1250", "CP1250", 1250, 1},
    {u"Velmaris.CharCodec.CP1251", u"CP1251", "CP1251", 1251, 1},
    {u"Velmaris.CharCodec.CP1253", u"CP1253", "CP1253", 1253, 1},
    {u"Velmaris.CharCodec.CP1254", u"CP1254", "CP1254", 1254, 1},
    {u"Velmaris.CharCodec.CP1255", u"CP1255", "CP1255", 1255, 3}, // a letter with its points
    {u"Velmaris.CharCodec.CP1256", u"CP1256", "CP1256", 1256, 1},
    {u"Velmaris.CharCodec.CP1257", u"CP1257", "CP1257", 1257, 1},
    {u"Velmaris.CharCodec.CP1258", u"CP1258", "CP1258", 1258, 3}, // a letter with its tone
    {u"Velmaris.CharCodec.CP720", u"CP720", nullptr, 720, 1},
    {u"Velmaris.CharCodec.CP737", u"CP737", "CP737", 737, 1},
    {u"Velmaris.CharCodec.CP775", u"CP775", "CP775", 775, 1},
    {u"Velmaris.CharCodec.CP850", u"CP850", "CP850", 850, 1},
    {u"Velmaris.CharCodec.CP852", u"CP852", "CP852", 852, 1},
    {u"Velmaris.CharCodec.CP855", u"CP855", "CP855", 855, 1},
    {u"Velmaris.CharCodec.CP857", u"CP857", "CP857", 857, 1},
    {u"Velmaris.CharCodec.CP858", u"CP858", "CP858", 858, 1},
    {u"Velmaris.CharCodec.CP862", u"CP862", "CP862", 862, 1},
    {u"Velmaris.CharCodec.CP866", u"CP866", "CP866", 866, 1},
    {u"Velmaris.CharCodec.CP932", u"CP932", "CP932", 932, 2},
    {u"Velmaris.CharCodec.CP936", u"CP936", "CP936", 936, 2},
    {u"Velmaris.CharCodec.CP949", u"CP949", "CP949", 949, 2},
    {u"Velmaris.CharCodec.CP950", u"CP950", "CP950", 950, 2},
    {u"Velmaris.CharCodec.EUCJP", u"EUCJP", "EUC-JP", 20932, 3},
};

inline constexpr std::size_t CODE_PAGE_COUNT = std::size(CODE_PAGES);
static_assert(CODE_PAGE_COUNT == 23);

} // namespace vx::components
