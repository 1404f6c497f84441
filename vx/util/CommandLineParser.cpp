#include "vx/util/CommandLineParser.h"

#include "vx/util/detail/CommandLineCoreImpl.h"

namespace vx::util {

const char16_t* const CommandLineParser::m_switchChars = u"-/";

CommandLineParser::Element::Element(const String& name, int position)
    : m_values(name, position)
{
}

CommandLineParser::Element::~Element() noexcept = default;

String CommandLineParser::Element::getName() const
{
    return m_values.getName();
}

int CommandLineParser::Element::getPosition() const
{
    return m_values.getPosition();
}

int CommandLineParser::Element::getValueCount() const
{
    return m_values.getCount();
}

String CommandLineParser::Element::getValueString(int index) const
{
    return m_values.getString(index);
}

std::int32_t CommandLineParser::Element::getValueLong(int index) const
{
    return m_values.getLong(index);
}

double CommandLineParser::Element::getValueDouble(int index) const
{
    return m_values.getDouble(index);
}

void CommandLineParser::Element::addValue(const String& value)
{
    m_values.add(value);
}

void CommandLineParser::Element::copyValues(const Element& other)
{
    m_values.copyFrom(other.m_values);
}

OptionDefinition::OptionDefinition(const String& name, int count, const char16_t* defaults)
    : Element(name, -1)
    , m_count(count)
    , m_hasDefaults(defaults != nullptr)
{
    if (defaults != nullptr)
        m_values.addAll(defaults, false);
}

OptionDefinition::~OptionDefinition() noexcept = default;

CommandLineParser::CommandLineParser() = default;
CommandLineParser::CommandLineParser(const CommandLineParser& other) = default;
CommandLineParser::~CommandLineParser() noexcept = default;

CommandLineParser& CommandLineParser::operator=(const CommandLineParser& other)
{
    m_core = decltype(m_core)(other.m_core); // as a whole, or not at all
    return *this;
}

void CommandLineParser::defineOption(const char16_t* name, int valueCount, const char16_t* defaults)
{
    m_core.define(name, new OptionDefinition(name, valueCount, defaults));
}

void CommandLineParser::setIgnoreCase(bool ignoreCase)
{
    m_core.setIgnoreCase(ignoreCase);
}

void CommandLineParser::parse(const String& text)
{
    m_core.parse(std::u16string(text.view()), m_switchChars, false);
}

void CommandLineParser::parse(int count, char** arguments)
{
    m_core.parse(detail::joinedArguments(count, arguments), m_switchChars, false);
}

int CommandLineParser::getElementCount() const
{
    return m_core.getElementCount();
}

Reference<const CommandLineParser::Element> CommandLineParser::getElement(int index) const
{
    return m_core.getElement(index);
}

int CommandLineParser::getParameterCount() const
{
    return m_core.getParameterCount();
}

Reference<const CommandLineParser::Element> CommandLineParser::getParameter(int index) const
{
    return m_core.getParameter(index);
}

bool CommandLineParser::isPresent(const char16_t* name) const
{
    return m_core.isPresent(name);
}

Reference<const CommandLineParser::Element> CommandLineParser::getOption(const char16_t* name) const
{
    return m_core.getOption(name);
}

String CommandLineParser::getValueString(const char16_t* name, int index) const
{
    return m_core.getExisting(name).getValueString(index);
}

std::int32_t CommandLineParser::getValueLong(const char16_t* name, int index) const
{
    return m_core.getExisting(name).getValueLong(index);
}

double CommandLineParser::getValueDouble(const char16_t* name, int index) const
{
    return m_core.getExisting(name).getValueDouble(index);
}

Reference<OptionDefinition> CommandLineParser::getDefinition(const String& name) const
{
    return m_core.getDefinition(name);
}

void CommandLineParser::reset()
{
    m_core.reset();
}

} // namespace vx::util
