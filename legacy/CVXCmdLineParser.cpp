#include "legacy/CVXCmdLineParser.h"

#include "vx/TerminatedText.h"
#include "vx/util/detail/CommandLineCoreImpl.h"

namespace {

constexpr bool PAIR_IS_EMPTY = true;

} // namespace

CVXCmdLineElement::CVXCmdLineElement(const vx::String& name, int position)
    : m_values(name, position)
{
}

CVXCmdLineElement::~CVXCmdLineElement() noexcept = default;

vx::String CVXCmdLineElement::getName() const
{
    return m_values.getName();
}

int CVXCmdLineElement::getPosition() const
{
    return m_values.getPosition();
}

int CVXCmdLineElement::getValueCount() const
{
    return m_values.getCount();
}

vx::String CVXCmdLineElement::getValueString(int index) const
{
    return m_values.getString(index);
}

std::int32_t CVXCmdLineElement::getValueLong(int index) const
{
    return m_values.getLong(index);
}

double CVXCmdLineElement::getValueDouble(int index) const
{
    return m_values.getDouble(index);
}

void CVXCmdLineElement::addValue(const char16_t* value)
{
    m_values.add(value);
}

void CVXCmdLineElement::copyValues(const CVXCmdLineElement& other)
{
    m_values.copyFrom(other.m_values);
}

COptionDefinition::COptionDefinition(const char16_t* name, int valueCount, const char16_t* defaults)
    : CVXCmdLineElement(name, -1)
    , m_count(valueCount)
    , m_hasDefaults(defaults != nullptr)
{
    if (defaults != nullptr)
        m_values.addAll(defaults, PAIR_IS_EMPTY);
}

COptionDefinition::~COptionDefinition() noexcept = default;

const char16_t* const CVXCmdLineParser::m_switchChars = u"-/";

CVXCmdLineParser::CVXCmdLineParser() = default;
CVXCmdLineParser::CVXCmdLineParser(const CVXCmdLineParser& other) = default;
CVXCmdLineParser::~CVXCmdLineParser() = default;

CVXCmdLineParser& CVXCmdLineParser::operator=(const CVXCmdLineParser& other)
{
    m_core = decltype(m_core)(other.m_core); // as a whole, or not at all
    return *this;
}

void CVXCmdLineParser::defineOption(const char16_t* name, int valueCount, const char16_t* defaults)
{
    m_core.define(name, new COptionDefinition(name, valueCount, defaults));
}

void CVXCmdLineParser::setIgnoreCase(bool ignoreCase)
{
    m_core.setIgnoreCase(ignoreCase);
}

void CVXCmdLineParser::parse(const char16_t* text)
{
    m_core.parse(std::u16string(vx::String(text).view()), m_switchChars, PAIR_IS_EMPTY);
}

void CVXCmdLineParser::parse(int count, char** arguments)
{
    parse(vx::TerminatedText(vx::util::detail::joinArguments(count, arguments)));
}

int CVXCmdLineParser::getElementCount() const
{
    return m_core.getElementCount();
}

CVXSmartPtr<CVXCmdLineElement> CVXCmdLineParser::getElement(int index) const
{
    return m_core.getElement(index);
}

int CVXCmdLineParser::getParameterCount() const
{
    return m_core.getParameterCount();
}

CVXSmartPtr<CVXCmdLineElement> CVXCmdLineParser::getParameter(int index) const
{
    return m_core.getParameter(index);
}

bool CVXCmdLineParser::isPresent(const char16_t* name) const
{
    return m_core.isPresent(name);
}

CVXSmartPtr<CVXCmdLineElement> CVXCmdLineParser::getOption(const char16_t* name) const
{
    return m_core.getOption(name);
}

vx::String CVXCmdLineParser::getValueString(const char16_t* name, int index) const
{
    return m_core.getExisting(name).getValueString(index);
}

std::int32_t CVXCmdLineParser::getValueLong(const char16_t* name, int index) const
{
    return m_core.getExisting(name).getValueLong(index);
}

double CVXCmdLineParser::getValueDouble(const char16_t* name, int index) const
{
    return m_core.getExisting(name).getValueDouble(index);
}

CVXSmartPtr<COptionDefinition> CVXCmdLineParser::getDefinition(const vx::String& name) const
{
    return m_core.getDefinition(name);
}

void CVXCmdLineParser::reset()
{
    m_core.reset();
}
