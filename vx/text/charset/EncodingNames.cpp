#include "vx/text/charset/EncodingNames.h"

#include "vx/text/charset/detail/CodecTable.h"
#include "vx/text/charset/detail/EncodingNames.h"

#include <algorithm>

namespace vx::text::charset {

namespace {

/// The names in the IANA registry of character sets that are in none of the other tables, separated by spaces.
constexpr struct {
    const char16_t* encoding;
    std::u16string_view aliases;
} REGISTERED[] = {
    {u"CP1252", u"CSWINDOWS1252"},
    {u"UTF-8", u"CSUTF8"},
    {u"UTF-16LE", u"CSUTF16LE"},
    {u"UTF-16BE", u"CSUTF16BE"},
    {u"UTF-32BE", u"CSUTF32BE"},
    {u"UTF-32LE", u"CSUTF32LE"},
    {u"CP1250", u"CSWINDOWS1250"},
    {u"CP1251", u"CSWINDOWS1251"},
    {u"CP1253", u"CSWINDOWS1253"},
    {u"CP1254", u"CSWINDOWS1254"},
    {u"CP1255", u"CSWINDOWS1255"},
    {u"CP1256", u"CSWINDOWS1256"},
    {u"CP1257", u"CSWINDOWS1257"},
    {u"CP1258", u"CSWINDOWS1258"},
    {u"CP775", u"IBM775 CSPC775BALTIC"},
    {u"CP850", u"IBM850 CSPC850MULTILINGUAL"},
    {u"CP852", u"IBM852 CSPCP852"},
    {u"CP855", u"IBM855 CSIBM855"},
    {u"CP857", u"IBM857 CSIBM857"},
    {u"CP858", u"IBM00858 CCSID00858 CP00858 PC-MULTILINGUAL-850+EURO CSIBM00858"},
    {u"CP862", u"IBM862 CSPC862LATINHEBREW"},
    {u"CP866", u"IBM866 CSIBM866"},
    {u"CP932", u"CSWINDOWS31J"},
    {u"CP936", u"GBK MS936 WINDOWS-936 CSGBK CSGB2312"},
    {u"CP949", u"ISO-IR-149 KS_C_5601-1989 KSC_5601 KOREAN CSKSC56011987"},
    {u"CP950", u"CSBIG5"},
    {u"EUCJP", u"EXTENDED_UNIX_CODE_PACKED_FORMAT_FOR_JAPANESE CSEUCPKDFMTJAPANESE"},
    {u"ISO-8859-2", u"ISO_8859-2:1987 ISO-IR-101 ISO_8859-2 LATIN2 L2 CSISOLATIN2"},
    {u"ISO-8859-3", u"ISO_8859-3:1988 ISO-IR-109 ISO_8859-3 LATIN3 L3 CSISOLATIN3"},
    {u"ISO-8859-4", u"ISO_8859-4:1988 ISO-IR-110 ISO_8859-4 LATIN4 L4 CSISOLATIN4"},
    {u"ISO-8859-5", u"ISO_8859-5:1988 ISO-IR-144 ISO_8859-5 CYRILLIC CSISOLATINCYRILLIC"},
    {u"ISO-8859-6", u"ISO_8859-6:1987 ISO-IR-127 ISO_8859-6 ECMA-114 ASMO-708 ARABIC CSISOLATINARABIC"},
    {u"ISO-8859-7", u"ISO_8859-7:1987 ISO-IR-126 ISO_8859-7 ELOT_928 ECMA-118 GREEK GREEK8 CSISOLATINGREEK"},
    {u"ISO-8859-8", u"ISO_8859-8:1988 ISO-IR-138 ISO_8859-8 HEBREW CSISOLATINHEBREW"},
    {u"ISO-8859-9", u"ISO_8859-9:1989 ISO-IR-148 ISO_8859-9 LATIN5 L5 CSISOLATIN5"},
    {u"ISO-8859-10", u"ISO-IR-157 L6 ISO_8859-10:1992 CSISOLATIN6 LATIN6"},
    {u"ISO-8859-11", u"TIS-620 CSTIS620"},
    {u"ISO-8859-13", u"CSISO885913"},
    {u"ISO-8859-14", u"ISO-IR-199 ISO_8859-14:1998 ISO_8859-14 LATIN8 ISO-CELTIC L8 CSISO885914"},
    {u"ISO-8859-15", u"ISO_8859-15 LATIN-9 CSISO885915"},
    {u"ISO-8859-16", u"ISO-IR-226 ISO_8859-16:2001 ISO_8859-16 LATIN10 L10 CSISO885916"},
    {u"KOI8-R", u"CSKOI8R"},
    {u"KOI8-U", u"CSKOI8U"},
    {u"Shift_JIS", u"MS_KANJI CSSHIFTJIS"},
    {u"EUC-KR", u"CSEUCKR"},
    {u"GB18030", u"CSGB18030"},
    {u"ISO-2022-JP", u"CSISO2022JP"},
    {u"UTF-16", u"CSUTF16"},
    {u"UTF-32", u"CSUTF32"},
};

/// Calls `take` with each of the names until it returns false.
template <class Take>
void forEachName(std::u16string_view names, Take take)
{
    for (;;) {
        const std::size_t end = names.find(u' ');
        if (!take(names.substr(0, end)) || end == names.npos)
            return;
        names.remove_prefix(end + 1);
    }
}

EncodingNames& namesOf(std::vector<EncodingNames>& all, std::u16string_view encoding)
{
    const auto found
        = std::find_if(all.begin(), all.end(), [&](const EncodingNames& names) { return names.name == encoding; });
    return found != all.end() ? *found : all.emplace_back(EncodingNames {String(encoding), {}});
}

} // namespace

std::vector<EncodingNames> getEncodingNames()
{
    std::vector<EncodingNames> all;
    for (const detail::CodecRow& row : detail::codecTable()) {
        EncodingNames& names = namesOf(all, row.canonicalName == nullptr ? row.name : row.canonicalName);
        if (names.name != row.name)
            names.aliases.emplace_back(row.name);
    }
    for (const detail::CodePageRow& row : detail::codePageTable())
        namesOf(all, row.name);
    for (const detail::AliasRow& row : detail::aliasTable())
        namesOf(all, row.target).aliases.emplace_back(row.alias);
    for (const auto& row : REGISTERED) {
        forEachName(row.aliases, [&names = namesOf(all, row.encoding)](std::u16string_view alias) {
            names.aliases.emplace_back(alias);
            return true;
        });
    }
    return all;
}

namespace detail {

String encodingOf(std::u16string_view alias)
{
    for (const auto& row : REGISTERED) {
        bool isFound = false;
        forEachName(row.aliases, [&](std::u16string_view name) { return !(isFound = name == alias); });
        if (isFound)
            return row.encoding;
    }
    return {};
}

} // namespace detail

} // namespace vx::text::charset
