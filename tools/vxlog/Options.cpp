#include "Options.h"

#include <algorithm>
#include <charconv>
#include <getopt.h>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace vxlog {

namespace {

constexpr const char* FIELDS[] = {"sequence", "thread", "name", "timestamp", "level", "text"};
constexpr int MOST_WORKERS = 64;

int numberOf(const char* option, std::string_view text, int least, int most)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
        throw std::invalid_argument(std::string(option) + " takes a number from " + std::to_string(least) + " to "
            + std::to_string(most) + ", not \"" + std::string(text) + "\"");
    return number;
}

std::vector<std::string> fieldsOf(const char* list)
{
    std::vector<std::string> fields;
    std::istringstream names(list);
    for (std::string name; std::getline(names, name, ',');) {
        if (std::find(std::begin(FIELDS), std::end(FIELDS), name) == std::end(FIELDS))
            throw std::invalid_argument("--fields knows no \"" + name + "\"");
        fields.push_back(name);
    }
    if (fields.empty())
        throw std::invalid_argument("--fields is empty");
    return fields;
}

Options::Format formatOf(std::string_view name)
{
    if (name == "basic")
        return Options::Format::BASIC;
    if (name == "xml")
        return Options::Format::XML;
    throw std::invalid_argument("--format is basic or xml, not \"" + std::string(name) + "\"");
}

struct OptionRow {
    const char* name;
    char letter; ///< '\0': none
    const char* argument; ///< null: takes none
    const char* help; ///< its lines
    void (*apply)(Options& options, const char* value);
};

constexpr OptionRow OPTIONS[] = {
    {"file", 'f', "FILE", "append to FILE, made when missing (standard output)",
        [](Options& options, const char* value) { options.file = value; }},
    {"format", '\0', "FORMAT",
        "basic: lines \"name=value\" and a line of hyphens (basic);\n"
        "xml: a document of its own, in a new or empty FILE",
        [](Options& options, const char* value) { options.format = formatOf(value); }},
    {"escape", '\0', nullptr, "in xml: markup in a line is text; otherwise it stays markup",
        [](Options& options, const char*) { options.escape = true; }},
    {"level", 'l', "N", "the level of each entry (0)",
        [](Options& options, const char* value) { options.level = numberOf("--level", value, INT32_MIN, INT32_MAX); }},
    {"name", 'n', "NAME", "the logger's name, in a field of each entry",
        [](Options& options, const char* value) { options.name = value; }},
    {"fields", '\0', "LIST",
        "the fields of each entry: some of sequence,thread,name,\n"
        "timestamp,level,text (level,text, and name with --name)",
        [](Options& options, const char* value) { options.fields = fieldsOf(value); }},
    {"async", '\0', "N", "read on while N threads write; above 1 the order is theirs",
        [](Options& options, const char* value) { options.workers = numberOf("--async", value, 1, MOST_WORKERS); }},
    {"encoding", 'e', "ENC", "the encoding of INPUT (UTF-8); the log is in UTF-8",
        [](Options& options, const char* value) { options.encoding = value; }},
    {"to", '\0', "URI",
        "send the lines to a vxlogd instead: vxlog://HOST:PORT?level=N&ack=1;\n"
        "with ack=1 it is an error if they are not all in its log",
        [](Options& options, const char* value) { options.to = parseDestination(value); }},
    {"help", 'h', nullptr, "print this", [](Options& options, const char*) { options.task = Options::Task::HELP; }},
    {"version", '\0', nullptr, "print the version",
        [](Options& options, const char*) { options.task = Options::Task::VERSION; }},
};

constexpr int FIRST_VALUE = 256; ///< what the system's parser gives for the first row

} // namespace

std::string usage()
{
    constexpr std::size_t HELP_COLUMN = 23;

    std::string text = "Usage: vxlog [OPTION]... [INPUT]\n"
                       "Appends each line of INPUT to a log, as an entry of its own.\n\n";
    for (const OptionRow& row : OPTIONS) {
        std::string left = row.letter != '\0' ? std::string("  -") + row.letter + ", --" : std::string("      --");
        left += row.name;
        if (row.argument != nullptr)
            left += std::string("=") + row.argument;
        left.resize(std::max(left.size() + 1, HELP_COLUMN), ' ');
        text += left;
        for (const char* unit = row.help; *unit != '\0'; ++unit) {
            text += *unit;
            if (*unit == '\n')
                text.append(HELP_COLUMN, ' ');
        }
        text += '\n';
    }
    text += "\nINPUT is standard input where it is missing or \"-\". What its encoding cannot read becomes U+FFFD.\n"
            "Several processes may append to one basic FILE at once. Each entry is in the file, whole, before\n"
            "the next line is read (without --async), and all are on the disk at the end.\n"
            "SIGTERM, SIGINT and SIGHUP end the reading; what has been read is written.\n"
            "The exit status is 0 when all was written, 1 for a failure, 2 for a wrong command line.\n";
    return text;
}

Options parseOptions(int argc, char** argv)
{
    std::string letters = ":";
    std::vector<option> table;
    for (const OptionRow& row : OPTIONS) {
        const int value = FIRST_VALUE + static_cast<int>(table.size());
        table.push_back({row.name, row.argument != nullptr ? required_argument : no_argument, nullptr, value});
        if (row.letter != '\0')
            letters += std::string(1, row.letter) + (row.argument != nullptr ? ":" : "");
    }
    table.push_back({});

    Options options;
    opterr = 0;
    const auto given = [&] {
        return optopt > 0 && optopt < FIRST_VALUE ? std::string("-") + static_cast<char>(optopt)
                                                  : std::string(argv[optind - 1]);
    };
    for (int found; (found = ::getopt_long(argc, argv, letters.c_str(), table.data(), nullptr)) != -1;) {
        if (found == ':')
            throw std::invalid_argument(given() + " needs a value");
        const auto* row = std::find_if(std::begin(OPTIONS), std::end(OPTIONS), [&](const OptionRow& each) {
            return found == FIRST_VALUE + (&each - OPTIONS) || (each.letter != '\0' && found == each.letter);
        });
        if (row == std::end(OPTIONS))
            throw std::invalid_argument("wrong option " + given());
        row->apply(options, optarg);
    }
    if (optind < argc)
        options.input = argv[optind++];
    if (optind < argc)
        throw std::invalid_argument(std::string("one input too many: ") + argv[optind]);
    if (options.input.empty() || options.file.empty())
        throw std::invalid_argument("a file name is empty");
    if (options.to && (options.file != "-" || options.name || options.fields || options.workers > 0 || options.escape))
        throw std::invalid_argument("with --to the server decides how the log looks");
    if (options.to && !options.to->level)
        options.to->level = options.level;
    if (options.escape && options.format != Options::Format::XML)
        throw std::invalid_argument("--escape goes with --format xml");
    return options;
}

} // namespace vxlog
