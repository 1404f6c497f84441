#include "vx/Str1.h"

#include "vx/String.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vx {

namespace {

/// `length` units, where -1 looks for a zero among the `capacity` that there are.
std::int32_t measuredWithin(const char16_t* text, std::int32_t length, std::uint32_t capacity) noexcept
{
    if (text == nullptr || length < -1)
        return 0;
    if (length == -1)
        return static_cast<std::int32_t>(std::find(text, text + capacity, u'\0') - text);
    return static_cast<std::int32_t>(std::min(static_cast<std::uint32_t>(length), capacity));
}

} // namespace

Str1Wrap::Str1Wrap(const char16_t* text, std::int32_t length, std::uint32_t capacity)
{
    take(countedPlainly(new StrBuf1Wrap(const_cast<char16_t*>(text), capacity)), measured(text, length));
}

Str1Wrap::~Str1Wrap() = default;

StrBuf1Static::StrBuf1Static(const char16_t* text)
    : StrBuf1(Uncounted(), text)
{
}

StrBuf1Static::~StrBuf1Static() = default;

std::uint32_t StrBuf1Static::AddRef()
{
    return 1;
}

std::uint32_t StrBuf1Static::Release()
{
    return 1;
}

std::uint32_t StrBuf1Static::isPrivatelyHeld(short) const
{
    return 0;
}

Str1Static::Str1Static(const char16_t* text, std::int32_t length) noexcept
    : m_static(text)
{
    adopt(&m_static, text != nullptr && length >= 0 ? length : measured(text, length));
}

Str1Static::~Str1Static()
{
    if (uses(&m_static))
        adopt(nullptr, 0); // while the field stands
}

Str1Static& Str1Static::operator=(const Str1Static& other)
{
    copy(other);
    return *this;
}

Str1Copy::Str1Copy(const char16_t* text, std::int32_t length)
    : Str1(text, length)
{
}

Str1Copy::Str1Copy(const String& text)
{
    copy(text);
}

Str1Copy::~Str1Copy() = default;

Str1Embedded::~Str1Embedded() = default;

Str1Embedded& Str1Embedded::operator=(const Str1Embedded& other)
{
    copy(other);
    return *this;
}

StrBuf1* Str1Embedded::fastAllocBuffer(std::uint32_t capacity)
{
    if (uses(m_embedded))
        return nullptr;
    const std::uint32_t available = m_embedded->isPrivatelyHeld(1);
    return available != 0 && available >= capacity ? m_embedded : nullptr;
}

void Str1Embedded::enter(std::int32_t length) noexcept
{
    m_embedded->initStaticInstance(0);
    take(m_embedded, length);
}

void Str1Embedded::leave() noexcept
{
    reset();
    m_embedded->AddRef();
    if (m_embedded->Release() == 1)
        return;
    std::fputs("vx::Str1: the storage of a string is destroyed while another string shares it\n", stderr);
    std::abort();
}

Str1Local::Str1Local(const char16_t* text, std::int32_t length, std::uint32_t capacity)
    : Str1Embedded(&m_local)
    , m_local(const_cast<char16_t*>(text), capacity)
{
    countedPlainly(&m_local);
    enter(measuredWithin(text, length, capacity));
}

Str1Local::~Str1Local()
{
    leave();
}

Str1Local& Str1Local::operator=(const Str1Local& other)
{
    copy(other);
    return *this;
}

template class Str1Fixed<128>;

} // namespace vx
