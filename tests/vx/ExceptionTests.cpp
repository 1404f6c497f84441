#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "vx/vorb/Boundary.h"

#include <new>

using namespace vx;

namespace {

static_assert(!std::convertible_to<std::int32_t, ResultException>);

TEST(ComponentBoundary, GivesTheCodeThatBelongsToWhatWasThrown)
{
    struct {
        const char* thrown;
        std::function<std::int32_t()> work;
        std::int32_t code;
    } cases[] = {
        {"nothing", [] { return 5; }, RESULT_OK},
        {"a code of its own", []() -> int { throw ResultException(RESULT_INVALID_ARGUMENT); }, RESULT_INVALID_ARGUMENT},
        {"no code of its own", []() -> int { throw RangeErrorException(); }, RESULT_FAIL},
        {"a code that is a success", []() -> int { throw ResultException(RESULT_OK); }, RESULT_OK},
        {"both kinds at once", []() -> int { throw OutOfMemoryException(); }, RESULT_OUT_OF_MEMORY},
        {"exhaustion", []() -> int { throw std::bad_alloc(); }, RESULT_OUT_OF_MEMORY},
        {"exhaustion of the runtime's allocator", []() -> int { throwBadAllocation(); }, RESULT_OUT_OF_MEMORY},
        {"not one of ours", []() -> int { throw 7; }, RESULT_FAIL},
        {"another component's failure", [] { return throwIfFailed(RESULT_END_OF_FILE), 0; }, RESULT_END_OF_FILE},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(vorb::atBoundary(row.work), row.code) << row.thrown;
        std::int32_t out = 7;
        EXPECT_EQ(vorb::atBoundary(&out, row.work), row.code) << row.thrown;
        EXPECT_EQ(out, &row == cases ? 5 : 0) << row.thrown;
    }
    EXPECT_EQ(vorb::atBoundary(static_cast<int*>(nullptr), [] { return 5; }), RESULT_POINTER);
    EXPECT_EQ(vorb::resultAtBoundary([] { return RESULT_FALSE; }), RESULT_FALSE);
    EXPECT_EQ(vorb::resultAtBoundary([]() -> std::int32_t { throw std::bad_alloc(); }), RESULT_OUT_OF_MEMORY);
    for (const std::int32_t success : {RESULT_OK, RESULT_FALSE})
        EXPECT_NO_THROW(throwIfFailed(success));
    int end = 0;
    EXPECT_EQ(endOf([&] { vorb::atBoundary(&end, [&]() -> int { ::pthread_exit(&end); }); }), &end);
}

} // namespace
