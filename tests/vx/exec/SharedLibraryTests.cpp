#include "tests/Outcome.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Result.h"
#include "vx/exec/SharedLibrary.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace vx::exec {
namespace {

bool isMapped(const std::string& path)
{
    return contentOf("/proc/self/maps").find(path) != std::string::npos;
}

TEST(SharedLibrary, IsInTheProcessAsLongAsTheObjectLives)
{
    {
        SharedLibrary library(String(PLUGIN_FILE).getData());
        EXPECT_TRUE(isMapped(PLUGIN_FILE));
        EXPECT_EQ(reinterpret_cast<int (*)()>(library.getSymbol(u"plugin_answer"))(), 42);
        EXPECT_EQ(resultOf([&] { library.getSymbol(u"plugin_question"); }), RESULT_SYMBOL_NOT_FOUND);
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__) // these keep their results
    EXPECT_FALSE(isMapped(PLUGIN_FILE));
#endif
}

TEST(SharedLibrary, TellsWhyNothingWasOpened)
{
    const std::pair<const char16_t*, std::int32_t> cases[] = {
        {u"libno-such-library-anywhere.so", RESULT_MODULE_NOT_FOUND}, {u"C:\\no\\such\\library.so", RESULT_NOT_FOUND},
        {u"D:\\library.so", RESULT_PATH_NOT_FOUND}, {u"C:\\etc\\passwd", RESULT_BAD_MODULE}};
    for (const auto& row : cases)
        EXPECT_EQ(resultOf([&] { SharedLibrary library(row.first); }), row.second) << &row - cases;
}

} // namespace
} // namespace vx::exec
