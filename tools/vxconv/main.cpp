/// Converts texts from one encoding to another through the streams of the library.

#include "Batch.h"
#include "Conversion.h"
#include "EncodingList.h"
#include "Options.h"
#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Program.h"

#include <vx/Exception.h>

namespace {

using namespace vxconv;
using namespace vxtools;

void run(const Options& options, Messages& messages)
{
    switch (options.task) {
    case Options::Task::HELP:
        print(usage(messages));
        return;
    case Options::Task::VERSION:
        printVersion("vxconv");
        return;
    case Options::Task::COMPLETION:
        printCompletion(optionTable(), options.shell);
        return;
    case Options::Task::LIST:
        try {
            listEncodings();
        } catch (const vx::Exception& failure) {
            throw Failure(STANDARD_OUTPUT(), textOf(failure));
        }
        return;
    case Options::Task::CONVERT:
        requireEncodings(options);
        if (options.inPlace || !options.toFolder.empty())
            convertAll(options, messages);
        else
            convertFile(options, options.inputs.empty() ? "-" : options.inputs.front(), options.output, messages);
    }
}

} // namespace

int main(int argc, char** argv)
{
    Messages messages(localeOf(optionTable(), argc, argv));
    return runProgram(
        "vxconv", [&] { run(parseOptions(argc, argv), messages); }, messages);
}
