#include "vx/text/charset/detail/CodecTable.h"

#include <iterator>

namespace vx::text::charset::detail {

namespace {

constexpr CodecRow CODECS[] = {
    {u"ASCII", 20127, nullptr, u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ANSI_X3.4-1968", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ISO-IR-6", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ANSI_X3.4-1986", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ISO_646.IRV:1991", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ASCII", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ISO646-US", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"US-ASCII", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"US", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"IBM367", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"CP367", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"CSASCII", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"646", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"DEFAULT", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ASCII7", 0, u"ASCII", u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII"},
    {u"ISO8859_1", 28591, nullptr, u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"ISO_8859-1:1987", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"ISO-IR-100", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"ISO_8859-1", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"ISO-8859-1", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"LATIN1", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"L1", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"IBM819", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"CP819", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"CSISOLATIN1", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"8859_1", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"ISO_8859-1:1978", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"IBM-819", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"819", 0, u"ISO8859_1", u"vx::text::charset::CTBISO8859_1", u"vx::text::charset::BTCISO8859_1"},
    {u"CP437", 437, nullptr, u"vx::text::charset::CTBCP437", u"vx::text::charset::BTCCP437"},
    {u"IBM437", 0, u"CP437", u"vx::text::charset::CTBCP437", u"vx::text::charset::BTCCP437"},
    {u"437", 0, u"CP437", u"vx::text::charset::CTBCP437", u"vx::text::charset::BTCCP437"},
    {u"CSPC8CODEPAGE437", 0, u"CP437", u"vx::text::charset::CTBCP437", u"vx::text::charset::BTCCP437"},
    {u"IBM-437", 0, u"CP437", u"vx::text::charset::CTBCP437", u"vx::text::charset::BTCCP437"},
    {u"CP1252", 1252, nullptr, u"vx::text::charset::CTBCP1252", u"vx::text::charset::BTCCP1252"},
    {u"WINDOWS-1252", 0, u"CP1252", u"vx::text::charset::CTBCP1252", u"vx::text::charset::BTCCP1252"},
    {u"UTF-8", 65001, nullptr, u"vx::text::charset::CTBUTF8", u"vx::text::charset::BTCUTF8"},
    {u"UTF8", 0, u"UTF-8", u"vx::text::charset::CTBUTF8", u"vx::text::charset::BTCUTF8"},
    {u"UTF_8", 0, u"UTF-8", u"vx::text::charset::CTBUTF8", u"vx::text::charset::BTCUTF8"},
    {u"UTF-16LE", 0, nullptr, u"vx::text::charset::CTBUTF16LE", u"vx::text::charset::BTCUTF16LE"},
    {u"UTF-16BE", 0, nullptr, u"vx::text::charset::CTBUTF16BE", u"vx::text::charset::BTCUTF16BE"},
    {u"UTF-32BE", 0, nullptr, u"vx::text::charset::CTBUTF32BE", u"vx::text::charset::BTCUTF32BE"},
    {u"UTF-32LE", 0, nullptr, u"vx::text::charset::CTBUTF32LE", u"vx::text::charset::BTCUTF32LE"},
    {u"AMP-7", 0, nullptr, u"vx::text::charset::CTBAMP7", u"vx::text::charset::BTCAMP7"},
    {u"A7", 0, u"AMP-7", u"vx::text::charset::CTBAMP7", u"vx::text::charset::BTCAMP7"},
};
static_assert(std::size(CODECS) == 45);

constexpr CodePageRow CODE_PAGES[] = {
    {u"CP1250", 1250},
    {u"CP1251", 1251},
    {u"CP1253", 1253},
    {u"CP1254", 1254},
    {u"CP1255", 1255},
    {u"CP1256", 1256},
    {u"CP1257", 1257},
    {u"CP1258", 1258},
    {u"CP720", 720},
    {u"CP737", 737},
    {u"CP775", 775},
    {u"CP850", 850},
    {u"CP852", 852},
    {u"CP855", 855},
    {u"CP857", 857},
    {u"CP858", 858},
    {u"CP862", 862},
    {u"CP866", 866},
    {u"CP932", 932},
    {u"CP936", 936},
    {u"CP949", 949},
    {u"CP950", 950},
    {u"EUCJP", 20932},
};

constexpr AliasRow ALIASES[] = {
    {u"EUC-JP", u"EUCJP"},
    {u"EUC_JP", u"EUCJP"},
    {u"WINDOWS-31J", u"CP932"},
    {u"MS932", u"CP932"},
    {u"GB2312", u"CP936"},
    {u"KS_C_5601-1987", u"CP949"},
    {u"BIG5", u"CP950"},
    {u"WINDOWS-1250", u"CP1250"},
    {u"WINDOWS-1251", u"CP1251"},
    {u"WINDOWS-1253", u"CP1253"},
    {u"WINDOWS-1254", u"CP1254"},
    {u"WINDOWS-1255", u"CP1255"},
    {u"WINDOWS-1256", u"CP1256"},
    {u"WINDOWS-1257", u"CP1257"},
    {u"WINDOWS-1258", u"CP1258"},
};

} // namespace

std::span<const CodecRow> codecTable() noexcept
{
    return CODECS;
}

std::span<const CodePageRow> codePageTable() noexcept
{
    return CODE_PAGES;
}

std::span<const AliasRow> aliasTable() noexcept
{
    return ALIASES;
}

} // namespace vx::text::charset::detail
