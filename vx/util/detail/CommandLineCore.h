#pragma once

#include "vx/Reference.h"
#include "vx/String.h"

#include <climits>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vx::util::detail {

/// The name and values of an element of a command line, for both generations of parsers.
class VX_API CommandLineValues {
public:
    /// For `position`, a parameter may give `ofParameter` of it, and then `name` is its value.
    CommandLineValues(const String& name, int position);
    /// One of the many parameters of a long command line needs no separate memory for its only value.
    static constexpr int ofParameter(int position) noexcept { return position + IS_PARAMETER; }

    String getName() const { return isParameter() ? String() : m_name; }
    int getPosition() const { return isParameter() ? m_position - IS_PARAMETER : m_position; }
    int getCount() const { return isParameter() ? 1 : static_cast<int>(m_values.size()); }
    const String& getString(int index) const;
    std::int32_t getLong(int index) const;
    double getDouble(int index) const;

    void add(String value) { m_values.push_back(std::move(value)); }
    /// Adds values that are separated by commas and blanks. With `pairIsEmpty`, two double quotes are an empty value.
    void addAll(const char16_t* text, bool pairIsEmpty);
    void copyFrom(const CommandLineValues& other)
    {
        if (other.isParameter())
            m_values.assign(1, other.m_name);
        else
            m_values = other.m_values;
    }

private:
    static constexpr int IS_PARAMETER = INT_MIN;

    /// A definition has position -1, and an element of a derived class any other.
    bool isParameter() const noexcept { return m_position < IS_PARAMETER / 2; }

    String m_name; ///< of a parameter: the value
    std::vector<String> m_values;
    int m_position;
};

/// Shared by the two generations of command-line parsers: the grammar, the elements in their order, and what is found
/// by name, with and without regard to case. Only the core creates and fills elements.
template <class Element, class Definition>
class CommandLineCore {
public:
    void define(const char16_t* name, const Reference<Definition>& definition);
    void setIgnoreCase(bool ignoreCase) { m_ignoresCase = ignoreCase; }
    /// Keeps the elements of before if it fails.
    void parse(std::u16string text, const char16_t* switchChars, bool pairIsEmpty);
    void reset();

    int getElementCount() const { return static_cast<int>(m_parsed.elements.size()); }
    const Reference<Element>& getElement(int index) const;
    int getParameterCount() const { return static_cast<int>(m_parsed.parameters.size()); }
    const Reference<Element>& getParameter(int index) const;
    bool isPresent(const char16_t* name) const;
    Reference<Element> getOption(const char16_t* name) const;
    /// As above, but throws Exception if there is none. This object keeps owning it, so it is valid until the next
    /// call.
    const Element& getExisting(const char16_t* name) const;
    Reference<Definition> getDefinition(const String& name) const;

private:
    struct NameOrder {
        bool ignoresCase;
        bool operator()(const String& left, const String& right) const { return left.compare(right, ignoresCase) < 0; }
    };
    /// Two maps: one that compares names by case, and one that does not.
    template <class Value>
    struct ByName {
        using Map = std::map<String, Value, NameOrder>;

        Map maps[2] {Map(NameOrder {false}), Map(NameOrder {true})};

        const Map& in(bool ignoresCase) const { return maps[ignoresCase ? 1 : 0]; }
        void set(const String& name, const Value& value);
    };
    /// A command line.
    struct Parsed {
        std::vector<Reference<Element>> elements;
        std::vector<int> parameters;
        ByName<int> positions;
    };

    ByName<Reference<Definition>> m_definitions;
    Parsed m_parsed;
    bool m_ignoresCase = false;
};

/// Joins the arguments, which are in the default encoding, to one command line. An argument with a blank in it gets
/// quotes. Bytes that are invalid in it become U+FFFD. A null argument ends the list, also before `count`.
std::u16string joinedArguments(int count, char** arguments);
/// The same as a String.
VX_API String joinArguments(int count, char** arguments);

} // namespace vx::util::detail
