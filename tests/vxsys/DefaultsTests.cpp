#include "vxsys/Defaults.h"

#include "Scratch.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

namespace {

using namespace vxsys::results;

TEST(Defaults, FollowTheEnvironment)
{
    struct {
        const char* variables[4]; // LANG, LC_MESSAGES, LC_CTYPE, LC_ALL
        std::u16string encoding, locale;
    } cases[] = {{{}, u"UTF-8", u"en_US"}, {{"", "", "", ""}, u"UTF-8", u"en_US"},
        {{nullptr, nullptr, nullptr, "C"}, u"UTF-8", u"en_US"}, {{"POSIX"}, u"UTF-8", u"en_US"},
        {{"C.UTF-8"}, u"UTF-8", u"en_US"}, {{"xx_XX.ISO8859-15@euro"}, u"ISO-8859-15", u"xx_XX"},
        {{"xx_XX.KOI8-R", "yy_YY.UTF-8"}, u"KOI8-R", u"yy_YY"}, {{"yy.KOI8-R", "", "xx_XX.KOI8-U"}, u"KOI8-U", u"yy"},
        {{"yy_YY.UTF-8", "yy_YY.UTF-8", "yy_YY.UTF-8", "xx_419.KOI8-R"}, u"KOI8-R", u"xx_419"},
        {{"xx_XX@latin"}, u"UTF-8", u"xx_XX"}, {{"xx_XX."}, u"UTF-8", u"xx_XX"}, {{"/some/path"}, u"UTF-8", u"en_US"},
        {{"xx_.a\xFF"}, u"UTF-8", u"en_US"}, {{"xx_X9"}, u"UTF-8", u"en_US"}};
    for (const auto& row : cases) {
        const ScopedVariable language("LANG", row.variables[0]);
        const ScopedVariable messages("LC_MESSAGES", row.variables[1]);
        const ScopedVariable type("LC_CTYPE", row.variables[2]);
        const ScopedVariable all("LC_ALL", row.variables[3]);
        char16_t name[40];
        const auto length = static_cast<std::int32_t>(row.encoding.size());
        EXPECT_EQ(VXGetDefaultCharEncoding(name, length), RESULT_BUFFER_TOO_SMALL);
        EXPECT_EQ(name[0], u'\0');
        EXPECT_EQ(VXGetDefaultCharEncoding(name, length + 1), 0);
        EXPECT_EQ(name, row.encoding);
        EXPECT_EQ(VXGetDefaultLocale(name, 40), 0);
        EXPECT_EQ(name, row.locale);
    }
}

TEST(Defaults, FollowAStringThatTheProgramItselfChanges)
{
    static char variable[] = "LC_ALL=xx_XX.KOI8-R";
    const ScopedVariable all("LC_ALL", nullptr);
    ::putenv(variable);
    char16_t name[40];
    for (const auto& [last, encoding] : {std::pair('R', u"KOI8-R"), std::pair('U', u"KOI8-U")}) {
        variable[sizeof variable - 2] = last;
        EXPECT_EQ(VXGetDefaultCharEncoding(name, 40), 0);
        EXPECT_EQ(name, std::u16string(encoding));
    }
    ::unsetenv("LC_ALL");
}

} // namespace
