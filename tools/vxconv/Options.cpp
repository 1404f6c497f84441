#include "Options.h"

#include "common/CommandLine.h"

namespace vxconv {

using vx::util::OptionRow;
using vx::util::OptionTable;

const OptionTable& optionTable()
{
    static const OptionTable table("vxconv",
        {
            {.name = "from", .letter = 'f', .value = "ENCODING", .standard = "UTF-8", .help = "the encoding of INPUT"},
            {.name = "to", .letter = 't', .value = "ENCODING", .standard = "UTF-8", .help = "the encoding of OUTPUT"},
            {.name = "lines",
                .help = "end each line with LF, whether it ended with LF, CR or CR LF; holds one line in memory"},
            {.name = "strict",
                .help
                = "fail at a character that has no mapping, and tell where it is; otherwise it is replaced, mostly "
                  "by ? or U+FFFD"},
            {.name = "output",
                .letter = 'o',
                .value = "OUTPUT",
                .help = "write there; the file appears when it is whole, and may be INPUT",
                .takes = OptionRow::Takes::FILES},
            {.name = "list", .letter = 'l', .help = "print the encodings with their code pages"},
            vxtools::COMPLETION_ROW,
            vxtools::HELP_ROW,
            vxtools::VERSION_ROW,
        });
    return table;
}

Options parseOptions(int argc, char** argv)
{
    const vx::util::ParsedOptions given = vxtools::parseCommandLine(optionTable(), argc, argv);
    Options options;
    options.task = given.has("help") ? Options::Task::HELP
        : given.has("version")       ? Options::Task::VERSION
        : given.has("completion")    ? Options::Task::COMPLETION
        : given.has("list")          ? Options::Task::LIST
                                     : Options::Task::CONVERT;
    options.from = given.get("from");
    options.to = given.get("to");
    options.lines = given.has("lines");
    options.strict = given.has("strict");
    options.input = vxtools::inputOf(given, options.input);
    options.output = given.find("output").value_or(options.output);
    options.shell = given.find("completion").value_or("");
    if (options.input.empty() || options.output.empty())
        throw std::invalid_argument("a file name is empty");
    return options;
}

std::string usage()
{
    return "Usage: vxconv [-f ENCODING] [-t ENCODING] [--lines] [--strict] [INPUT] [-o OUTPUT]\n"
           "       vxconv --list\n"
           "Converts text from one encoding to another.\n"
           "\n"
        + optionTable().getHelp()
        + "\n"
          "INPUT and OUTPUT are standard input and output where they are missing or \"-\".\n"
          "Malformed input is an error. A byte order mark is text as any other and stays\n"
          "where it is.\n"
          "The exit status is 0 for success, 1 for a failure, 2 for a wrong command line.\n";
}

} // namespace vxconv
