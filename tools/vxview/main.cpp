/// Shows, filters, counts and follows logs that the library has written.

#include "Options.h"
#include "View.h"
#include "common/CommandLine.h"
#include "common/Program.h"

namespace {

using namespace vxview;
using namespace vxtools;

Outcome run(const Options& options, Messages& messages)
{
    if (tellAboutProgram("vxview", optionTable(), options, [&] { return usage(messages); }))
        return {.hasFound = true};
    return view(options, messages);
}

} // namespace

int main(int argc, char** argv)
{
    enum ExitCode { FOUND = 0, NOT_FOUND = 1, FAILED = 2 }; // those of grep
    Messages messages("vxview", localeOf(optionTable(), argc, argv));
    Outcome outcome;
    const int code = runProgram(
        "vxview", [&] { outcome = run(parseOptions(argc, argv), messages); }, messages);
    if (code != 0 || outcome.hasFailed)
        return FAILED;
    return outcome.hasFound ? FOUND : NOT_FOUND;
}
