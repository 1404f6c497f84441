#include "legacy/CVXProperty.h"

#include "vx/Exception.h"
#include "vx/Number.h"
#include "vx/Result.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

using namespace vx;

std::int32_t CVXPropertyFace::GetKey(IVXCharBuffer* key) const
{
    return vorb::atBoundary([&] { util::copyText(key, static_cast<const CVXProperty&>(*this).m_key); });
}

std::int32_t CVXPropertyFace::GetValueString(IVXCharBuffer* value) const
{
    return vorb::atBoundary([&] { util::copyText(value, static_cast<const CVXProperty&>(*this).getValueString()); });
}

std::int32_t CVXPropertyFace::GetValueLong(std::int32_t* value) const
{
    return vorb::atBoundary(value, [&] { return static_cast<const CVXProperty&>(*this).getValueLong(); });
}

std::int32_t CVXPropertyFace::GetValueDouble(double* value) const
{
    return vorb::atBoundary(value, [&] { return static_cast<const CVXProperty&>(*this).getValueDouble(); });
}

std::int32_t CVXPropertyFace::SetValueString(const char16_t* value)
{
    return vorb::atBoundary([&] { static_cast<CVXProperty&>(*this).set(String(value)); });
}

std::int32_t CVXPropertyFace::SetValueLong(std::int32_t value)
{
    return vorb::atBoundary([&] { static_cast<CVXProperty&>(*this).set(value); });
}

std::int32_t CVXPropertyFace::SetValueDouble(double value)
{
    return vorb::atBoundary([&] { static_cast<CVXProperty&>(*this).set(value); });
}

std::int32_t CVXPropertyFace::GetValue(const _GUID& iid, void** result) const
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    const Reference<IVXUnknown> component = static_cast<const CVXProperty&>(*this).m_component;
    return component != nullptr ? component->QueryInterface(iid, result) : RESULT_FAIL;
}

std::int32_t CVXPropertyFace::SetValue(IVXUnknown* value)
{
    auto& property = static_cast<CVXProperty&>(*this);
    return vorb::atBoundary([&] {
        property.m_component = value;
        property.m_object = dynamic_cast<Object*>(value);
    });
}

CVXProperty::CVXProperty(const String& key)
    : m_key(key)
{
}

CVXProperty::CVXProperty(const String& key, Object* value)
    : m_key(key)
{
    CVXProperty::set(value);
}

CVXProperty::CVXProperty(const String& key, const String& value)
    : m_key(key)
{
    CVXProperty::set(value);
}

CVXProperty::CVXProperty(const String& key, std::int32_t value)
    : m_key(key)
{
    CVXProperty::set(value);
}

CVXProperty::CVXProperty(const String& key, double value)
    : m_key(key)
{
    CVXProperty::set(value);
}

CVXProperty::~CVXProperty() noexcept(false) = default;

const vorb::InterfaceData* CVXProperty::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<CVXProperty, IVXProperty>(),
        vorb::viewRow<CVXProperty, IVXProperty2>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

String CVXProperty::getKey() const
{
    return m_key;
}

CVXSmartPtr<Object> CVXProperty::getValue() const
{
    if (m_object == nullptr)
        throw Exception(u"Value is not a CVXObject");
    return m_object;
}

String CVXProperty::getValueString() const
{
    return getValue()->toString();
}

std::int32_t CVXProperty::getValueLong() const
{
    const CVXSmartPtr<Object> value = getValue();
    const auto* number = dynamic_cast<const Number*>(value.get());
    return number != nullptr ? number->toLong() : Number::parseLong(value->toString());
}

double CVXProperty::getValueDouble() const
{
    const CVXSmartPtr<Object> value = getValue();
    const auto* number = dynamic_cast<const Number*>(value.get());
    return number != nullptr ? number->toDouble() : Number::parseDouble(value->toString());
}

void CVXProperty::set(double value)
{
    set(String::valueOf(value));
}

void CVXProperty::set(std::int32_t value)
{
    set(String::valueOf(value));
}

void CVXProperty::set(const String& value)
{
    const Reference<String> text(new String(value));
    set(static_cast<Object*>(text.get()));
}

void CVXProperty::set(Object* value)
{
    m_object = value;
    m_component = value != nullptr ? value->GetUnknown() : nullptr;
}
