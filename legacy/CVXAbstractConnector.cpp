#include "legacy/CVXAbstractConnector.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

using namespace vx;

std::int32_t CVXConnectorFace::Connect(const char16_t*, const _GUID& iid, void** result)
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    return vorb::resultAtBoundary([&] {
        const CVXSmartPtr<IVXUnknown> connection = static_cast<CVXAbstractConnector&>(*this).connect();
        return connection != nullptr ? connection->QueryInterface(iid, result) : RESULT_FAIL;
    });
}

std::int32_t CVXConnectorFace::SetProperty(const char16_t* key, const char16_t* value)
{
    return vorb::atBoundary([&] { static_cast<CVXAbstractConnector&>(*this).setProperty(key, value); });
}

std::int32_t CVXConnectorFace::GetProperty(const char16_t* key, IVXCharBuffer* value) const
{
    return vorb::atBoundary(
        [&] { util::copyText(value, static_cast<const CVXAbstractConnector&>(*this).getProperty(key)); });
}

CVXAbstractConnector::CVXAbstractConnector()
    : m_properties(new collections::vorb::HashMap)
{
}

CVXAbstractConnector::~CVXAbstractConnector() noexcept(false) = default;

const vorb::InterfaceData* CVXAbstractConnector::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<CVXAbstractConnector, IVXConnector>(), vorb::endRow()};
    return map;
}

void CVXAbstractConnector::setProperty(const String& key, const String& value)
{
    const Reference<String> countedKey(new String(key));
    const Reference<String> countedValue(new String(value));
    m_properties.put(countedKey.get(), countedValue.get());
}

String CVXAbstractConnector::getProperty(const String& key) const
{
    const CVXSmartPtr<String> value = find(key);
    if (value == nullptr)
        throw Exception(u"Property Not Found.");
    return *value;
}

bool CVXAbstractConnector::hasProperty(const String& key) const
{
    return find(key) != nullptr;
}

/// The map adds references to what it compares, so a key must not be on the stack.
CVXSmartPtr<String> CVXAbstractConnector::find(const String& key) const
{
    const Reference<String> counted(new String(key));
    return m_properties.get(counted.get());
}
