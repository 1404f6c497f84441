#include "vx/TerminatedText.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/detail/StringLocks.h"

#include <utility>

namespace vx {

using detail::PlainBuffer;
using detail::StringReadLock;

namespace {

std::u16string copyOf(const String& text)
{
    const StringReadLock lock(text);
    return {lock.data(), static_cast<std::size_t>(lock.length())};
}

/// Returns `text`. Throws if it contains a zero unit.
template <class Text>
Text&& checked(Text&& text, std::int32_t refusal)
{
    if (!SystemName::isValid(text))
        throw ResultException(refusal);
    return std::forward<Text>(text);
}

} // namespace

TerminatedText::TerminatedText(const String& text)
    : m_text(PlainBuffer::terminated(text))
{
    if (m_text != nullptr)
        return;
    m_copy = copyOf(text);
    m_text = m_copy.c_str();
}

TerminatedText::TerminatedText(String&& text)
    : m_copy(copyOf(text))
    , m_text(m_copy.c_str())
{
}

SystemName::SystemName(const String& text, std::int32_t refusal)
    : TerminatedText(checked(text, refusal))
{
}

SystemName::SystemName(String&& text, std::int32_t refusal)
    : TerminatedText(checked(std::move(text), refusal))
{
}

bool SystemName::isValid(const String& text)
{
    const StringReadLock lock(text);
    return std::u16string_view(lock.data(), static_cast<std::size_t>(lock.length())).find(u'\0')
        == std::u16string_view::npos;
}

} // namespace vx
