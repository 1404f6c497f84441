/// Maintains the registry and the component libraries registered in it.

#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Program.h"
#include "vxreg/Commands.h"

#include <iostream>

using namespace vxreg;
using namespace vxtools;

int main(int argc, char** argv)
{
    return runProgram("vxreg", [&] {
        const vx::util::OptionTable table("vxreg", {COMPLETION_ROW, HELP_ROW, VERSION_ROW});
        const vx::util::ParsedOptions options
            = parseCommandLine(table, argc, argv, vx::util::OptionTable::Order::OPTIONS_FIRST);
        if (options.has("help"))
            print(usage(table));
        else if (options.has("version"))
            printVersion("vxreg");
        else if (options.has("completion"))
            printCompletion(table, options.get("completion"), commandNames());
        else
            run(options.getArguments());
        if (!std::cout.flush())
            throw Failure("standard output", "cannot be written");
    });
}
