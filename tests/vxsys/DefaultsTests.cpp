#include "vxsys/Defaults.h"

#include "Scratch.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <string>

namespace {

using namespace vxsys::results;

TEST(Defaults, FollowTheEnvironment)
{
    struct {
        const char* all;
        const char* type;
        const char* messages;
        const char* language;
        const char* encoding;
        const char* locale;
    } cases[] = {
        {nullptr, nullptr, nullptr, nullptr, "UTF-8", "en_US"},
        {"", "", "", "", "UTF-8", "en_US"},
        {"C", nullptr, nullptr, nullptr, "UTF-8", "en_US"},
        {nullptr, nullptr, nullptr, "POSIX", "UTF-8", "en_US"},
        {nullptr, nullptr, nullptr, "C.UTF-8", "UTF-8", "en_US"},
        {nullptr, nullptr, nullptr, "xx_XX.ISO8859-15@euro", "ISO-8859-15", "xx_XX"},
        {nullptr, nullptr, "yy_YY.UTF-8", "xx_XX.KOI8-R", "KOI8-R", "yy_YY"},
        {nullptr, "xx_XX.KOI8-U", "", "yy.KOI8-R", "KOI8-U", "yy"},
        {"xx_419.KOI8-R", "yy_YY.UTF-8", "yy_YY.UTF-8", "yy_YY.UTF-8", "KOI8-R", "xx_419"},
        {nullptr, nullptr, nullptr, "xx_XX@latin", "UTF-8", "xx_XX"},
        {nullptr, nullptr, nullptr, "xx_XX.", "UTF-8", "xx_XX"},
        {nullptr, nullptr, nullptr, "/some/path", "UTF-8", "en_US"},
        {nullptr, nullptr, nullptr, "xx_.a\xFF", "UTF-8", "en_US"},
        {nullptr, nullptr, nullptr, "xx_X9", "UTF-8", "en_US"},
    };
    for (const auto& row : cases) {
        const ScopedVariable all("LC_ALL", row.all);
        const ScopedVariable type("LC_CTYPE", row.type);
        const ScopedVariable messages("LC_MESSAGES", row.messages);
        const ScopedVariable language("LANG", row.language);
        const std::string before = std::setlocale(LC_ALL, nullptr);
        char16_t name[40];
        EXPECT_EQ(VXGetDefaultCharEncoding(name, 40), 0);
        EXPECT_EQ(name, std::u16string(row.encoding, row.encoding + std::strlen(row.encoding)));
        EXPECT_EQ(VXGetDefaultLocale(name, 40), 0);
        EXPECT_EQ(name, std::u16string(row.locale, row.locale + std::strlen(row.locale)));
        EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before) << "the process's locale is not ours";
    }
}

TEST(Defaults, LeaveAnEmptyTextWhereTheNameDoesNotFit)
{
    const ScopedVariable all("LC_ALL", "xx_XX.ISO8859-1");
    char16_t name[] = u"###########";
    EXPECT_EQ(VXGetDefaultCharEncoding(name, 10), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(name[0], u'\0');
    EXPECT_EQ(VXGetDefaultCharEncoding(name, 11), 0);
    EXPECT_EQ(VXGetDefaultLocale(name, 5), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(name[0], u'\0');
    EXPECT_EQ(VXGetDefaultLocale(name, 6), 0);
    EXPECT_EQ(VXGetDefaultLocale(name, 0), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXGetDefaultCharEncoding(nullptr, 40), RESULT_INVALID_ARGUMENT);
}

} // namespace
