#include "Options.h"

#include "Texts.h"
#include "common/Failure.h"

#include <algorithm>
#include <charconv>
#include <getopt.h>
#include <iterator>
#include <sstream>
#include <string_view>

namespace vxlog {

using namespace vxtools;

namespace {

constexpr const char* FIELDS[] = {"sequence", "thread", "name", "timestamp", "level", "text"};
constexpr int MOST_WORKERS = 64;
constexpr const char* LOCALE_OPTION = "locale";

int numberOf(const char* option, std::string_view text, int least, int most)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
        throw UsageError(NO_NUMBER(option, least, most, std::string(text)));
    return number;
}

std::vector<std::string> fieldsOf(const char* list)
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

Options::Format formatOf(std::string_view name)
{
    if (name == "basic")
        return Options::Format::BASIC;
    if (name == "xml")
        return Options::Format::XML;
    throw UsageError(NO_FORMAT(std::string(name)));
}

struct OptionRow {
    const char* name;
    char letter; ///< '\0': none
    const char* argument; ///< null: takes none
    Message help; ///< lines of the help text
    void (*apply)(Options& options, const char* value);
};

constexpr OptionRow OPTIONS[] = {
    {"file", 'f', "FILE", {u"vxlog.help.file", "append to FILE, made when missing (standard output)"},
        [](Options& options, const char* value) { options.file = value; }},
    {"format", '\0', "FORMAT",
        {u"vxlog.help.format",
            "basic: lines \"name=value\" and a line of hyphens (basic);\n"
            "xml: a document of its own, in a new or empty FILE"},
        [](Options& options, const char* value) { options.format = formatOf(value); }},
    {"escape", '\0', nullptr, {u"vxlog.help.escape", "in xml: markup in a line is text; otherwise it stays markup"},
        [](Options& options, const char*) { options.escape = true; }},
    {"level", 'l', "N", {u"vxlog.help.level", "the level of each entry (0)"},
        [](Options& options, const char* value) { options.level = numberOf("--level", value, INT32_MIN, INT32_MAX); }},
    {"name", 'n', "NAME", {u"vxlog.help.name", "the logger's name, in a field of each entry"},
        [](Options& options, const char* value) { options.name = value; }},
    {"fields", '\0', "LIST",
        {u"vxlog.help.fields",
            "the fields of each entry: some of sequence,thread,name,\n"
            "timestamp,level,text (level,text, and name with --name)"},
        [](Options& options, const char* value) { options.fields = fieldsOf(value); }},
    {"async", '\0', "N", {u"vxlog.help.async", "read on while N threads write; above 1 the order is theirs"},
        [](Options& options, const char* value) { options.workers = numberOf("--async", value, 1, MOST_WORKERS); }},
    {"encoding", 'e', "ENC", {u"vxlog.help.encoding", "the encoding of INPUT (UTF-8); the log is in UTF-8"},
        [](Options& options, const char* value) { options.encoding = value; }},
    {"to", '\0', "URI",
        {u"vxlog.help.to",
            "send the lines to a vxlogd instead: vxlog://HOST:PORT?level=N&ack=1;\n"
            "with ack=1 it is an error if they are not all in its log"},
        [](Options& options, const char* value) { options.to = parseDestination(value); }},
    {LOCALE_OPTION, '\0', "LOCALE",
        {u"vxlog.help.locale",
            "speak the language of LOCALE, such as de_AT, where its messages\n"
            "are registered as a component (English)"},
        [](Options&, const char*) {}}, // taken by localeOf
    {"help", 'h', nullptr, {u"vxlog.help.help", "print this"},
        [](Options& options, const char*) { options.task = Options::Task::HELP; }},
    {"version", '\0', nullptr, {u"vxlog.help.version", "print the version"},
        [](Options& options, const char*) { options.task = Options::Task::VERSION; }},
};

constexpr Message HELP_HEAD {u"vxlog.help",
    "Usage: vxlog [OPTION]... [INPUT]\n"
    "Appends each line of INPUT to a log, as an entry of its own."};
constexpr Message HELP_FOOT {u"vxlog.help.more",
    "INPUT is standard input where it is missing or \"-\". What its encoding cannot read becomes U+FFFD.\n"
    "Several processes may append to one basic FILE at once. Each entry is in the file, whole, before\n"
    "the next line is read (without --async), and all are on the disk at the end.\n"
    "SIGTERM, SIGINT and SIGHUP end the reading; what has been read is written.\n"
    "The exit status is 0 when all was written, 1 for a failure, 2 for a wrong command line."};

/// Iterates over the options with the system's parser.
class Parser {
public:
    Parser(int argc, char** argv)
        : m_count(argc)
        , m_arguments(argv)
    {
        for (const OptionRow& row : OPTIONS) {
            const int value = FIRST_VALUE + static_cast<int>(m_table.size());
            m_table.push_back({row.name, row.argument != nullptr ? required_argument : no_argument, nullptr, value});
            if (row.letter != '\0')
                m_letters += std::string(1, row.letter) + (row.argument != nullptr ? ":" : "");
        }
        m_table.push_back({});
        opterr = 0;
        optind = 1;
    }

    /// False after the last one.
    bool next()
    {
        m_found = ::getopt_long(m_count, m_arguments, m_letters.c_str(), m_table.data(), nullptr);
        return m_found != -1;
    }
    /// Null for an argument that is not an option.
    const OptionRow* row() const
    {
        const auto* row = std::find_if(std::begin(OPTIONS), std::end(OPTIONS), [&](const OptionRow& each) {
            return m_found == FIRST_VALUE + (&each - OPTIONS) || (each.letter != '\0' && m_found == each.letter);
        });
        return row != std::end(OPTIONS) ? row : nullptr;
    }
    bool isWithoutValue() const { return m_found == ':'; }
    /// The option as it was written.
    std::string spelling() const
    {
        return optopt > 0 && optopt < FIRST_VALUE ? std::string("-") + static_cast<char>(optopt)
                                                  : std::string(m_arguments[optind - 1]);
    }

private:
    static constexpr int FIRST_VALUE = 256; ///< what the system's parser returns for the first row

    const int m_count;
    char** const m_arguments;
    std::string m_letters = ":";
    std::vector<option> m_table;
    int m_found = -1;
};

} // namespace

std::string usage(Messages& messages)
{
    constexpr std::size_t HELP_COLUMN = 23;

    std::string text = messages.say(HELP_HEAD) + "\n\n";
    for (const OptionRow& row : OPTIONS) {
        std::string left = row.letter != '\0' ? std::string("  -") + row.letter + ", --" : std::string("      --");
        left += row.name;
        if (row.argument != nullptr)
            left += std::string("=") + row.argument;
        left.resize(std::max(left.size() + 1, HELP_COLUMN), ' ');
        text += left;
        for (const char unit : messages.say(row.help)) {
            text += unit;
            if (unit == '\n')
                text.append(HELP_COLUMN, ' ');
        }
        text += '\n';
    }
    return text + '\n' + messages.say(HELP_FOOT) + '\n';
}

std::optional<std::string> localeOf(int argc, char** argv)
{
    std::optional<std::string> locale;
    for (Parser parser(argc, argv); parser.next();) {
        if (parser.row() != nullptr && parser.row()->name == LOCALE_OPTION)
            locale = optarg;
    }
    return locale;
}

Options parseOptions(int argc, char** argv)
{
    Options options;
    for (Parser parser(argc, argv); parser.next();) {
        if (parser.isWithoutValue())
            throw UsageError(NO_VALUE(parser.spelling()));
        const OptionRow* row = parser.row();
        if (row == nullptr)
            throw UsageError(NO_OPTION(parser.spelling()));
        row->apply(options, optarg);
    }
    if (optind < argc)
        options.input = argv[optind++];
    if (optind < argc)
        throw UsageError(ONE_INPUT_TOO_MANY(argv[optind]));
    if (options.input.empty() || options.file.empty())
        throw UsageError(EMPTY_FILE_NAME());
    if (options.to && (options.file != "-" || options.name || options.fields || options.workers > 0 || options.escape))
        throw UsageError(SERVER_DECIDES());
    if (options.to && !options.to->level)
        options.to->level = options.level;
    if (options.escape && options.format != Options::Format::XML)
        throw UsageError(ESCAPE_IS_XML());
    return options;
}

} // namespace vxlog
