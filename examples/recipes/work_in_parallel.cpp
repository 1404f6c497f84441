// # Do several things at once
// Each task runs in a thread of its own. `get` waits for its result, and throws what the task threw.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int sumOfSquares(int first, int last)
{
    int sum = 0;
    for (int number = first; number <= last; ++number)
        sum += number * number;
    return sum;
}

int main()
{
    auto low = exec::runAsync(sumOfSquares, 1, 50);
    auto high = exec::runAsync(sumOfSquares, 51, 100);
    auto broken = exec::runAsync([] { throw ResultException(RESULT_NOT_FOUND); });
    std::cout << low.get() + high.get() << '\n';
    try {
        broken.get();
    } catch (const Exception& failure) {
        std::cout << explain(failure) << '\n';
    }
}

/* prints
338350
no such file or directory
*/
