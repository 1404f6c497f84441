/// Converts a text from one encoding to another through the streams of the library.

#include "Conversion.h"
#include "EncodingList.h"
#include "Files.h"
#include "Options.h"
#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Program.h"

#include <vx/Exception.h>

namespace {

using namespace vxconv;
using namespace vxtools;

void run(const Options& options)
{
    switch (options.task) {
    case Options::Task::HELP:
        print(usage());
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

} // namespace

int main(int argc, char** argv)
{
    return runProgram("vxconv", [&] { run(parseOptions(argc, argv)); });
}
