/// Converts a text from one encoding to another through the streams of the library.

#include "Conversion.h"
#include "EncodingList.h"
#include "Files.h"
#include "Options.h"
#include "common/Failure.h"

#include <vx/Exception.h>

#include <csignal>
#include <cstdio>
#include <new>
#include <stdexcept>

namespace {

using namespace vxconv;
using namespace vxtools;

enum ExitCode { SUCCESS = 0, FAILURE = 1, USAGE_ERROR = 2 };

void run(const Options& options)
{
    switch (options.task) {
    case Options::Task::HELP:
        if (std::fputs(USAGE, stdout) == EOF || std::fflush(stdout) == EOF)
            throw Failure("standard output", textOfError(errno));
        return;
    case Options::Task::LIST:
        try {
            listEncodings();
        } catch (const vx::Exception& failure) {
            throw Failure("standard output", textOf(failure));
        }
        return;
    case Options::Task::CONVERT:
        requireEncodings(options);
        const Input input(options.input);
        Output output(options.output, input);
        convert(options, input, output);
        output.commit();
    }
}

int complain(const char* text, ExitCode code)
{
    std::fprintf(stderr, "vxconv: %s\n", text);
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    occupyStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // a failed write tells more
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        run(parseOptions(argc, argv));
        return SUCCESS;
    } catch (const std::invalid_argument& failure) {
        return complain((std::string(failure.what()) + "; vxconv --help tells more").c_str(), USAGE_ERROR);
    } catch (const vx::Exception& failure) {
        return complain(textOf(failure).c_str(), FAILURE);
    } catch (const std::bad_alloc&) {
        return complain("out of memory", FAILURE);
    } catch (const std::exception& failure) {
        return complain(failure.what(), FAILURE);
    }
}
