#pragma once

#include "Moment.h"
#include "Record.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace re2 {
class RE2;
}

namespace vxview {

/// A regular expression in the syntax of RE2. The time of a search grows with the length of the text only, so that an
/// expression or a log cannot make it hang.
class Expression {
public:
    /// Throws UsageError that names the fault.
    Expression(const std::string& pattern, bool ignoresCase);
    Expression(Expression&&) noexcept;
    Expression& operator=(Expression&&) noexcept;
    ~Expression();

    bool isIn(std::string_view text) const;

private:
    std::unique_ptr<re2::RE2> m_compiled;
};

/// A condition on one field: "peer=10.0.0.1", "text~time.?out", "level>=3", and "!=", "!~", "<", "<=", ">".
class Condition {
public:
    /// Throws UsageError.
    Condition(const std::string& text, bool ignoresCase);

    /// Numbers are compared as numbers, other texts by their bytes. A missing field fulfils only "!=" and "!~".
    bool holds(Record& record) const;
    /// The text that the field has to equal.
    std::optional<std::string_view> getEqualText() const;

private:
    enum class Operator { EQUAL, NOT_EQUAL, MATCHES, DOES_NOT_MATCH, LESS, LESS_EQUAL, GREATER, GREATER_EQUAL };
    struct Row;
    static const Row ROWS[];

    std::string m_field;
    Operator m_operator {};
    std::string m_value;
    std::optional<double> m_number;
    std::optional<Expression> m_expression;
    bool m_ignoresCase;
};

/// What a user wants to see. All parts have to hold.
struct Filter {
    std::int64_t lowestLevel = std::numeric_limits<std::int64_t>::min();
    std::int64_t highestLevel = std::numeric_limits<std::int64_t>::max();
    std::optional<Moment> since {};
    std::optional<Moment> until {}; ///< not included
    std::vector<Condition> conditions {};
    bool anyCondition = false; ///< one of the conditions is enough
    std::vector<std::string> texts {}; ///< each is part of a value
    std::vector<Expression> expressions {}; ///< each matches in a value
    bool ignoresCase = false;

    /// Torn entries and foreign lines have no fields: they pass if their bytes contain what is looked for.
    bool lets(Record& record) const;
    bool isEmpty() const;
    /// A text that the bytes of every piece that passes contain, in the sense of Reader; empty if there is none.
    std::string getNeedle() const;

private:
    bool hasLevels() const;
    bool letsFields(Record& record) const;
    bool hasTexts(Record& record) const;
};

/// The time of an entry, if it has one that can be read.
std::optional<Moment> timeOf(Record& record);

} // namespace vxview
