#include "Options.h"

#include "Texts.h"
#include "common/CommandLine.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>
#include <string_view>

namespace vxlog {

using namespace vxtools;
using vx::util::OptionRow;
using vx::util::OptionTable;
using vx::util::ParsedOptions;

namespace {

using Times = vx::log::Logger::Times;
using Every = vx::io::Rotation::Every;

constexpr const char* FIELDS[] = {"sequence", "thread", "name", "timestamp", "level", "text"};
constexpr int MOST_WORKERS = 64;

std::vector<std::string> fieldsOf(const std::string& list)
{
    std::vector<std::string> fields;
    std::istringstream names(list);
    for (std::string name; std::getline(names, name, ',');) {
        if (std::find(std::begin(FIELDS), std::end(FIELDS), name) == std::end(FIELDS))
            throw UsageError(NO_FIELD(name));
        fields.push_back(name);
    }
    if (fields.empty())
        throw UsageError(NO_FIELDS());
    return fields;
}

constexpr Message HELP_HEAD {u"vxlog.help",
    "Usage: vxlog [OPTION]... [INPUT]\n"
    "Appends each line of INPUT to a log, as one entry."};
constexpr Message HELP_FOOT {u"vxlog.help.more",
    "INPUT is standard input where it is missing or \"-\". What its encoding cannot read becomes U+FFFD.\n"
    "Several processes may append to one basic FILE at once. Each entry is in the file, whole, before\n"
    "the next line is read (without --async), and all are on the disk at the end.\n"
    "SIGTERM, SIGINT and SIGHUP end the reading; what has been read is written.\n"
    "The exit status is 0 when all was written, 1 for a failure, 2 for a wrong command line."};

} // namespace

const OptionTable& optionTable()
{
    static const OptionTable table("vxlog",
        {
            {.name = "file",
                .letter = 'f',
                .value = "FILE",
                .help = "append to FILE, made when missing (standard output)",
                .takes = OptionRow::Takes::FILES},
            {.name = "format",
                .value = "basic|json|xml",
                .help = "basic: lines \"name=value\", a line of hyphens (basic);\n"
                        "json: an object on one line;\n"
                        "xml: a document of its own, in a new or empty FILE"},
            {.name = "escape", .help = "in xml: markup in a line is text; otherwise it stays markup"},
            {.name = "level", .letter = 'l', .value = "N", .help = "the level of each entry (0)"},
            {.name = "name", .letter = 'n', .value = "NAME", .help = "the logger's name, in a field of each entry"},
            {.name = "fields",
                .value = "LIST",
                .help = "the fields of each entry: some of sequence,thread,name,timestamp,level,text (level,text, and "
                        "name with --name)"},
            {.name = "time",
                .value = "rfc3339|utc|locale",
                .help = "how a timestamp is written: as 2026-11-19T02:58:01.123+01:00 (rfc3339), in UTC, or as LC_TIME "
                        "has it"},
            {.name = "rotate-size",
                .value = "BYTES",
                .help
                = "begin a new FILE before it gets larger; the older ones are FILE.000001, FILE.000002 and so on"},
            {.name = "rotate-every",
                .value = "hour|day",
                .help = "begin a new FILE with each hour or day of local time"},
            {.name = "keep", .value = "N", .help = "keep the N newest of the older files (all)"},
            {.name = "async", .value = "N", .help = "read on while N threads write; above 1 the order is theirs"},
            {.name = "encoding",
                .letter = 'e',
                .value = "ENC",
                .help = "the encoding of INPUT (UTF-8); the log is in UTF-8"},
            {.name = "to",
                .value = "URI",
                .help
                = "send the lines to a vxlogd instead: vxlog://HOST:PORT?level=N&ack=1; with ack=1 it is an error "
                  "if they are not all in its log"},
            {.name = "locale",
                .value = "LOCALE",
                .help = "speak the language of LOCALE, such as de_AT, where its messages are registered as a component "
                        "(English)"},
            COMPLETION_ROW,
            HELP_ROW,
            VERSION_ROW,
        });
    return table;
}

std::string usage(Messages& messages)
{
    const auto translated = [&](const OptionRow& row) {
        const std::string_view name = row.name;
        const std::u16string key = u"vxlog.help." + std::u16string(name.begin(), name.end());
        return messages.say(Message {key.c_str(), row.help}());
    };
    return messages.say(HELP_HEAD) + "\n\n" + optionTable().getHelp(translated) + '\n' + messages.say(HELP_FOOT) + '\n';
}

std::optional<std::string> localeOf(int argc, char** argv)
{
    return optionTable().parse(argc, argv, OptionTable::Order::MIXED, OptionTable::Faults::SKIPPED).find("locale");
}

Options parseOptions(int argc, char** argv)
{
    const ParsedOptions given = parseCommandLine(optionTable(), argc, argv);
    Options options;
    options.task = given.has("help") ? Options::Task::HELP
        : given.has("version")       ? Options::Task::VERSION
        : given.has("completion")    ? Options::Task::COMPLETION
                                     : Options::Task::LOG;
    options.file = given.find("file").value_or(options.file);
    if (const std::optional<std::string> format = given.find("format"))
        options.format = *format == "xml" ? Options::Format::XML
            : *format == "json"           ? Options::Format::JSON
                                          : Options::Format::BASIC;
    if (const std::optional<std::string> time = given.find("time"))
        options.times = *time == "utc" ? Times::RFC_3339_UTC
            : *time == "locale"        ? Times::AS_THE_LOCALE_WRITES
                                       : Times::RFC_3339;
    constexpr int LARGEST = std::numeric_limits<int>::max();
    if (given.has("rotate-size"))
        options.rotation.mostBytes = numberOf(given, "rotate-size", 1, LARGEST);
    if (const std::optional<std::string> every = given.find("rotate-every"))
        options.rotation.every = *every == "hour" ? Every::HOUR : Every::DAY;
    if (given.has("keep"))
        options.rotation.keepFiles = numberOf(given, "keep", 1, LARGEST);
    options.escape = given.has("escape");
    if (given.has("level"))
        options.level = numberOf(given, "level", std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    options.name = given.find("name");
    if (const std::optional<std::string> fields = given.find("fields"))
        options.fields = fieldsOf(*fields);
    if (given.has("async"))
        options.workers = numberOf(given, "async", 1, MOST_WORKERS);
    options.encoding = given.find("encoding").value_or(options.encoding);
    options.shell = given.find("completion").value_or("");
    if (const std::optional<std::string> to = given.find("to"))
        options.to = parseDestination(*to);
    options.input = inputOf(given, options.input);
    if (options.input.empty() || options.file.empty())
        throw UsageError(EMPTY_FILE_NAME());
    if (options.to && (options.file != "-" || options.name || options.fields || options.workers > 0 || options.escape))
        throw UsageError(SERVER_DECIDES());
    if (options.to && !options.to->level)
        options.to->level = options.level;
    if ((rotates(options) || given.has("keep")) && (options.file == "-" || options.format == Options::Format::XML))
        throw UsageError(NO_ROTATION());
    if (options.escape && options.format != Options::Format::XML)
        throw UsageError(ESCAPE_IS_XML());
    return options;
}

} // namespace vxlog
