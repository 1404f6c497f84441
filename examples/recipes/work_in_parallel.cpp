// Divide work among threads and collect the results
//
// `runAsync` starts a thread for a callable. `get` waits for its result; if the callable throws, `get` throws the exception.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    auto sum = [](int first, int last) {
        std::int64_t total = 0;
        for (int number = first; number < last; ++number)
            total += number;
        return total;
    };
    auto lower = exec::runAsync(sum, 0, 500'000);
    auto upper = exec::runAsync(sum, 500'000, 1'000'001);
    std::cout << lower.get() + upper.get() << '\n';
}
// Prints:
// 500000500000
