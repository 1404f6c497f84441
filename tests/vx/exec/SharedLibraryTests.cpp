#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/exec/SharedLibrary.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>

namespace vx::exec {
namespace {

std::u16string withBackslashes(std::string path)
{
    std::u16string text = u"C:";
    for (const char unit : path)
        text += unit == '/' ? u'\\' : static_cast<char16_t>(unit);
    return text;
}

bool isMapped(const std::string& path)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(path) != line.npos)
            return true;
    }
    return false;
}

TEST(SharedLibrary, IsInTheProcessAsLongAsTheObjectLives)
{
    {
        SharedLibrary library(withBackslashes(PLUGIN_FILE).c_str());
        EXPECT_TRUE(isMapped(PLUGIN_FILE));
        EXPECT_EQ(reinterpret_cast<int (*)()>(library.getSymbol(u"plugin_answer"))(), 42);
        try {
            library.getSymbol(u"plugin_question");
            ADD_FAILURE() << "found what is not there";
        } catch (const ResultException& failure) {
            EXPECT_EQ(failure.getResult(), RESULT_SYMBOL_NOT_FOUND);
            EXPECT_EQ(failure.getDescription(), u"Failed to get symbol.");
        }
        EXPECT_THROW(library.getSymbol(nullptr), ResultException);
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__) // these keep what they saw
    EXPECT_FALSE(isMapped(PLUGIN_FILE));
#endif
}

TEST(SharedLibrary, TellsWhyNothingWasOpened)
{
    struct {
        const char16_t* name;
        std::int32_t result;
    } cases[] = {
        {nullptr, RESULT_INVALID_ARGUMENT},
        {u"", RESULT_INVALID_ARGUMENT},
        {u"libno-such-library-anywhere.so", RESULT_MODULE_NOT_FOUND},
        {u"C:\\no\\such\\library.so", RESULT_NOT_FOUND},
        {u"D:\\library.so", RESULT_PATH_NOT_FOUND},
        {u"C:\\etc\\passwd", RESULT_BAD_MODULE},
    };
    for (const auto& row : cases) {
        try {
            SharedLibrary library(row.name);
            ADD_FAILURE() << row.result;
        } catch (const ResultException& failure) {
            EXPECT_EQ(failure.getResult(), row.result) << &row - cases;
            EXPECT_EQ(failure.getDescription(), u"Failed to open shared library.");
        }
    }
}

} // namespace
} // namespace vx::exec
