// Tell a user what went wrong
//
// `explain` gives a sentence for the user of a program. `errorCodeOf` lets a program choose by the cause.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    try {
        const io::FileInputStream missing(u"/no/such/file");
    } catch (const Exception& failure) {
        std::cout << explain(failure) << '\n';
        std::cout << (errorCodeOf(failure) == std::errc::no_such_file_or_directory) << '\n';
    }
}
// Prints:
// open /no/such/file: no such file or directory
// 1
