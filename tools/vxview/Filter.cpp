#include "Filter.h"

#include "common/Failure.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <re2/re2.h>

namespace vxview {

using namespace vxtools;

namespace {

constexpr Message NO_EXPRESSION {u"vxview.no-expression", "\"{0}\" is no regular expression: {1}"};
constexpr Message NO_CONDITION {
    u"vxview.no-condition", "\"{0}\" is no condition such as peer=10.0.0.1, text~timeout or level>=3"};

std::optional<double> numberIn(std::string_view text)
{
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && stop == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

bool isEqualByte(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

/// Without case, letters of ASCII only: an expression tells the others alike too.
bool isIn(std::string_view text, std::string_view part, bool ignoresCase)
{
    if (!ignoresCase)
        return text.find(part) != text.npos;
    return std::search(text.begin(), text.end(), part.begin(), part.end(), isEqualByte) != text.end();
}

bool isEqual(std::string_view a, std::string_view b, bool ignoresCase)
{
    return ignoresCase ? std::ranges::equal(a, b, isEqualByte) : a == b;
}

} // namespace

Expression::Expression(const std::string& pattern, bool ignoresCase)
{
    re2::RE2::Options options;
    options.set_log_errors(false);
    options.set_case_sensitive(!ignoresCase);
    options.set_dot_nl(true); // a value may have several lines
    m_compiled = std::make_unique<re2::RE2>(pattern, options);
    if (!m_compiled->ok())
        throw UsageError(NO_EXPRESSION(pattern, m_compiled->error()));
}

Expression::Expression(Expression&&) noexcept = default;
Expression& Expression::operator=(Expression&&) noexcept = default;
Expression::~Expression() = default;

bool Expression::isIn(std::string_view text) const
{
    return re2::RE2::PartialMatch(re2::StringPiece(text.data(), text.size()), *m_compiled);
}

struct Condition::Row {
    std::string_view sign;
    Operator meaning;
};

/// The longer of two signs that begin alike stands first.
const Condition::Row Condition::ROWS[] = {
    {"!=", Operator::NOT_EQUAL},
    {"!~", Operator::DOES_NOT_MATCH},
    {"<=", Operator::LESS_EQUAL},
    {">=", Operator::GREATER_EQUAL},
    {"=", Operator::EQUAL},
    {"~", Operator::MATCHES},
    {"<", Operator::LESS},
    {">", Operator::GREATER},
};

Condition::Condition(const std::string& text, bool ignoresCase)
    : m_ignoresCase(ignoresCase)
{
    const std::size_t end = text.find_first_of("!=~<>");
    const std::string_view rest = std::string_view(text).substr(std::min(end, text.size()));
    const Row* const row = std::ranges::find_if(ROWS, [&](const Row& each) { return rest.starts_with(each.sign); });
    if (end == 0 || row == std::end(ROWS))
        throw UsageError(NO_CONDITION(text));
    m_field = text.substr(0, end);
    m_operator = row->meaning;
    m_value = rest.substr(row->sign.size());
    const bool isOrder = row->sign[0] == '<' || row->sign[0] == '>';
    if (isOrder && m_value.empty())
        throw UsageError(NO_CONDITION(text));
    m_number = numberIn(m_value);
    if (m_operator == Operator::MATCHES || m_operator == Operator::DOES_NOT_MATCH)
        m_expression.emplace(m_value, ignoresCase);
}

bool Condition::holds(Record& record) const
{
    const std::optional<std::string_view> value = record.find(m_field);
    if (!value)
        return m_operator == Operator::NOT_EQUAL || m_operator == Operator::DOES_NOT_MATCH;
    if (m_expression)
        return m_expression->isIn(*value) == (m_operator == Operator::MATCHES);
    const auto compare = [this](const auto& a, const auto& b, bool isSame) {
        switch (m_operator) {
        case Operator::LESS:
            return a < b;
        case Operator::LESS_EQUAL:
            return a <= b;
        case Operator::GREATER:
            return a > b;
        case Operator::GREATER_EQUAL:
            return a >= b;
        default:
            return isSame == (m_operator == Operator::EQUAL);
        }
    };
    const std::optional<double> number = m_number ? numberIn(*value) : std::nullopt;
    if (number)
        return compare(*number, *m_number, *number == *m_number);
    return compare(*value, std::string_view(m_value), isEqual(*value, m_value, m_ignoresCase));
}

std::optional<std::string_view> Condition::getEqualText() const
{
    // A number may be written in several ways.
    return m_operator == Operator::EQUAL && !m_number ? std::optional<std::string_view>(m_value) : std::nullopt;
}

bool Filter::hasLevels() const
{
    return lowestLevel != std::numeric_limits<std::int64_t>::min()
        || highestLevel != std::numeric_limits<std::int64_t>::max();
}

bool Filter::isEmpty() const
{
    return !hasLevels() && !since && !until && conditions.empty() && texts.empty() && expressions.empty();
}

bool Filter::lets(Record& record) const
{
    const bool isEntry = record.getKind() == Record::Kind::ENTRY;
    const bool needsFields = hasLevels() || since || until || !conditions.empty();
    if (needsFields && !(isEntry && letsFields(record)))
        return false;
    return hasTexts(record);
}

bool Filter::letsFields(Record& record) const
{
    if (hasLevels()) {
        const std::string_view text = record.find("level").value_or("0"); // without the field, the level is 0
        std::int64_t level = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), level);
        if (error != std::errc() || stop != text.data() + text.size() || level < lowestLevel || level > highestLevel)
            return false;
    }
    if (since || until) {
        const std::optional<Moment> time = timeOf(record);
        if (!time || (since && *time < *since) || (until && *time >= *until))
            return false;
    }
    const auto holds = [&](const Condition& condition) { return condition.holds(record); };
    return anyCondition && !conditions.empty() ? std::ranges::any_of(conditions, holds)
                                               : std::ranges::all_of(conditions, holds);
}

bool Filter::hasTexts(Record& record) const
{
    const auto isSomewhere = [&](const auto& isInValue) {
        if (record.getKind() != Record::Kind::ENTRY)
            return isInValue(record.getBytes());
        return std::ranges::any_of(record.getFields(), [&](const Field& field) { return isInValue(field.value); });
    };
    const auto hasText = [&](const std::string& text) {
        return isSomewhere([&](std::string_view value) { return isIn(value, text, ignoresCase); });
    };
    const auto matches = [&](const Expression& expression) {
        return isSomewhere([&](std::string_view value) { return expression.isIn(value); });
    };
    return std::ranges::all_of(texts, hasText) && std::ranges::all_of(expressions, matches);
}

std::string Filter::getNeedle() const
{
    std::string longest;
    if (ignoresCase)
        return longest;
    const auto offer = [&](std::string_view text) {
        const bool isPlain = std::ranges::none_of(text, [](unsigned char byte) {
            return byte < ' ' || std::string_view("\"'\\<>&").find(static_cast<char>(byte)) != std::string_view::npos;
        });
        if (isPlain && text.size() > longest.size())
            longest = text;
    };
    for (const std::string& text : texts)
        offer(text);
    if (!anyCondition || conditions.size() == 1) {
        for (const Condition& condition : conditions)
            offer(condition.getEqualText().value_or(""));
    }
    return longest;
}

std::optional<Moment> timeOf(Record& record)
{
    const std::optional<std::string_view> text = record.find("timestamp");
    return text ? momentOf(*text) : std::nullopt;
}

} // namespace vxview
