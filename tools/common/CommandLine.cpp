#include "common/CommandLine.h"

#include "common/Program.h"

#include <algorithm>
#include <utility>

namespace vxtools {

using vx::util::OptionException;
using vx::util::OptionTable;
using vx::util::ParsedOptions;

namespace {

constexpr const char* LOCALE = "locale";

const std::vector<vx::util::OptionRow>& sharedRows()
{
    static const std::vector<vx::util::OptionRow> rows {
        {.name = LOCALE,
            .value = "LOCALE",
            .help = "the language of messages, such as de_AT, from the component library vxbundles.so (English)"},
        {.name = "completion",
            .value = "bash|zsh|fish",
            .help = "print a script by which the shell completes the options"},
        {.name = "help", .letter = 'h', .help = "print this"},
        {.name = "version", .letter = 'V', .help = "print the version"},
    };
    return rows;
}

bool isShared(std::string_view name)
{
    return std::ranges::any_of(sharedRows(), [&](const vx::util::OptionRow& row) { return row.name == name; });
}

constexpr Message NO_OPTION {u"tools.no-option", "unknown option {0}"};
constexpr Message WHICH_OPTION {u"tools.which-option", "option {0} may be one of {1}"};
constexpr Message NO_VALUE {u"tools.no-value", "{0} needs a value"};
constexpr Message TAKES_NO_VALUE {u"tools.takes-no-value", "{0} takes no value"};
constexpr Message NO_SUCH_VALUE {u"tools.no-such-value", "{0} does not take \"{1}\", only {2}"};
constexpr Message NO_NUMBER {u"tools.no-number", "{0} takes a number from {1} to {2}, not \"{3}\""};
constexpr Message ONE_INPUT_TOO_MANY {u"tools.one-input-too-many", "one input too many: {0}"};

/// "plain, json, xml"
std::string valuesOf(const OptionTable& table, const std::string& option)
{
    const vx::util::OptionRow* row = table.findRow(option);
    std::string values;
    for (const char* each = row != nullptr ? row->value : ""; *each != '\0'; ++each)
        values += *each == '|' ? std::string(", ") : std::string(1, *each);
    return values;
}

Text textOf(const OptionException& failure, const OptionTable& table)
{
    switch (failure.getFault()) {
    case OptionException::Fault::UNKNOWN:
        return NO_OPTION(failure.getOption());
    case OptionException::Fault::AMBIGUOUS:
        return WHICH_OPTION(failure.getOption(), failure.getDetail());
    case OptionException::Fault::MISSING:
    case OptionException::Fault::VALUE_MISSING:
        return NO_VALUE(failure.getOption());
    case OptionException::Fault::VALUE_NOT_TAKEN:
        return TAKES_NO_VALUE(failure.getOption());
    case OptionException::Fault::NO_SUCH_VALUE:
    case OptionException::Fault::NO_NUMBER:
        break;
    }
    return NO_SUCH_VALUE(failure.getOption(), failure.getDetail(), valuesOf(table, failure.getOption()));
}

} // namespace

OptionTable makeOptionTable(const char* program, std::vector<vx::util::OptionRow> rows)
{
    rows.insert(rows.end(), sharedRows().begin(), sharedRows().end());
    return OptionTable(program, std::move(rows));
}

std::optional<std::string> localeOf(const OptionTable& table, int argc, char** argv)
{
    return table.parse(argc, argv, OptionTable::Order::MIXED, OptionTable::Faults::SKIPPED).find(LOCALE);
}

std::string helpOf(const OptionTable& table, std::u16string_view prefix, Messages& messages)
{
    return table.getHelp([&](const vx::util::OptionRow& row) {
        const std::string_view name = row.name;
        const std::u16string key
            = std::u16string(isShared(name) ? u"tools.help." : prefix).append(name.begin(), name.end());
        return messages.say(Message {key.c_str(), row.help}());
    });
}

ParsedOptions parseCommandLine(const OptionTable& table, int argc, char** argv, OptionTable::Order order)
{
    try {
        return table.parse(argc, argv, order);
    } catch (const OptionException& failure) {
        throw UsageError(textOf(failure, table));
    }
}

std::string inputOf(const ParsedOptions& options, const std::string& otherwise)
{
    const std::vector<std::string>& arguments = options.getArguments();
    if (arguments.size() > 1)
        throw UsageError(ONE_INPUT_TOO_MANY(arguments[1]));
    return arguments.empty() ? otherwise : arguments.front();
}

std::int64_t numberOf(const ParsedOptions& options, std::string_view name, std::int64_t least, std::int64_t most)
{
    try {
        return options.getNumber(name, least, most);
    } catch (const OptionException& failure) {
        throw UsageError(NO_NUMBER(failure.getOption(), least, most, failure.getDetail()));
    }
}

void printCompletion(const OptionTable& table, const std::string& shell, std::span<const std::string_view> words)
{
    print(table.getCompletion(shell == "zsh" ? OptionTable::Shell::ZSH
            : shell == "fish"                ? OptionTable::Shell::FISH
                                             : OptionTable::Shell::BASH,
        words));
}

} // namespace vxtools
