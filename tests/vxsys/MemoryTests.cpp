#include "vxsys/Memory.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

constexpr std::size_t TOO_LARGE = SIZE_MAX / 4;

int g_calls = 0;

TEST(Memory, AsksTheHandlerUntilItGivesUp)
{
    EXPECT_THROW(vxsys::allocate(TOO_LARGE), std::bad_alloc);
    const VXNewHandler before = VXSetNewHandler([] {
        if (++g_calls == 3)
            VXSetNewHandler([] { throw std::runtime_error("gave up"); });
    });
    EXPECT_THROW(vxsys::allocate(TOO_LARGE), std::runtime_error);
    EXPECT_EQ(g_calls, 3);
    EXPECT_EQ(VXMemAlloc(TOO_LARGE), nullptr) << "raw storage has no handler";
    EXPECT_NE(VXSetNewHandler(before), nullptr);
}

TEST(Memory, KeepsTheBlockThatCannotGrow)
{
    auto* block = static_cast<char*>(VXMemRealloc(nullptr, 4));
    ASSERT_NE(block, nullptr);
    block[3] = 'x';
    EXPECT_EQ(VXMemRealloc(block, TOO_LARGE), nullptr);
    EXPECT_EQ(block[3], 'x');
    void* smallest = VXMemRealloc(block, 0);
    EXPECT_NE(smallest, nullptr) << "still ours to free";
    VXMemFree(smallest);
    VXMemFree(nullptr);
}

} // namespace
