/// Turns lines into entries of a log, through the loggers, processors and writers of the library.

#include "Ending.h"
#include "Log.h"
#include "Options.h"
#include "common/Failure.h"
#include "common/Input.h"

#include <vx/Exception.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace {

using namespace vxlog;
using namespace vxtools;

enum ExitCode { SUCCESS = 0, FAILURE = 1, USAGE_ERROR = 2 };

void print(const std::string& text)
{
    if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) == EOF)
        throw Failure("standard output", textOfError(errno));
}

void run(const Options& options)
{
    switch (options.task) {
    case Options::Task::HELP:
        print(usage());
        return;
    case Options::Task::VERSION:
        print("vxlog " VXLOG_VERSION "\n");
        return;
    case Options::Task::LOG:
        catchEndingSignals();
        vxlog::log(options);
    }
}

int complain(const std::string& text, ExitCode code)
{
    std::fprintf(stderr, "vxlog: %s\n", text.c_str());
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
        return complain(std::string(failure.what()) + "; vxlog --help tells more", USAGE_ERROR);
    } catch (const vx::Exception& failure) {
        return complain(textOf(failure), FAILURE);
    } catch (const std::bad_alloc&) {
        return complain("out of memory", FAILURE);
    } catch (const std::exception& failure) {
        return complain(failure.what(), FAILURE);
    }
}
