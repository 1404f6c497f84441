#pragma once

#include "vx/Reference.h"
#include "vx/String.h"

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace vx::util::detail {

/// What an element of a command line holds, in either generation of parsers.
class VX_API CommandLineValues {
public:
    CommandLineValues(const String& name, int position);

    const String& getName() const { return m_name; }
    int getPosition() const { return m_position; }
    int getCount() const { return static_cast<int>(m_values.size()); }
    const String& getString(int index) const;
    std::int32_t getLong(int index) const;
    double getDouble(int index) const;

    void add(const String& value) { m_values.push_back(value); }
    /// The values between commas and blanks. With `pairIsEmpty` two double quotes are an empty one.
    void addAll(const char16_t* text, bool pairIsEmpty);
    void copyFrom(const CommandLineValues& other) { m_values = other.m_values; }

private:
    String m_name;
    std::vector<String> m_values;
    int m_position;
};

/// What the two generations of command-line parsers share: the grammar, the elements in their order, and what is known by
/// name, with and without regard to case. Elements are made and filled by the core alone.
template <class Element, class Definition>
class CommandLineCore {
public:
    CommandLineCore();

    void define(const char16_t* name, const Reference<Definition>& definition);
    void setIgnoreCase(bool ignoreCase) { m_ignoresCase = ignoreCase; }
    void parse(std::u16string_view text, const char16_t* switchChars, bool pairIsEmpty);
    void reset();

    int getElementCount() const { return static_cast<int>(m_elements.size()); }
    const Reference<Element>& getElement(int index) const;
    int getParameterCount() const { return static_cast<int>(m_parameters.size()); }
    const Reference<Element>& getParameter(int index) const;
    bool isPresent(const char16_t* name) const;
    Reference<Element> getOption(const char16_t* name) const;
    /// As above, and throws Exception where there is none. It stays with this object: nothing replaces it within a call.
    const Element& getExisting(const char16_t* name) const;
    Reference<Definition> getDefinition(const String& name) const;

private:
    struct NameOrder {
        bool ignoresCase;
        bool operator()(const String& left, const String& right) const { return left.compare(right, ignoresCase) < 0; }
    };
    /// What is known by name, in one way of telling names apart.
    struct Names {
        explicit Names(bool ignoresCase);

        std::map<String, Reference<Definition>, NameOrder> definitions;
        std::map<String, int, NameOrder> positions;
    };

    const Names& names() const { return m_ignoresCase ? m_namesIgnoringCase : m_namesByCase; }

    std::vector<Reference<Element>> m_elements;
    Names m_namesByCase;
    Names m_namesIgnoringCase;
    std::vector<int> m_parameters;
    bool m_ignoresCase = false;
};

/// The arguments as one command line, each in the default encoding, with quotes around one that has a blank in it. Bytes
/// that are no text there become U+FFFD.
VX_API String joinArguments(int count, char** const arguments);

} // namespace vx::util::detail
