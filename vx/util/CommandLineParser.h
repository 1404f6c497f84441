#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/util/detail/CommandLineCore.h"

#include <cstdint>

namespace vx::util {

class OptionDefinition;

/// Splits a command line into parameters and options, and keeps their order. An option begins with any number of "-" or
/// "/". It needs no definition: without one it has only the values after a "=". Any command line is accepted. An
/// Exception is thrown only if a caller asks for something missing. One thread at a time.
///
/// Tokens are separated by blanks. A token that begins with a double quote ends at the next one. Values after a "=" are
/// separated by commas.
class VX_API CommandLineParser : public Object {
public:
    /// A parameter, which has an empty name and one value, or an option with its values.
    class VX_API Element : public Object {
    public:
        ~Element() noexcept override;

        String getName() const;
        /// Among all elements; -1 for a definition.
        int getPosition() const;
        int getValueCount() const;
        /// Throws Exception "Invalid vector index".
        String getValueString(int index) const;
        /// Decimal, or by its prefix hexadecimal (0x) or octal (0); text after the number is ignored. Throws Exception
        /// if there is no number.
        std::int32_t getValueLong(int index) const;
        double getValueDouble(int index) const;

    protected:
        Element(const String& name, int position);
        void addValue(const String& value);
        void copyValues(const Element& other);

        detail::CommandLineValues m_values;

    private:
        template <class AnyElement, class AnyDefinition>
        friend class detail::CommandLineCore;

        Element& operator=(const Element&) = delete;
    };

    CommandLineParser();
    CommandLineParser(const CommandLineParser& other);
    CommandLineParser& operator=(const CommandLineParser& other);
    ~CommandLineParser() noexcept override;

    /// Defines an option that takes up to `valueCount` of the following arguments as values. `defaults`, separated by
    /// commas and blanks, are its values if none follow or the option is missing; null for none. Replaces an earlier
    /// definition of the name.
    void defineOption(const char16_t* name, int valueCount, const char16_t* defaults);
    /// Applies to names of options. May be called before and after `parse`.
    void setIgnoreCase(bool ignoreCase);

    void parse(const String& text);
    /// All `count` arguments, the program's name too if it is among them, in the default encoding. Bytes that are
    /// invalid in it become U+FFFD.
    void parse(int count, char** arguments);

    int getElementCount() const;
    /// Both throw Exception "Invalid vector index".
    Reference<const Element> getElement(int index) const;
    int getParameterCount() const;
    Reference<const Element> getParameter(int index) const;
    /// Whether the option was on the command line.
    bool isPresent(const char16_t* name) const;
    /// The last one of that name, else its definition if that has defaults, else null.
    Reference<const Element> getOption(const char16_t* name) const;
    /// Of `getOption(name)`. These throw Exception if that is null.
    String getValueString(const char16_t* name, int index) const;
    std::int32_t getValueLong(const char16_t* name, int index) const;
    double getValueDouble(const char16_t* name, int index) const;

protected:
    /// Null for a name without one.
    Reference<OptionDefinition> getDefinition(const String& name) const;
    /// Removes the elements, but keeps the definitions.
    void reset();

private:
    static const char16_t* const m_switchChars;

    detail::CommandLineCore<Element, OptionDefinition> m_core;
};

/// The definition of an option. Its values are the defaults.
class VX_API OptionDefinition : public CommandLineParser::Element {
public:
    ~OptionDefinition() noexcept override;

    /// How many of the following arguments are values of the option.
    int getCount() const { return m_count; }
    bool hasDefaults() const { return m_hasDefaults; }

private:
    friend class CommandLineParser;

    OptionDefinition(const String& name, int count, const char16_t* defaults);

    int m_count;
    bool m_hasDefaults;
};

} // namespace vx::util
