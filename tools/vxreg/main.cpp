/// Maintains the registry and the component libraries registered in it.

#include "common/Failure.h"
#include "common/Program.h"
#include "vxreg/Commands.h"

#include <iostream>
#include <string>
#include <vector>

using namespace vxreg;
using namespace vxtools;

int main(int argc, char** argv)
{
    return runProgram("vxreg", [&] {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const std::string first = arguments.empty() ? "" : arguments[0];
        if (first == "--help" || first == "-h")
            print(USAGE);
        else if (first == "--version")
            printVersion("vxreg");
        else
            run(arguments);
        if (!std::cout.flush())
            throw Failure("standard output", "cannot be written");
    });
}
