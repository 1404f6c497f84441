#include "enc_info.h"

#include "vx/text/charset/EncInfo.h"

#include <stddef.h>
#include <stdio.h>

enum { FAIL = (int)0x80004005, INVALID = (int)0x80070057, TOO_SMALL = (int)0x80004009, COUNT = 28 };

struct Named {
    const char16_t* asked;
    const char16_t* name; /* null: nobody knows it */
    uint32_t codePage;
};

static const struct Named NAMED[] = {{u"ANSI_X3.4-1968", u"ASCII", 20127}, {u"ascii", u"ASCII", 20127},
    {u"20127", u"ASCII", 20127}, {u"Default", u"ASCII", 20127}, {u"iso_8859-1:1978", u"ISO8859_1", 28591},
    {u"819", u"ISO8859_1", 28591}, {u"28591", u"ISO8859_1", 28591}, {u"cspc8codepage437", u"CP437", 437},
    {u"1252", u"CP1252", 1252}, {u"utf_8", u"UTF-8", 65001}, {u"65001", u"UTF-8", 65001}, {u"euc-jp", u"EUCJP", 20932},
    {u"EUC_JP", u"EUCJP", 20932}, {u"windows-31j", u"CP932", 932}, {u"ms932", u"CP932", 932},
    {u"gb2312", u"CP936", 936}, {u"ks_c_5601-1987", u"CP949", 949}, {u"Big5", u"CP950", 950},
    {u"Windows-1250", u"CP1250", 1250}, {u"WINDOWS-1252", u"CP1252", 1252}, {u"windows-1258", u"CP1258", 1258},
    {u"858", u"CP858", 858}, {u"UTF-16LE", NULL, 0}, {u"UTF-32BE", NULL, 0}, {u"AMP-7", NULL, 0}, {u"A7", NULL, 0},
    {u"windows-1259", NULL, 0}, {u"0", NULL, 0}, {u"01252", NULL, 0}, {u"", NULL, 0}};

static const VXEncInfo IN_ORDER[COUNT] = {{u"ASCII", 20127, 0}, {u"ISO8859_1", 28591, 0}, {u"CP437", 437, 0},
    {u"CP1252", 1252, 0}, {u"UTF-8", 65001, 0}, {u"CP1250", 1250, 0}, {u"CP1251", 1251, 0}, {u"CP1253", 1253, 0},
    {u"CP1254", 1254, 0}, {u"CP1255", 1255, 0}, {u"CP1256", 1256, 0}, {u"CP1257", 1257, 0}, {u"CP1258", 1258, 0},
    {u"CP720", 720, 0}, {u"CP737", 737, 0}, {u"CP775", 775, 0}, {u"CP850", 850, 0}, {u"CP852", 852, 0},
    {u"CP855", 855, 0}, {u"CP857", 857, 0}, {u"CP858", 858, 0}, {u"CP862", 862, 0}, {u"CP866", 866, 0},
    {u"CP932", 932, 0}, {u"CP936", 936, 0}, {u"CP949", 949, 0}, {u"CP950", 950, 0}, {u"EUCJP", 20932, 0}};

static int same(const char16_t* left, const char16_t* right)
{
    while (*left != 0 && *left == *right) {
        ++left;
        ++right;
    }
    return *left == *right;
}

static int isRecord(const VXEncInfo* info, const char16_t* name, uint32_t codePage)
{
    return same(info->name, name) && info->codePage == codePage && info->reserved == 0;
}

static char g_fault[80];

static const char* fault(const char* what, int row)
{
    snprintf(g_fault, sizeof g_fault, "%s, row %d", what, row);
    return g_fault;
}

const char* encInfoFault(void)
{
    VXEncInfo info = {NULL, 7, 7};
    VXEncInfo infos[COUNT + 1];
    uint32_t count = 0;

    for (int row = 0; row < (int)(sizeof NAMED / sizeof *NAMED); ++row) {
        const int32_t result = VXGetEncInfoByName(NAMED[row].asked, &info);
        if (NAMED[row].name == NULL ? result != FAIL
                                    : result != 0 || !isRecord(&info, NAMED[row].name, NAMED[row].codePage))
            return fault("by name", row);
    }
    for (int row = 0; row < COUNT; ++row) {
        if (VXGetEncInfoByCodePage((int32_t)IN_ORDER[row].codePage, &info) != 0
            || !isRecord(&info, IN_ORDER[row].name, IN_ORDER[row].codePage))
            return fault("by code page", row);
    }
    if (VXGetEncInfoByCodePage(0, &info) != FAIL || VXGetEncInfoByCodePage(-1252, &info) != FAIL)
        return "code pages that nobody has";
    if (VXGetEncInfoByName(NULL, &info) != INVALID || VXGetEncInfoByName(u"ASCII", NULL) != INVALID
        || VXGetEncInfoByCodePage(1252, NULL) != INVALID || VXEnumerateEncInfo(NULL, infos) != INVALID)
        return "null pointers";

    if (VXEnumerateEncInfo(&count, NULL) != TOO_SMALL || count != COUNT)
        return "asking for the number";
    if (VXEnumerateEncInfo(&count, NULL) != INVALID)
        return "room without an array";
    count = COUNT - 1;
    infos[0].name = NULL;
    if (VXEnumerateEncInfo(&count, infos) != TOO_SMALL || count != COUNT || infos[0].name != NULL)
        return "too little room";
    count = COUNT + 1;
    infos[COUNT].codePage = 7;
    if (VXEnumerateEncInfo(&count, infos) != 0 || count != COUNT || infos[COUNT].codePage != 7)
        return "more room than records";
    for (int row = 0; row < COUNT; ++row) {
        if (!isRecord(&infos[row], IN_ORDER[row].name, IN_ORDER[row].codePage))
            return fault("in order", row);
    }
    return NULL;
}
