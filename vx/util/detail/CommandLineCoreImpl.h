#pragma once

#include "vx/Exception.h"
#include "vx/util/detail/CommandLineCore.h"
#include "vx/util/detail/TokenReader.h"
#include "vxsys/Text.h"

#include <string>

namespace vx::util::detail {

template <class T>
const T& at(const std::vector<T>& vector, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= vector.size())
        throw Exception(u"Invalid vector index");
    return vector[static_cast<std::size_t>(index)];
}

template <class Element, class Definition>
CommandLineCore<Element, Definition>::Names::Names(bool ignoresCase)
    : definitions(NameOrder {ignoresCase})
    , positions(NameOrder {ignoresCase})
{
}

template <class Element, class Definition>
CommandLineCore<Element, Definition>::CommandLineCore()
    : m_namesByCase(false)
    , m_namesIgnoringCase(true)
{
}

template <class Element, class Definition>
void CommandLineCore<Element, Definition>::define(const char16_t* name, const Reference<Definition>& definition)
{
    m_namesByCase.definitions[name] = definition;
    m_namesIgnoringCase.definitions[name] = definition;
}

template <class Element, class Definition>
void CommandLineCore<Element, Definition>::parse(
    std::u16string_view text, const char16_t* switchChars, bool pairIsEmpty)
{
    constexpr const char16_t* BETWEEN = u" ";
    // The end of a text is treated as a switch, and so is an empty token.
    const auto isSwitch = [switchChars](char16_t unit) { return VXStrChrW(switchChars, unit) != nullptr; };

    reset();
    std::u16string copy(text.substr(0, text.find(u'\0'))); // the reader writes into it
    TokenReader tokens(copy.data(), pairIsEmpty);
    while (char16_t* token = tokens.next(BETWEEN)) {
        const int position = getElementCount();
        if (!isSwitch(*token)) {
            const Reference<Element> parameter(new Element(String(), position));
            parameter->addValue(token);
            m_elements.push_back(parameter);
            m_parameters.push_back(position);
            continue;
        }

        const std::u16string_view whole(token);
        const std::size_t sign = whole.find(u'=');
        std::u16string_view bare = whole.substr(0, sign);
        while (!bare.empty() && isSwitch(bare.front()))
            bare.remove_prefix(1);
        const String name(bare);
        const Reference<Element> option(new Element(name, position));
        const Reference<const Definition> definition = getDefinition(name);
        if (sign != whole.npos) {
            TokenReader values(token + sign + 1, pairIsEmpty);
            while (const char16_t* value = values.next(u","))
                option->addValue(value);
        } else if (definition != nullptr && isSwitch(tokens.peek())) {
            option->copyValues(*definition);
        } else {
            for (int left = definition != nullptr ? definition->getCount() : 0; left > 0; --left) {
                const char16_t* value = tokens.next(BETWEEN);
                if (value == nullptr || isSwitch(*value))
                    break;
                option->addValue(value);
            }
        }
        m_elements.push_back(option);
        m_namesByCase.positions[name] = position;
        m_namesIgnoringCase.positions[name] = position;
    }
}

template <class Element, class Definition>
void CommandLineCore<Element, Definition>::reset()
{
    m_elements.clear();
    m_parameters.clear();
    m_namesByCase.positions.clear();
    m_namesIgnoringCase.positions.clear();
}

template <class Element, class Definition>
const Reference<Element>& CommandLineCore<Element, Definition>::getElement(int index) const
{
    return at(m_elements, index);
}

template <class Element, class Definition>
const Reference<Element>& CommandLineCore<Element, Definition>::getParameter(int index) const
{
    return getElement(at(m_parameters, index));
}

template <class Element, class Definition>
bool CommandLineCore<Element, Definition>::isPresent(const char16_t* name) const
{
    return names().positions.contains(name);
}

template <class Element, class Definition>
Reference<Element> CommandLineCore<Element, Definition>::getOption(const char16_t* name) const
{
    if (const auto place = names().positions.find(name); place != names().positions.end())
        return m_elements[static_cast<std::size_t>(place->second)];
    const Reference<Definition> definition = getDefinition(name);
    if (definition != nullptr && definition->hasDefaults())
        return definition;
    return nullptr;
}

template <class Element, class Definition>
const Element& CommandLineCore<Element, Definition>::getExisting(const char16_t* name) const
{
    const Reference<Element> option = getOption(name);
    if (option == nullptr)
        throw Exception(u"No option " + String(name));
    return *option;
}

template <class Element, class Definition>
Reference<Definition> CommandLineCore<Element, Definition>::getDefinition(const String& name) const
{
    const auto place = names().definitions.find(name);
    return place != names().definitions.end() ? place->second : nullptr;
}

} // namespace vx::util::detail
