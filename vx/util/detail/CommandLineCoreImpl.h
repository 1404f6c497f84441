#pragma once

#include "vx/Exception.h"
#include "vx/util/detail/CommandLineCore.h"
#include "vx/util/detail/TokenReader.h"
#include "vxsys/Text.h"

#include <string>
#include <utility>

namespace vx::util::detail {

template <class T>
const T& at(const std::vector<T>& vector, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= vector.size())
        throw Exception(u"Invalid vector index");
    return vector[static_cast<std::size_t>(index)];
}

template <class Element, class Definition>
template <class Value>
void CommandLineCore<Element, Definition>::ByName<Value>::set(const String& name, const Value& value)
{
    // Both entries exist before the first of them changes.
    Value& byCase = maps[0][name];
    Value& ignoringCase = maps[1][name];
    byCase = value;
    ignoringCase = value;
}

template <class Element, class Definition>
void CommandLineCore<Element, Definition>::define(const char16_t* name, const Reference<Definition>& definition)
{
    m_definitions.set(name, definition);
}

template <class Element, class Definition>
void CommandLineCore<Element, Definition>::parse(std::u16string text, const char16_t* switchChars, bool pairIsEmpty)
{
    constexpr const char16_t* BETWEEN = u" ";
    // The end of a text is treated as a switch, and so is an empty token.
    const auto isSwitch = [switchChars](char16_t unit) { return VXStrChrW(switchChars, unit) != nullptr; };

    Parsed parsed;
    TokenReader tokens(text.data(), pairIsEmpty); // ends at a zero unit, and writes into the text
    while (char16_t* token = tokens.next(BETWEEN)) {
        const auto position = static_cast<int>(parsed.elements.size());
        if (!isSwitch(*token)) {
            parsed.elements.emplace_back(new Element(token, CommandLineValues::ofParameter(position)));
            parsed.parameters.push_back(position);
            continue;
        }

        const std::u16string_view whole(token);
        const std::size_t sign = whole.find(u'=');
        std::u16string_view bare = whole.substr(0, sign);
        while (!bare.empty() && isSwitch(bare.front()))
            bare.remove_prefix(1);
        const String name(bare);
        Reference<Element> option(new Element(name, position));
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
        parsed.elements.push_back(std::move(option));
        parsed.positions.set(name, position);
    }
    std::swap(m_parsed, parsed);
}

template <class Element, class Definition>
void CommandLineCore<Element, Definition>::reset()
{
    m_parsed = Parsed();
}

template <class Element, class Definition>
const Reference<Element>& CommandLineCore<Element, Definition>::getElement(int index) const
{
    return at(m_parsed.elements, index);
}

template <class Element, class Definition>
const Reference<Element>& CommandLineCore<Element, Definition>::getParameter(int index) const
{
    return getElement(at(m_parsed.parameters, index));
}

template <class Element, class Definition>
bool CommandLineCore<Element, Definition>::isPresent(const char16_t* name) const
{
    return m_parsed.positions.in(m_ignoresCase).contains(name);
}

template <class Element, class Definition>
Reference<Element> CommandLineCore<Element, Definition>::getOption(const char16_t* name) const
{
    const auto& positions = m_parsed.positions.in(m_ignoresCase);
    if (const auto place = positions.find(name); place != positions.end())
        return m_parsed.elements[static_cast<std::size_t>(place->second)];
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
    const auto& definitions = m_definitions.in(m_ignoresCase);
    const auto place = definitions.find(name);
    return place != definitions.end() ? place->second : nullptr;
}

} // namespace vx::util::detail
