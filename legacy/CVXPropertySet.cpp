#include "legacy/CVXPropertySet.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

using namespace vx;

std::int32_t CVXPropertySetFace::SetString(const char16_t* key, const char16_t* value)
{
    return vorb::atBoundary([&] { static_cast<CVXPropertySet&>(*this).set(String(key), String(value)); });
}

std::int32_t CVXPropertySetFace::GetString(const char16_t* key, IVXCharBuffer* value) const
{
    return vorb::atBoundary(
        [&] { util::copyText(value, static_cast<const CVXPropertySet&>(*this).getValueString(key)); });
}

std::int32_t CVXPropertySetFace::SetLong(const char16_t* key, std::int32_t value)
{
    return vorb::atBoundary([&] { static_cast<CVXPropertySet&>(*this).set(String(key), value); });
}

std::int32_t CVXPropertySetFace::GetLong(const char16_t* key, std::int32_t* value) const
{
    return vorb::atBoundary(value, [&] { return static_cast<const CVXPropertySet&>(*this).getValueLong(key); });
}

std::int32_t CVXPropertySetFace::SetDouble(const char16_t* key, double value)
{
    return vorb::atBoundary([&] { static_cast<CVXPropertySet&>(*this).set(String(key), value); });
}

std::int32_t CVXPropertySetFace::GetDouble(const char16_t* key, double* value) const
{
    return vorb::atBoundary(value, [&] { return static_cast<const CVXPropertySet&>(*this).getValueDouble(key); });
}

std::int32_t CVXPropertySetFace::GetCount(unsigned int*) const
{
    return RESULT_NOT_IMPLEMENTED;
}

std::int32_t CVXPropertySetFace::GetProperty(unsigned int, IVXProperty**) const
{
    return RESULT_NOT_IMPLEMENTED;
}

std::int32_t CVXPropertySetFace::GetParent(IVXPropertySet**) const
{
    return RESULT_NOT_IMPLEMENTED;
}

std::int32_t CVXPropertySetFace::Set(const char16_t* key, IVXUnknown* value)
{
    return vorb::resultAtBoundary([&] { return static_cast<CVXPropertySet&>(*this).propertyOf(key)->SetValue(value); });
}

std::int32_t CVXPropertySetFace::Get(const char16_t* key, const _GUID& iid, void** result) const
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    return vorb::resultAtBoundary(
        [&] { return static_cast<const CVXPropertySet&>(*this).propertyOf(key)->GetValue(iid, result); });
}

std::int32_t CVXPropertySetFace::GetProperty2(unsigned int, IVXProperty2**) const
{
    return RESULT_NOT_IMPLEMENTED;
}

std::int32_t CVXPropertySetFace::GetParent2(IVXPropertySet2**) const
{
    return RESULT_NOT_IMPLEMENTED;
}

namespace {

/// A derived class must not return null here. If it does, callers must not crash.
template <class Property>
CVXSmartPtr<Property> existing(CVXSmartPtr<Property> property, const String& key)
{
    if (property == nullptr)
        throw Exception(u"No property " + key);
    return property;
}

} // namespace

CVXPropertySet::~CVXPropertySet() noexcept(false) = default;

const vorb::InterfaceData* CVXPropertySet::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<CVXPropertySet, IVXPropertySet>(),
        vorb::viewRow<CVXPropertySet, IVXPropertySet2>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

void CVXPropertySet::set(const String& key, double value)
{
    propertyOf(key)->set(value);
}

void CVXPropertySet::set(const String& key, std::int32_t value)
{
    propertyOf(key)->set(value);
}

void CVXPropertySet::set(const String& key, const String& value)
{
    propertyOf(key)->set(value);
}

void CVXPropertySet::set(const String& key, Object* value)
{
    propertyOf(key)->set(value);
}

CVXSmartPtr<Object> CVXPropertySet::getValue(const String& key) const
{
    return propertyOf(key)->getValue();
}

String CVXPropertySet::getValueString(const String& key) const
{
    return propertyOf(key)->getValueString();
}

std::int32_t CVXPropertySet::getValueLong(const String& key) const
{
    return propertyOf(key)->getValueLong();
}

double CVXPropertySet::getValueDouble(const String& key) const
{
    return propertyOf(key)->getValueDouble();
}

CVXSmartPtr<const CVXProperty> CVXPropertySet::getProperty(const String& key) const
{
    return const_cast<CVXPropertySet*>(this)->getProperty(key);
}

CVXSmartPtr<CVXProperty> CVXPropertySet::propertyOf(const String& key)
{
    return existing(getProperty(key), key);
}

CVXSmartPtr<const CVXProperty> CVXPropertySet::propertyOf(const String& key) const
{
    return existing(getProperty(key), key);
}
