// Let only one process do a job
//
// All processes of a user share the semaphore by its name. If its holder is killed, it is free again.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    ipc::Semaphore turn("recipes.nightly", 1);
    if (!turn.waitFor(0)) {
        std::cout << "another process does it\n";
        return 1;
    }
    ipc::Semaphore second("recipes.nightly", 1); // as another process would open it
    std::cout << (second.waitFor(0) ? "two at once\n" : "one at a time\n");
    turn.signal();
}
// Prints:
// one at a time
