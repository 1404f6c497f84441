#include "vx/util/OptionTable.h"

#include "vx/detail/OneLine.h"
#include "vx/util/detail/OptionRows.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace vx::util {

namespace {

using Fault = OptionException::Fault;

constexpr std::string_view LONG = "--";

String textOf(const std::string& bytes)
{
    return vx::detail::onOneLine(vx::detail::foreignText(bytes).view());
}

} // namespace

namespace detail {

const OptionRow& OptionRows::rowOf(std::string_view name) const
{
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const OptionRow& each) { return each.name == name; });
    if (row == rows.end())
        throw Exception(textOf("no option of the table is named " + std::string(name)));
    return *row;
}

std::vector<const OptionRow*> OptionRows::candidatesOf(std::string_view name) const
{
    std::vector<const OptionRow*> found;
    for (const OptionRow& row : rows) {
        if (row.name == name)
            return {&row};
        if (!name.empty() && std::string_view(row.name).starts_with(name))
            found.push_back(&row);
    }
    return found;
}

const OptionRow& OptionRows::rowOfWritten(std::string_view name, const std::string& written) const
{
    const std::vector<const OptionRow*> candidates = candidatesOf(name);
    if (candidates.empty())
        throw OptionException(program, Fault::UNKNOWN, written, "", "unknown option " + written);
    if (candidates.size() == 1)
        return *candidates.front();
    std::string names;
    for (const OptionRow* row : candidates)
        names += (names.empty() ? "--" : ", --") + std::string(row->name);
    throw OptionException(program, Fault::AMBIGUOUS, written, names, "option " + written + " may be one of " + names);
}

const OptionRow* OptionRows::rowOfLetter(char letter) const
{
    const auto row
        = std::find_if(rows.begin(), rows.end(), [&](const OptionRow& each) { return each.letter == letter; });
    return row != rows.end() && letter != '\0' ? &*row : nullptr;
}

std::vector<std::string_view> wordsOf(const OptionRow& row)
{
    std::vector<std::string_view> words;
    for (std::string_view rest = row.value != nullptr ? row.value : "";
         rest.find('|') != rest.npos || !words.empty();) {
        const std::size_t bar = rest.find('|');
        words.push_back(rest.substr(0, bar));
        if (bar == rest.npos)
            break;
        rest.remove_prefix(bar + 1);
    }
    return words;
}

} // namespace detail

OptionException::OptionException(
    const std::string& program, Fault fault, std::string option, std::string detail, const std::string& why)
    : Exception(textOf(program + ": " + why + "; see --help"))
    , m_fault(fault)
    , m_option(std::move(option))
    , m_detail(std::move(detail))
{
}

OptionException::~OptionException() noexcept = default;

struct ParsedOptions::Content {
    std::shared_ptr<const detail::OptionRows> table;
    std::vector<Given> given;
    std::vector<std::string> arguments;
};

ParsedOptions::ParsedOptions(std::shared_ptr<const detail::OptionRows> table)
    : m_content(std::make_shared<Content>(Content {std::move(table), {}, {}}))
{
}

std::size_t ParsedOptions::getCount(std::string_view name) const
{
    const OptionRow* row = &m_content->table->rowOf(name);
    return static_cast<std::size_t>(std::count_if(
        m_content->given.begin(), m_content->given.end(), [&](const Given& each) { return each.row == row; }));
}

std::optional<std::string> ParsedOptions::find(std::string_view name) const
{
    const OptionRow& row = m_content->table->rowOf(name);
    if (const Given* given = lastOf(row))
        return given->value;
    return row.standard != nullptr ? std::optional<std::string>(row.standard) : std::nullopt;
}

std::string ParsedOptions::get(std::string_view name) const
{
    if (std::optional<std::string> value = find(name))
        return *std::move(value);
    const std::string option = std::string(LONG) + std::string(name);
    throw OptionException(m_content->table->program, Fault::MISSING, option, "", option + " is missing");
}

std::vector<std::string> ParsedOptions::getAll(std::string_view name) const
{
    const OptionRow* row = &m_content->table->rowOf(name);
    std::vector<std::string> values;
    for (const Given& each : m_content->given) {
        if (each.row == row)
            values.push_back(each.value);
    }
    return values;
}

const std::vector<ParsedOptions::Given>& ParsedOptions::getGiven() const
{
    return m_content->given;
}

const std::vector<std::string>& ParsedOptions::getArguments() const
{
    return m_content->arguments;
}

const ParsedOptions::Given* ParsedOptions::lastOf(const OptionRow& row) const
{
    const auto last = std::find_if(
        m_content->given.rbegin(), m_content->given.rend(), [&](const Given& each) { return each.row == &row; });
    return last != m_content->given.rend() ? &*last : nullptr;
}

template <class Number>
Number ParsedOptions::numberOf(std::string_view name, Number least, Number most) const
{
    const std::string text = get(name);
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && stop == end && number >= least && number <= most)
        return number;
    const Given* given = lastOf(m_content->table->rowOf(name));
    const std::string option = given != nullptr ? given->written : std::string(LONG) + std::string(name);
    throw OptionException(m_content->table->program, Fault::NO_NUMBER, option, text,
        option + " takes a number from " + std::to_string(least) + " to " + std::to_string(most) + ", not \"" + text
            + '"');
}

std::int64_t ParsedOptions::getSigned(std::string_view name, std::int64_t least, std::int64_t most) const
{
    return numberOf(name, least, most);
}

std::uint64_t ParsedOptions::getUnsigned(std::string_view name, std::uint64_t least, std::uint64_t most) const
{
    return numberOf(name, least, most);
}

OptionTable::OptionTable(std::string program, std::vector<OptionRow> rows)
    : m_table(std::make_shared<const detail::OptionRows>(detail::OptionRows {std::move(program), std::move(rows)}))
{
    for (const OptionRow& row : m_table->rows) {
        if (&m_table->rowOf(row.name) != &row || (row.letter != '\0' && m_table->rowOfLetter(row.letter) != &row))
            throw Exception(textOf("two options of the table are alike: " + std::string(row.name)));
    }
}

const OptionRow* OptionTable::findRow(std::string_view written) const
{
    if (written.starts_with(LONG)) {
        const std::vector<const OptionRow*> candidates = m_table->candidatesOf(written.substr(LONG.size()));
        return candidates.size() == 1 ? candidates.front() : nullptr;
    }
    return written.size() == 2 && written.front() == '-' ? m_table->rowOfLetter(written.back()) : nullptr;
}

namespace {

/// Reads one command line from its beginning to its end.
class Reader {
public:
    Reader(const detail::OptionRows& table, std::span<const char* const> rest)
        : m_table(table)
        , m_rest(rest)
    {
    }

    bool isAtEnd() const { return m_rest.empty(); }
    std::string_view next()
    {
        const std::string_view argument = m_rest.front();
        m_rest = m_rest.subspan(1);
        return argument;
    }

    /// `text` follows the two dashes.
    ParsedOptions::Given readLong(std::string_view text)
    {
        const std::size_t sign = text.find('=');
        const std::string written = std::string(LONG) + std::string(text.substr(0, sign));
        const OptionRow& row = m_table.rowOfWritten(text.substr(0, sign), written);
        if (row.value != nullptr)
            return take(row, written, sign != text.npos ? std::optional(text.substr(sign + 1)) : std::nullopt);
        if (sign == text.npos)
            return {&row, "", written};
        throw OptionException(m_table.program, Fault::VALUE_NOT_TAKEN, written, std::string(text.substr(sign + 1)),
            written + " takes no value");
    }

    /// Takes the first letter off `letters`; an option with a value takes all of them.
    ParsedOptions::Given readLetter(std::string_view& letters)
    {
        const std::string written {'-', letters.front()};
        const OptionRow* row = m_table.rowOfLetter(letters.front());
        letters.remove_prefix(1);
        if (row == nullptr)
            throw OptionException(m_table.program, Fault::UNKNOWN, written, "", "unknown option " + written);
        if (row->value == nullptr)
            return {row, "", written};
        const std::string_view rest = std::exchange(letters, {});
        return take(*row, written, rest.empty() ? std::nullopt : std::optional(rest));
    }

private:
    ParsedOptions::Given take(const OptionRow& row, const std::string& written, std::optional<std::string_view> value)
    {
        if (!value && m_rest.empty())
            throw OptionException(m_table.program, Fault::VALUE_MISSING, written, "", written + " needs a value");
        const std::string taken(value ? *value : next());
        const std::vector<std::string_view> words = detail::wordsOf(row);
        if (!words.empty() && std::find(words.begin(), words.end(), taken) == words.end())
            throw OptionException(m_table.program, Fault::NO_SUCH_VALUE, written, taken,
                written + " takes " + row.value + ", not \"" + taken + '"');
        return {&row, taken, written};
    }

    const detail::OptionRows& m_table;
    std::span<const char* const> m_rest;
};

} // namespace

ParsedOptions OptionTable::parse(int count, const char* const* arguments, Order order, Faults faults) const
{
    ParsedOptions options(m_table);
    const std::span all(arguments, static_cast<std::size_t>(std::max(count, 0)));
    Reader reader(*m_table, all.subspan(std::min<std::size_t>(all.size(), 1)));
    const auto add = [&](auto read) {
        try {
            options.m_content->given.push_back(read());
        } catch (const OptionException&) {
            if (faults == Faults::THROWN)
                throw;
        }
    };
    bool isInOptions = true;
    while (!reader.isAtEnd()) {
        std::string_view argument = reader.next();
        if (!isInOptions || argument.size() < 2 || argument.front() != '-') {
            options.m_content->arguments.emplace_back(argument);
            isInOptions = isInOptions && order == Order::MIXED;
        } else if (argument == LONG) {
            isInOptions = false;
        } else if (argument.starts_with(LONG)) {
            add([&] { return reader.readLong(argument.substr(LONG.size())); });
        } else {
            for (argument.remove_prefix(1); !argument.empty();)
                add([&] { return reader.readLetter(argument); });
        }
    }
    return options;
}

} // namespace vx::util
