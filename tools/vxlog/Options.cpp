#include "Options.h"

#include "Levels.h"
#include "Texts.h"
#include "common/CommandLine.h"
#include "common/FileName.h"

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
constexpr std::int64_t MOST_BYTES = std::int64_t {1} << 50;
constexpr std::int64_t LEAST_SPOOL = 64 * 1024;

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

int intOf(const ParsedOptions& given, std::string_view name, int otherwise, int least = std::numeric_limits<int>::min(),
    int most = std::numeric_limits<int>::max())
{
    return given.has(name) ? static_cast<int>(numberOf(given, name, least, most)) : otherwise;
}

/// Refuses what could not have its effect.
void check(const ParsedOptions& given, const Options& options)
{
    if (options.to) {
        for (const char* option : {"file", "format", "escape", "name", "fields", "time", "mode", "async", "rotate-size",
                 "rotate-every", "keep"}) {
            if (given.has(option))
                throw UsageError(SERVER_DECIDES());
        }
    }
    const auto need = [&](const char* option, bool isThere, const char* needed) {
        if (given.has(option) && !isThere)
            throw UsageError(ONLY_WITH(std::string("--") + option, needed));
    };
    const auto hasField = [&](const char* name) {
        return !options.fields || std::ranges::find(*options.fields, name) != options.fields->end();
    };
    if ((rotates(options) || given.has("keep")) && (options.file == "-" || options.format == Options::Format::XML))
        throw UsageError(NO_ROTATION());
    if (options.escape && options.format != Options::Format::XML)
        throw UsageError(ESCAPE_IS_XML());
    need("keep", rotates(options), "--rotate-size, --rotate-every");
    need("mode", options.file != "-", "--file");
    need("name", hasField("name"), "--fields name");
    need("level", hasField("level"), "--fields level");
    need("time", options.fields && hasField("timestamp"), "--fields timestamp");
    need("spool", options.to.has_value(), "--to");
    for (const char* option : {"ca", "cert", "key"})
        need(option, options.to && options.to->isEncrypted, "--to vxlogs://HOST:PORT");
    need("key", given.has("cert"), "--cert");
    need("spool-size", !options.spool.empty(), "--spool");
    if (given.has("level-from") && !Levels::isForm(options.levelFrom))
        throw UsageError(NO_LEVEL_SOURCE(options.levelFrom));
    need("min-level", !options.levelFrom.empty(), "--level-from");
    need("max-level", !options.levelFrom.empty(), "--level-from");
    if (options.leastLevel > options.mostLevel)
        throw UsageError(NO_LEVEL_RANGE());
    if (!options.spool.empty() && !options.to->wantsAnswers)
        throw UsageError(SPOOL_NEEDS_ACK());
}

constexpr Message HELP_HEAD {u"vxlog.help",
    "Usage: vxlog [OPTION]... [INPUT]\n"
    "Appends each line of INPUT to a log, as one entry."};
constexpr Message HELP_FOOT {u"vxlog.help.more",
    "INPUT is standard input where it is missing or \"-\". What its encoding cannot\n"
    "read becomes U+FFFD.\n"
    "Several processes may append to one plain FILE at once. Each entry is in the\n"
    "file, whole, before the next line is read (without --async), and all are on the\n"
    "disk at the end.\n"
    "With --to a lost connection is opened again, and what was not acknowledged is\n"
    "sent again. If the server is away for too long, or if lines are lost or still\n"
    "wait, the exit status is 1.\n"
    "SIGTERM, SIGINT and SIGHUP end the reading; what has been read is written.\n"
    "The exit status is 0 when all was written, 1 for a failure, 2 for a wrong\n"
    "command line."};

} // namespace

const OptionTable& optionTable()
{
    static const OptionTable table = makeOptionTable("vxlog",
        {
            {.name = "file",
                .letter = 'f',
                .value = "FILE",
                .help = "append to FILE, made when missing (standard output)",
                .takes = OptionRow::Takes::FILES},
            {.name = "format",
                .value = "plain|json|xml|basic",
                .help = "plain: lines \"name=value\", a line of hyphens (plain); basic is its old name;\n"
                        "json: an object on one line;\n"
                        "xml: a document of its own, in a new or empty FILE"},
            {.name = "escape", .help = "in xml: markup in a line is text; otherwise it stays markup"},
            {.name = "mode", .value = "OCTAL", .help = "the mode of a new FILE, such as 640 (700 less the umask)"},
            {.name = "level", .letter = 'l', .value = "N", .help = "the level of each entry (0)"},
            {.name = "level-from",
                .value = "SOURCE",
                .help = "take the level from each line that has one: prefix: \"<3>\" before its text, as the system's "
                        "journal takes it; json:FIELD: a number or a name such as \"error\" in an object of JSON"},
            {.name = "min-level", .value = "N", .help = "drop lines of a lower level"},
            {.name = "max-level",
                .value = "N",
                .help = "drop lines of a higher level; in the journal a higher level is a smaller matter"},
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
                .help = "begin a new FILE before it gets larger; 0 is never. The older ones are FILE.000001, "
                        "FILE.000002 and so on"},
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
                = "send the lines to a vxlogd instead: vxlog://HOST:PORT?level=N&ack=1&retry=SECONDS&beat=SECONDS; "
                  "ack=0 does not ask whether they are in its log, retry is how long it may be away (60), and beat "
                  "how often an idle vxlog sends a sign of life (30; 0 is never). Or to the brokers of Kafka: "
                  "kafka://HOST:PORT,HOST:PORT/TOPIC?level=N&retry=SECONDS, also with &user=NAME&password=FILE, or "
                  "kafkas for TLS with ca=FILE"},
            {.name = "ca",
                .value = "FILE",
                .help
                = "with --to vxlogs://HOST:PORT: connect by TLS to a server with a certificate of the authorities "
                  "in FILE (those of the system)",
                .takes = OptionRow::Takes::FILES},
            {.name = "cert",
                .value = "FILE",
                .help = "the certificate of this client for vxlogs",
                .takes = OptionRow::Takes::FILES},
            {.name = "key",
                .value = "FILE",
                .help = "the private key for --cert (in its FILE)",
                .takes = OptionRow::Takes::FILES},
            {.name = "spool",
                .value = "FOLDER",
                .help = "with --to: keep lines in FOLDER while the server is away; the next vxlog with it sends them",
                .takes = OptionRow::Takes::FILES},
            {.name = "spool-size", .value = "BYTES", .help = "the most that FOLDER may hold (268435456)"},
        });
    return table;
}

std::string usage(Messages& messages)
{
    return messages.say(HELP_HEAD) + "\n\n" + helpOf(optionTable(), u"vxlog.help.", messages) + '\n'
        + messages.say(HELP_FOOT) + '\n';
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
                                          : Options::Format::PLAIN;
    if (const std::optional<std::string> mode = given.find("mode"); mode && !(options.mode = modeOf(*mode)))
        throw UsageError(NO_MODE(*mode));
    if (const std::optional<std::string> time = given.find("time"))
        options.times = *time == "utc" ? Times::RFC_3339_UTC
            : *time == "locale"        ? Times::AS_THE_LOCALE_WRITES
                                       : Times::RFC_3339;
    if (given.has("rotate-size"))
        options.rotation.mostBytes = numberOf(given, "rotate-size", 0, MOST_BYTES);
    if (const std::optional<std::string> every = given.find("rotate-every"))
        options.rotation.every = *every == "hour" ? Every::HOUR : Every::DAY;
    options.rotation.keepFiles = intOf(given, "keep", 0, 1);
    options.rotation.access = static_cast<std::int32_t>(options.mode.value_or(0));
    options.escape = given.has("escape");
    options.level = intOf(given, "level", 0);
    options.leastLevel = intOf(given, "min-level", options.leastLevel);
    options.mostLevel = intOf(given, "max-level", options.mostLevel);
    options.levelFrom = given.find("level-from").value_or("");
    options.name = given.find("name");
    if (const std::optional<std::string> fields = given.find("fields"))
        options.fields = fieldsOf(*fields);
    options.workers = intOf(given, "async", 0, 1, MOST_WORKERS);
    options.encoding = given.find("encoding").value_or(options.encoding);
    options.shell = given.find("completion").value_or("");
    if (const std::optional<std::string> to = given.find("to"))
        options.to = parseDestination(*to);
    if (options.to)
        options.to->tls
            = {given.find("ca").value_or(""), given.find("cert").value_or(""), given.find("key").value_or("")};
    options.spool = given.find("spool").value_or("");
    if (given.has("spool-size"))
        options.spoolBytes = numberOf(given, "spool-size", LEAST_SPOOL, MOST_BYTES);
    options.input = inputOf(given, options.input);
    if (options.input.empty() || options.file.empty() || (given.has("spool") && options.spool.empty()))
        throw UsageError(EMPTY_FILE_NAME());
    check(given, options);
    if (options.to && !options.to->level)
        options.to->level = options.level;
    else if (options.to && options.to->kafka)
        options.level = *options.to->level; // each line has its own
    return options;
}

} // namespace vxlog
