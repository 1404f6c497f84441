/// Maintains the registry and the component libraries registered in it.

#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Input.h"
#include "common/Program.h"
#include "vxreg/Commands.h"

#include <cerrno>
#include <iostream>

using namespace vxreg;
using namespace vxtools;

int main(int argc, char** argv)
{
    constexpr vx::util::OptionRow MACHINE_ROW {
        .name = "machine", .letter = 'm', .help = "work on the registry of all users, which only root may change"};
    constexpr vx::util::OptionRow FORCE_ROW {.name = "force",
        .help = "before register: take a library although it cannot be used, or another one has its classes"};
    const vx::util::OptionTable table = makeOptionTable("vxreg", {MACHINE_ROW, FORCE_ROW});
    Messages messages("vxreg", localeOf(table, argc, argv));
    const auto work = [&] {
        const vx::util::ParsedOptions options
            = parseCommandLine(table, argc, argv, vx::util::OptionTable::Order::OPTIONS_FIRST);
        if (options.has("help"))
            print(usage(table, messages));
        else if (options.has("version"))
            printVersion("vxreg");
        else if (options.has("completion"))
            printCompletion(table, options.get("completion"), commandNames());
        else
            run(options.getArguments(), {options.has("machine"), options.has("force")}, messages);
        errno = 0;
        if (!std::cout.flush()) {
            const int error = errno != 0 ? errno : EIO;
            requireStream(1);
            throw Failure(STANDARD_OUTPUT(), textOfError(error));
        }
    };
    return runProgram("vxreg", work, messages);
}
