/// Turns lines into entries of a log, through the loggers, processors and writers of the library.

#include "Log.h"
#include "Options.h"
#include "common/CommandLine.h"
#include "common/Program.h"

namespace {

using namespace vxlog;
using namespace vxtools;

void run(const Options& options, Messages& messages)
{
    if (!tellAboutProgram("vxlog", optionTable(), options, [&] { return usage(messages); }))
        vxlog::log(options, messages);
}

} // namespace

int main(int argc, char** argv)
{
    Messages messages("vxlog", localeOf(optionTable(), argc, argv));
    return runProgram(
        "vxlog", [&] { run(parseOptions(argc, argv), messages); }, messages);
}
