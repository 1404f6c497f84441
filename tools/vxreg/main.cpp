/// Looks after the registry, and after the component libraries in it.

#include "common/Failure.h"
#include "vxreg/Commands.h"
#include "vxreg/Results.h"

#include <vx/Exception.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <new>
#include <stdexcept>

namespace {

using namespace vxreg;

enum ExitCode { SUCCESS = 0, FAILURE = 1, USAGE_ERROR = 2 };

int complain(const std::string& text, ExitCode code)
{
    std::cout.flush();
    std::fprintf(stderr, "vxreg: %s\n", text.c_str());
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a failed write tells more
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const std::string first = arguments.empty() ? "" : arguments[0];
        if (first == "--help" || first == "-h")
            std::cout << USAGE;
        else if (first == "--version")
            std::cout << "vxreg " VXREG_VERSION "\n";
        else
            run(arguments);
        if (!std::cout.flush())
            throw vxtools::Failure("standard output", "cannot be written");
        return SUCCESS;
    } catch (const std::invalid_argument& failure) {
        return complain(std::string(failure.what()) + "; vxreg --help tells more", USAGE_ERROR);
    } catch (const vx::Exception& failure) {
        return complain(textOf(failure), FAILURE);
    } catch (const std::bad_alloc&) {
        return complain("out of memory", FAILURE);
    } catch (const std::exception& failure) {
        return complain(failure.what(), FAILURE);
    }
}
