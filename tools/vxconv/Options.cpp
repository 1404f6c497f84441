#include "Options.h"

#include "Texts.h"
#include "common/CommandLine.h"
#include "common/Component.h"

#include <algorithm>

namespace vxconv {

using namespace vxtools;
using vx::util::OptionRow;
using vx::util::OptionTable;

namespace {

constexpr Message HELP_HEAD {u"vxconv.help",
    "Usage: vxconv [OPTION]... [INPUT] [-o OUTPUT]\n"
    "  or:  vxconv [OPTION]... --to-folder=FOLDER|--in-place INPUT...\n"
    "  or:  vxconv --list\n"
    "Converts text from one encoding to another."};
constexpr Message HELP_FOOT {u"vxconv.help.more",
    "INPUT and OUTPUT are standard input and output where they are missing or \"-\".\n"
    "With --to-folder and --in-place an INPUT may be a folder: it stands for the\n"
    "files below it, which keep their relative names. In it, FOLDER, links to folders\n"
    "and what is not a regular file are left out, and all links with --in-place. An\n"
    "INPUT that is a link stays a link, and its file is replaced. Each file is\n"
    "written whole or not at all, and one that fails does not stop the others. If two\n"
    "files would have the same output, or if --to-folder would replace an INPUT,\n"
    "nothing is converted.\n"
    "\n"
    "Malformed input is an error. A byte order mark is text like any other and stays\n"
    "where it is, but -f auto, -f UTF-16 and -f UTF-32 remove it.\n"
    "\n"
    "UTF-16 and UTF-32 with a byte order mark, the double-byte encodings (CP932, GBK,\n"
    "Big5, EUC-KR, GB18030) and many of one byte come from a component library. The\n"
    "package vxlib4-components registers it for all users. Otherwise, do it yourself:\n"
    "  vxreg register {0}\n"
    "\n"
    "The exit status is 0 for success, 1 if a file was not converted or an encoding\n"
    "is unknown, 2 for a wrong command line."};

/// Refuses options that would have no effect, or two that say where the output is.
void check(const vx::util::ParsedOptions& given, const Options& options)
{
    const char* const batch = options.inPlace ? "--in-place" : "--to-folder";
    const bool isBatch = options.inPlace || !options.toFolder.empty();
    if (options.output.empty() || (given.has("to-folder") && options.toFolder.empty())
        || std::find(options.inputs.begin(), options.inputs.end(), "") != options.inputs.end())
        throw UsageError(EMPTY_FILE_NAME());
    if (options.inPlace && !options.toFolder.empty())
        throw UsageError(NOT_TOGETHER("--in-place", "--to-folder"));
    if (isBatch && given.has("output"))
        throw UsageError(NOT_TOGETHER("--output", batch));
    if (!isBatch && options.inputs.size() > 1)
        throw UsageError(SEVERAL_INPUTS());
    if (isBatch && options.inputs.empty())
        throw UsageError(NO_INPUT(batch));
    if (isBatch && std::find(options.inputs.begin(), options.inputs.end(), "-") != options.inputs.end())
        throw UsageError(NO_STANDARD_INPUT(batch));
    if (given.has("fallback") && !options.isAuto())
        throw UsageError(ONLY_WITH("--fallback", "-f auto"));
}

} // namespace

const OptionTable& optionTable()
{
    static const OptionTable table = makeOptionTable("vxconv",
        {
            {.name = "from",
                .letter = 'f',
                .value = "ENCODING",
                .standard = "UTF-8",
                .help
                = "the encoding of INPUT; auto: that of its byte order mark, or UTF-8 if all of it is UTF-8, or else "
                  "that of --fallback"},
            {.name = "to", .letter = 't', .value = "ENCODING", .standard = "UTF-8", .help = "the encoding of OUTPUT"},
            {.name = "fallback",
                .value = "ENCODING",
                .standard = "CP1252",
                .help = "see -f auto; a file with a byte that is zero is refused"},
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
            {.name = "to-folder",
                .value = "FOLDER",
                .help = "write each file there, under its own name; makes missing folders, and replaces files that are "
                        "there, "
                        "such as those of an earlier run",
                .takes = OptionRow::Takes::FOLDERS},
            {.name = "in-place", .help = "replace each file"},
            {.name = "verbose", .letter = 'v', .help = "say for each file as what it is read, and what is left out"},
            {.name = "list", .letter = 'l', .help = "print the encodings with their code pages and other names"},
        });
    return table;
}

Options parseOptions(int argc, char** argv)
{
    const vx::util::ParsedOptions given = parseCommandLine(optionTable(), argc, argv);
    Options options;
    options.task = given.has("help") ? Options::Task::HELP
        : given.has("version")       ? Options::Task::VERSION
        : given.has("completion")    ? Options::Task::COMPLETION
        : given.has("list")          ? Options::Task::LIST
                                     : Options::Task::CONVERT;
    options.from = given.get("from");
    options.to = given.get("to");
    options.fallback = given.get("fallback");
    options.lines = given.has("lines");
    options.strict = given.has("strict");
    options.verbose = given.has("verbose");
    options.inputs = given.getArguments();
    options.output = given.find("output").value_or(options.output);
    options.toFolder = given.find("to-folder").value_or(options.toFolder);
    options.inPlace = given.has("in-place");
    options.shell = given.find("completion").value_or("");
    if (options.task == Options::Task::CONVERT)
        check(given, options);
    return options;
}

std::string usage(Messages& messages)
{
    return messages.say(HELP_HEAD) + "\n\n" + helpOf(optionTable(), u"vxconv.help.", messages) + '\n'
        + messages.say(HELP_FOOT(componentFolder() + "/" + CODECS.file)) + '\n';
}

} // namespace vxconv
