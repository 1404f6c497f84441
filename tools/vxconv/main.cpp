/// Converts texts from one encoding to another through the streams of the library.

#include "Batch.h"
#include "Conversion.h"
#include "EncodingList.h"
#include "Options.h"
#include "Texts.h"
#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Program.h"

#include <filesystem>

namespace {

using namespace vxconv;
using namespace vxtools;

void convertOne(const Options& options, Messages& messages)
{
    const std::string input = options.inputs.empty() ? "-" : options.inputs.front();
    std::error_code ignored;
    if (input != "-" && std::filesystem::is_directory(input, ignored))
        throw Failure(input, IS_FOLDER());
    convertFile(options, input, options.output, messages);
}

void run(const Options& options, Messages& messages)
{
    if (tellAboutProgram("vxconv", optionTable(), options, [&] { return usage(messages); }))
        return;
    if (options.task == Options::Task::LIST)
        return listEncodings();
    requireEncodings(options);
    if (options.inPlace || !options.toFolder.empty())
        convertAll(options, messages);
    else
        convertOne(options, messages);
}

} // namespace

int main(int argc, char** argv)
{
    Messages messages("vxconv", localeOf(optionTable(), argc, argv));
    return runProgram(
        "vxconv", [&] { run(parseOptions(argc, argv), messages); }, messages);
}
