#include "vx/util/CommandLineParser.h"

#include "vx/Exception.h"
#include "vx/util/detail/TokenReader.h"
#include "vxsys/Number.h"

#include <string>

namespace vx::util {

namespace {

constexpr int NO_POSITION = -1;

template <class T>
const T& at(const std::vector<T>& vector, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= vector.size())
        throw Exception(u"Invalid vector index");
    return vector[static_cast<std::size_t>(index)];
}

/// A copy that a reader of tokens may cut up.
std::u16string writable(std::u16string_view text)
{
    return std::u16string(text.substr(0, text.find(u'\0')));
}

} // namespace

const char16_t* const CommandLineParser::m_switchChars = u"-/";

CommandLineParser::Element::Element(const String& name, int position)
    : m_name(name)
    , m_position(position)
{
}

CommandLineParser::Element::~Element() noexcept = default;

String CommandLineParser::Element::getName() const
{
    return m_name;
}

int CommandLineParser::Element::getPosition() const
{
    return m_position;
}

int CommandLineParser::Element::getValueCount() const
{
    return static_cast<int>(m_values.size());
}

String CommandLineParser::Element::getValueString(int index) const
{
    return at(m_values, index);
}

std::int32_t CommandLineParser::Element::getValueLong(int index) const
{
    const String& text = at(m_values, index);
    const char16_t* end = nullptr;
    const std::int32_t value = VXStrToLW(text.getData(), &end, 0);
    if (end == text.getData())
        throw Exception(u"Unable to convert string to long");
    return value;
}

double CommandLineParser::Element::getValueDouble(int index) const
{
    const String& text = at(m_values, index);
    const char16_t* end = nullptr;
    const double value = VXStrToDW(text.getData(), &end);
    if (end == text.getData())
        throw Exception(u"Unable to convert string to double");
    return value;
}

void CommandLineParser::Element::addValue(const String& value)
{
    m_values.push_back(value);
}

void CommandLineParser::Element::copyValues(const Element& other)
{
    m_values = other.m_values;
}

OptionDefinition::OptionDefinition(const String& name, int count, const char16_t* defaults)
    : Element(name, NO_POSITION)
    , m_count(count)
    , m_hasDefaults(defaults != nullptr)
{
    std::u16string text = defaults != nullptr ? defaults : u"";
    detail::TokenReader tokens(text.data());
    while (const char16_t* token = tokens.next(u", "))
        addValue(token);
}

OptionDefinition::~OptionDefinition() noexcept = default;

CommandLineParser::Names::Names(bool ignoresCase)
    : definitions(NameOrder {ignoresCase})
    , positions(NameOrder {ignoresCase})
{
}

CommandLineParser::CommandLineParser()
    : m_namesByCase(false)
    , m_namesIgnoringCase(true)
{
}

CommandLineParser::CommandLineParser(const CommandLineParser& other) = default;
CommandLineParser& CommandLineParser::operator=(const CommandLineParser& other) = default;
CommandLineParser::~CommandLineParser() noexcept = default;

void CommandLineParser::defineOption(const char16_t* name, int valueCount, const char16_t* defaults)
{
    const Reference<OptionDefinition> definition(new OptionDefinition(name, valueCount, defaults));
    m_namesByCase.definitions[name] = definition;
    m_namesIgnoringCase.definitions[name] = definition;
}

void CommandLineParser::setIgnoreCase(bool ignoreCase)
{
    m_ignoresCase = ignoreCase;
}

void CommandLineParser::parse(const String& text)
{
    constexpr const char16_t* BETWEEN = u" ";
    const auto isSwitch = [](char16_t unit) { return VXStrChrW(m_switchChars, unit) != nullptr; };

    reset();
    std::u16string copy = writable(text.view());
    detail::TokenReader tokens(copy.data());
    while (char16_t* token = tokens.next(BETWEEN)) {
        const int position = getElementCount();
        if (*token == 0 || !isSwitch(*token)) {
            const Reference<Element> parameter(new Element(String(), position));
            parameter->addValue(token);
            m_elements.push_back(parameter);
            m_parameters.push_back(position);
            continue;
        }

        const std::u16string_view whole(token);
        const std::size_t sign = whole.find(u'=');
        std::u16string_view name = whole.substr(0, sign);
        while (!name.empty() && isSwitch(name.front()))
            name.remove_prefix(1);
        const Reference<Element> option(new Element(String(name), position));
        const Reference<const OptionDefinition> definition = getDefinition(option->m_name);
        if (sign != whole.npos) {
            detail::TokenReader values(token + sign + 1);
            while (const char16_t* value = values.next(u","))
                option->addValue(value);
        } else if (definition != nullptr && isSwitch(tokens.peek())) { // the end of the text counts as one
            option->copyValues(*definition);
        } else {
            for (int left = definition != nullptr ? definition->getCount() : 0; left > 0; --left) {
                const char16_t* value = tokens.next(BETWEEN);
                if (value == nullptr || (*value != 0 && isSwitch(*value)))
                    break;
                option->addValue(value);
            }
        }
        m_elements.push_back(option);
        m_namesByCase.positions[option->m_name] = position;
        m_namesIgnoringCase.positions[option->m_name] = position;
    }
}

void CommandLineParser::parse(int count, char** const arguments)
{
    String text;
    for (int index = 0; index < count; ++index) {
        const String argument(arguments[index]);
        const bool hasBlank = argument.indexOf(u' ') >= 0;
        if (hasBlank)
            text.append(u'"');
        text.append(argument);
        if (hasBlank)
            text.append(u'"');
        text.append(u' ');
    }
    parse(text);
}

int CommandLineParser::getElementCount() const
{
    return static_cast<int>(m_elements.size());
}

Reference<const CommandLineParser::Element> CommandLineParser::getElement(int index) const
{
    return at(m_elements, index);
}

int CommandLineParser::getParameterCount() const
{
    return static_cast<int>(m_parameters.size());
}

Reference<const CommandLineParser::Element> CommandLineParser::getParameter(int index) const
{
    return getElement(at(m_parameters, index));
}

bool CommandLineParser::isPresent(const char16_t* name) const
{
    return names().positions.contains(name);
}

Reference<const CommandLineParser::Element> CommandLineParser::getOption(const char16_t* name) const
{
    if (const auto place = names().positions.find(name); place != names().positions.end())
        return m_elements[static_cast<std::size_t>(place->second)];
    const Reference<const OptionDefinition> definition = getDefinition(name);
    if (definition != nullptr && definition->hasDefaults())
        return definition;
    return nullptr;
}

String CommandLineParser::getValueString(const char16_t* name, int index) const
{
    return existingOption(name).getValueString(index);
}

std::int32_t CommandLineParser::getValueLong(const char16_t* name, int index) const
{
    return existingOption(name).getValueLong(index);
}

double CommandLineParser::getValueDouble(const char16_t* name, int index) const
{
    return existingOption(name).getValueDouble(index);
}

Reference<const OptionDefinition> CommandLineParser::getDefinition(const String& name) const
{
    const auto place = names().definitions.find(name);
    return place != names().definitions.end() ? place->second : nullptr;
}

void CommandLineParser::reset()
{
    m_elements.clear();
    m_parameters.clear();
    m_namesByCase.positions.clear();
    m_namesIgnoringCase.positions.clear();
}

/// It stays with this object: nothing replaces it within a call.
const CommandLineParser::Element& CommandLineParser::existingOption(const char16_t* name) const
{
    const Reference<const Element> option = getOption(name);
    if (option == nullptr)
        throw Exception(u"No option " + String(name));
    return *option;
}

} // namespace vx::util
