#include "vxsys/Defaults.h"

#include "Scratch.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <barrier>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

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
        {{"xx_XX.Utf_8"}, u"Utf_8", u"xx_XX"}, {{"xx_XX.UTF-80"}, u"UTF-80", u"xx_XX"},
        {{"xx_XX.UTF-"}, u"UTF-", u"xx_XX"}, {{"xx_XX.KOI8-R", "yy_YY.UTF-8"}, u"KOI8-R", u"yy_YY"},
        {{"yy.KOI8-R", "", "xx_XX.KOI8-U"}, u"KOI8-U", u"yy"},
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
        const bool isUtf8 = row.encoding == u"UTF-8" || row.encoding == u"Utf_8";
        EXPECT_EQ(VXIsDefaultCharEncodingUtf8(), isUtf8 ? 1 : 0);
        EXPECT_EQ(VXGetDefaultLocale(name, 40), 0);
        EXPECT_EQ(name, row.locale);
    }
}

/// The destructor sets all variables to what they were.
class SavedEnvironment : NotCopied {
public:
    SavedEnvironment()
    {
        for (char** entry = ::environ; *entry != nullptr; ++entry)
            m_entries.emplace_back(*entry);
    }
    ~SavedEnvironment()
    {
        ::clearenv();
        for (const std::string& entry : m_entries) {
            const std::size_t nameEnd = entry.find('=');
            ::setenv(entry.substr(0, nameEnd).c_str(), entry.c_str() + nameEnd + 1, 1);
        }
    }

private:
    std::vector<std::string> m_entries;
};

std::u16string defaultEncoding()
{
    const bool isUtf8 = VXIsDefaultCharEncodingUtf8() != 0; // the first that sees a change
    char16_t name[40];
    EXPECT_EQ(VXGetDefaultCharEncoding(name, 40), 0);
    EXPECT_EQ(isUtf8, std::u16string_view(name) == u"UTF-8");
    return name;
}

char g_ownEntry[] = "LC_CTYPE=xx_XX.KOI8-R"; // which the program changes in place
char* const g_ownLetter = g_ownEntry + sizeof g_ownEntry - 2;
char* const g_ownValue = std::strchr(g_ownEntry, '=') + 1;
char g_firstEntry[] = "LANG=xx_XX.KOI8-R";
char g_secondEntry[] = "LANG=xx_XX.KOI8-U";
char* g_ownArray[] = {g_firstEntry, nullptr};

const struct {
    const char* what;
    void (*change)();
    std::u16string_view encoding;
} ENVIRONMENT_CHANGES[] = {
    {"nothing", [] {}, u"ISO-8859-15"},
    {"a new variable", [] { ::setenv("LC_ALL", "xx_XX.KOI8-R", 1); }, u"KOI8-R"},
    {"another value", [] { ::setenv("LC_ALL", "xx_XX.KOI8-U", 1); }, u"KOI8-U"},
    {"the first value again", [] { ::setenv("LC_ALL", "xx_XX.KOI8-R", 1); }, u"KOI8-R"},
    {"an empty value", [] { ::setenv("LC_ALL", "", 1); }, u"ISO-8859-15"},
    {"a string of the program", [] { ::putenv(g_ownEntry); }, u"KOI8-R"},
    {"that string in place", [] { *g_ownLetter = 'U'; }, u"KOI8-U"},
    {"that string made empty in place", [] { *g_ownValue = '\0'; }, u"ISO-8859-15"},
    {"that string filled again", [] { *g_ownValue = 'x'; }, u"KOI8-U"},
    {"no such variable", [] { ::unsetenv("LC_CTYPE"); }, u"ISO-8859-15"},
    {"two others", [] { ::setenv("VX_A", "1", 1), ::setenv("VX_B", "1", 1); }, u"ISO-8859-15"},
    {"as many variables as before, and the same last one",
        [] {
            ::unsetenv("VX_A"), ::unsetenv("VX_B");
            ::setenv("LC_CTYPE", "xx_XX.KOI8-R", 1), ::setenv("VX_B", "1", 1);
        },
        u"KOI8-R"},
    {"none", [] { ::clearenv(); }, u"UTF-8"},
    {"one in an empty environment", [] { ::setenv("LANG", "xx_XX.KOI8-R", 1); }, u"KOI8-R"},
    {"another array", [] { ::clearenv(), ::environ = g_ownArray; }, u"KOI8-R"},
    {"a place in that array", [] { g_ownArray[0] = g_secondEntry; }, u"KOI8-U"},
    {"no array", [] { ::environ = nullptr; }, u"UTF-8"},
};

TEST(Defaults, FollowEachWayOfChangingTheEnvironment)
{
    for (const int others : {0, 1, 2, 3, 300}) {
        const SavedEnvironment restored;
        ::clearenv();
        for (int number = 0; number < others; ++number)
            ::setenv(("VX_OTHER_" + std::to_string(number)).c_str(), "1", 1);
        ::setenv("LANG", "xx_XX.ISO8859-15", 1);
        *g_ownLetter = 'R';
        g_ownArray[0] = g_firstEntry;

        std::barrier<> step(2);
        std::thread another([&] { // changes nothing, and sees all that this one changes
            for (const auto& row : ENVIRONMENT_CHANGES) {
                step.arrive_and_wait();
                EXPECT_EQ(defaultEncoding(), row.encoding) << row.what << ", beside " << others;
                step.arrive_and_wait();
            }
        });
        for (const auto& row : ENVIRONMENT_CHANGES) {
            row.change();
            EXPECT_EQ(defaultEncoding(), row.encoding) << row.what << ", beside " << others;
            step.arrive_and_wait();
            step.arrive_and_wait();
        }
        another.join();
    }
}

} // namespace
