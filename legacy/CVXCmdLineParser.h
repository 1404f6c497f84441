#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/Object.h"
#include "vx/String.h"
#include "vx/util/detail/CommandLineCore.h"

#include <cstdint>

class COptionDefinition;

/// An element of a command line: a parameter, which has an empty name and one value, or an option with its values.
class VX_API CVXCmdLineElement : public vx::Object {
public:
    ~CVXCmdLineElement() noexcept override;

    vx::String getName() const;
    /// Among all elements; -1 for a definition.
    int getPosition() const;
    int getValueCount() const;
    /// Throws Exception "Invalid vector index".
    vx::String getValueString(int index) const;
    /// Decimal, or by its prefix hexadecimal (0x) or octal (0); text after the number is ignored. Throws Exception if
    /// there is no number.
    std::int32_t getValueLong(int index) const;
    double getValueDouble(int index) const;

protected:
    CVXCmdLineElement(const vx::String& name, int position);
    void addValue(const char16_t* value);
    void copyValues(const CVXCmdLineElement& other);

    vx::util::detail::CommandLineValues m_values;

private:
    template <class AnyElement, class AnyDefinition>
    friend class vx::util::detail::CommandLineCore;

    CVXCmdLineElement& operator=(const CVXCmdLineElement&) = delete;
};

/// The definition of an option. Its values are the defaults.
class VX_API COptionDefinition : public CVXCmdLineElement {
public:
    /// `defaults` are separated by commas and blanks; null for none.
    COptionDefinition(const char16_t* name, int valueCount, const char16_t* defaults);
    ~COptionDefinition() noexcept override;

    /// How many of the following arguments are values of the option.
    int getCount() const { return m_count; }
    bool hasDefaults() const { return m_hasDefaults; }

private:
    int m_count;
    bool m_hasDefaults;
};

/// The command-line parser of the older generation. It differs from `vx::util::CommandLineParser` in one point: two
/// double quotes at the start of a token are an empty token. Between blanks, that is an option with an empty name.
///
/// It has no reference count: its creator deletes it.
class VX_API CVXCmdLineParser {
public:
    CVXCmdLineParser();
    CVXCmdLineParser(const CVXCmdLineParser& other);
    CVXCmdLineParser& operator=(const CVXCmdLineParser& other);
    virtual ~CVXCmdLineParser();

    /// Defines an option that takes up to `valueCount` of the following arguments as values. `defaults`, separated by
    /// commas and blanks, are its values if none follow or the option is missing; null for none. Replaces an earlier
    /// definition of the name.
    void defineOption(const char16_t* name, int valueCount, const char16_t* defaults);
    /// Applies to names of options. May be called before and after `parse`.
    void setIgnoreCase(bool ignoreCase);

    /// Null is an empty command line.
    void parse(const char16_t* text);
    /// All `count` arguments, the program's name too if it is among them, in the default encoding.
    void parse(int count, char** arguments);

    int getElementCount() const;
    /// Both throw Exception "Invalid vector index".
    CVXSmartPtr<CVXCmdLineElement> getElement(int index) const;
    int getParameterCount() const;
    CVXSmartPtr<CVXCmdLineElement> getParameter(int index) const;
    /// Whether the option was on the command line.
    bool isPresent(const char16_t* name) const;
    /// The last one of that name, else its definition if that has defaults, else null.
    CVXSmartPtr<CVXCmdLineElement> getOption(const char16_t* name) const;
    /// Of `getOption(name)`. These throw Exception if that is null.
    vx::String getValueString(const char16_t* name, int index) const;
    std::int32_t getValueLong(const char16_t* name, int index) const;
    double getValueDouble(const char16_t* name, int index) const;

protected:
    /// Null for a name without one.
    CVXSmartPtr<COptionDefinition> getDefinition(const vx::String& name) const;
    /// Removes the elements, but keeps the definitions.
    void reset();

private:
    static const char16_t* const m_switchChars;

    vx::util::detail::CommandLineCore<CVXCmdLineElement, COptionDefinition> m_core;
};
