#include "Options.h"

#include "common/CommandLine.h"

#include <charconv>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace vxview {

using namespace vxtools;
using vx::util::OptionTable;
using vx::util::ParsedOptions;

namespace {

constexpr Message NO_TIME {
    u"vxview.no-time", "{0} takes a time such as 10:00, 2h, yesterday or 2026-11-19T10:00:00Z, not \"{1}\""};
constexpr Message NO_DURATION {u"vxview.no-duration", "--last takes a time such as 90s, 30m, 2h or 7d, not \"{0}\""};
constexpr Message NO_LEVELS {u"vxview.no-levels", "--level takes N, N.. or N..M, not \"{0}\""};
constexpr Message EMPTY_TEXT {u"vxview.empty-text", "{0} is empty"};

constexpr Message HELP_HEAD {u"vxview.help",
    "Usage: vxview [OPTION]... [LOG]...\n"
    "Shows the entries of logs that were written in plain form, as XML or as lines\n"
    "of JSON. Of several LOGs, the entries are merged by their times."};
constexpr Message HELP_FOOT {u"vxview.help.more",
    "LOG is standard input where it is missing or \"-\". Files that gzip, xz, zstd or\n"
    "bzip2 have compressed are read too.\n"
    "It may be a topic of Kafka: kafka://HOST:PORT,HOST:PORT/TOPIC is read from its\n"
    "oldest message on.\n"
    "It may also be the status socket of a running vxlogd, such as\n"
    ".vxlogd.log.status: then the last entries are shown, and with --follow those\n"
    "that come. Without a page, the server keeps none while nobody watches.\n"
    "An entry that was never completed is shown as torn, and a line that is no part\n"
    "of an entry as foreign.\n"
    "TIME is 10:00, 2h (two hours ago), today, yesterday, 2026-11-19, or a time in\n"
    "the form of RFC 3339.\n"
    "CONDITION is FIELD=VALUE, !=, <, <=, > or >=, or FIELD~REGEX, !~ for a regular\n"
    "expression of RE2.\n"
    "The exit status is 0 when something was found, 1 when nothing was, and 2 for a\n"
    "failure."};

std::int64_t levelIn(std::string_view text, const std::string& whole)
{
    std::int64_t level = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (error != std::errc() || stop != text.data() + text.size())
        throw UsageError(NO_LEVELS(whole));
    return level;
}

void readLevels(const std::string& text, Filter& filter)
{
    const std::size_t dots = text.find("..");
    const std::string_view all = text;
    if (dots == text.npos) {
        filter.lowestLevel = filter.highestLevel = levelIn(all, text);
        return;
    }
    if (text.size() == 2)
        throw UsageError(NO_LEVELS(text));
    if (dots > 0)
        filter.lowestLevel = levelIn(all.substr(0, dots), text);
    if (dots + 2 < text.size())
        filter.highestLevel = levelIn(all.substr(dots + 2), text);
}

std::optional<Moment> momentIn(const ParsedOptions& given, std::string_view option)
{
    const std::optional<std::string> text = given.find(option);
    if (!text)
        return std::nullopt;
    const std::optional<Moment> moment = momentFrom(*text, now());
    if (!moment)
        throw UsageError(NO_TIME("--" + std::string(option), *text));
    return moment;
}

Filter filterOf(const ParsedOptions& given)
{
    Filter filter;
    filter.ignoresCase = given.has("ignore-case");
    if (const std::optional<std::string> level = given.find("level"))
        readLevels(*level, filter);
    filter.since = momentIn(given, "since");
    filter.until = momentIn(given, "until");
    if (const std::optional<std::string> last = given.find("last")) {
        const std::optional<std::int64_t> duration = durationFrom(*last);
        if (!duration)
            throw UsageError(NO_DURATION(*last));
        if (filter.since)
            throw UsageError(NOT_TOGETHER("--since", "--last"));
        filter.since = now() - *duration;
    }
    filter.anyCondition = given.has("any");
    for (const std::string& text : given.getAll("where"))
        filter.conditions.emplace_back(text, filter.ignoresCase);
    for (const std::string& text : given.getAll("text")) {
        if (text.empty())
            throw UsageError(EMPTY_TEXT("--text"));
        filter.texts.push_back(text);
    }
    for (const std::string& pattern : given.getAll("match"))
        filter.expressions.emplace_back(pattern, filter.ignoresCase);
    return filter;
}

Printer::Settings printerOf(const ParsedOptions& given)
{
    Printer::Settings printer;
    const std::string format = given.get("format");
    printer.style = format == "plain" ? Style::PLAIN
        : format == "json"            ? Style::JSON
        : format == "csv"             ? Style::CSV
        : format == "xml"             ? Style::XML
                                      : Style::LINE;
    if (const std::optional<std::string> list = given.find("fields")) {
        std::istringstream names(*list);
        for (std::string name; std::getline(names, name, ',');)
            printer.fields.push_back(name);
        if (printer.fields.empty())
            throw UsageError(EMPTY_TEXT("--fields"));
    }
    printer.isTerminal = ::isatty(STDOUT_FILENO) == 1;
    const std::string colour = given.get("colour");
    const char* const unwanted = std::getenv("NO_COLOR");
    const bool isUnwanted = unwanted != nullptr && *unwanted != '\0';
    printer.hasColours = colour == "always" || (colour == "auto" && printer.isTerminal && !isUnwanted);
    return printer;
}

} // namespace

const OptionTable& optionTable()
{
    static const OptionTable table = makeOptionTable("vxview",
        {
            {.name = "text", .letter = 't', .value = "TEXT", .help = "only entries with TEXT in a value"},
            {.name = "match", .letter = 'e', .value = "REGEX", .help = "only entries with a value that REGEX matches"},
            {.name = "where", .letter = 'w', .value = "CONDITION", .help = "only entries that fulfil CONDITION"},
            {.name = "any", .help = "one --where is enough; otherwise all must hold"},
            {.name = "level",
                .letter = 'l',
                .value = "N[..M]",
                .help = "only entries of level N, or from N to M; N.. has no limit"},
            {.name = "since", .letter = 's', .value = "TIME", .help = "only entries at TIME or later"},
            {.name = "until", .letter = 'u', .value = "TIME", .help = "only entries before TIME"},
            {.name = "last", .value = "DURATION", .help = "only entries of the last 90s, 30m, 2h, 7d"},
            {.name = "ignore-case", .letter = 'i', .help = "capital and small letters are alike"},
            {.name = "tail", .letter = 'n', .value = "N", .help = "only the last N of them"},
            {.name = "follow",
                .letter = 'f',
                .help
                = "go on when a LOG grows, also after it was rotated; begins with the last 10 entries if there is no "
                  "--tail"},
            {.name = "older",
                .letter = 'a',
                .help = "also the older files of a rotated LOG: LOG.000001, LOG.000002.gz and so on"},
            {.name = "in-order", .help = "several LOGs one after the other, not merged"},
            {.name = "count", .letter = 'c', .help = "print only how many there are, torn and foreign ones too"},
            {.name = "summary", .letter = 'S', .help = "print a table of how many entries there are of each level"},
            {.name = "by",
                .letter = 'b',
                .value = "FIELD",
                .help = "the summary is by FIELD, or by minute, hour or day"},
            {.name = "format",
                .value = "line|plain|json|csv|xml",
                .standard = "line",
                .help = "line: an entry is one line for people;\n"
                        "plain: lines \"name=value\", a line of hyphens;\n"
                        "json: an object on one line; csv: a table; xml: a document"},
            {.name = "fields", .value = "LIST", .help = "only these fields, in this order"},
            {.name = "colour", .value = "auto|always|never", .standard = "auto", .help = "colours in lines"},
            {.name = "no-pager", .help = "do not show long output through PAGER or less"},
        });
    return table;
}

std::string usage(Messages& messages)
{
    return messages.say(HELP_HEAD) + "\n\n" + helpOf(optionTable(), u"vxview.help.", messages) + '\n'
        + messages.say(HELP_FOOT) + '\n';
}

Options parseOptions(int argc, char** argv)
{
    const ParsedOptions given = parseCommandLine(optionTable(), argc, argv);
    Options options;
    using Task = Options::Task;
    options.task = given.has("help") ? Task::HELP
        : given.has("version")       ? Task::VERSION
        : given.has("completion")    ? Task::COMPLETION
        : given.has("count")         ? Task::COUNT
        : given.has("summary")       ? Task::SUMMARY
                                     : Task::PRINT;
    options.shell = given.find("completion").value_or("");
    options.filter = filterOf(given);
    options.printer = printerOf(given);
    options.access = {.older = given.has("older"), .follows = given.has("follow")};
    options.merges = !given.has("in-order");
    options.hasPager = !given.has("no-pager") && !options.access.follows;
    if (given.has("tail"))
        options.last = numberOf(given, "tail", 0, std::numeric_limits<int>::max());
    else if (options.access.follows)
        options.last = 10;
    options.summaryBy = given.find("by").value_or(options.summaryBy);
    if (!given.getArguments().empty())
        options.logs = given.getArguments();
    for (const std::string& log : options.logs) {
        if (log.empty())
            throw UsageError(EMPTY_TEXT("LOG"));
    }

    const bool onlyCounts = given.has("count") || given.has("summary");
    if (given.has("count") && given.has("summary"))
        throw UsageError(NOT_TOGETHER("--count", "--summary"));
    if (onlyCounts && given.has("follow"))
        throw UsageError(NOT_TOGETHER(given.has("count") ? "--count" : "--summary", "--follow"));
    if (onlyCounts && given.has("tail"))
        throw UsageError(NOT_TOGETHER(given.has("count") ? "--count" : "--summary", "--tail"));
    if (given.has("by") && !given.has("summary"))
        throw UsageError(ONLY_WITH("--by", "--summary"));
    if (given.has("any") && options.filter.conditions.empty())
        throw UsageError(ONLY_WITH("--any", "--where"));
    return options;
}

} // namespace vxview
