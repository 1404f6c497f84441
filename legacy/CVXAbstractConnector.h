#pragma once

#include "legacy/CVXObjectMap.h"
#include "legacy/CVXSmartPtr.h"
#include "legacy/IVXConnector.h"
#include "vx/ComObject.h"
#include "vx/String.h"

#include <cstdint>

/// The `IVXConnector` view of `CVXAbstractConnector`.
class VX_API CVXConnectorFace : public IVXConnector {
public:
    std::int32_t Connect(const char16_t* name, const _GUID& iid, void** result) override;
    std::int32_t SetProperty(const char16_t* key, const char16_t* value) override;
    std::int32_t GetProperty(const char16_t* key, IVXCharBuffer* value) const override;

protected:
    CVXConnectorFace() = default;
    ~CVXConnectorFace() = default;
};

/// Base of connectors of the older generation: it stores the properties, and a derived class makes the connection.
class VX_API CVXAbstractConnector : public vx::ComObject, public CVXConnectorFace {
public:
    CVXAbstractConnector(const CVXAbstractConnector&) = delete;
    CVXAbstractConnector& operator=(const CVXAbstractConnector&) = delete;
    ~CVXAbstractConnector() noexcept(false) override;

    VX_OBJECT_UNKNOWN(vx::ComObject)
    static const vx::vorb::InterfaceData* GetComIntfMap();

    /// A new connection; never null.
    virtual CVXSmartPtr<IVXUnknown> connect() = 0;

protected:
    CVXAbstractConnector();

    /// Copies both; replaces an earlier value.
    void setProperty(const vx::String& key, const vx::String& value);
    /// Throws Exception "Property Not Found.".
    vx::String getProperty(const vx::String& key) const;
    bool hasProperty(const vx::String& key) const;

private:
    friend class CVXConnectorFace;

    CVXSmartPtr<vx::String> find(const vx::String& key) const;

    CVXObjectMap<vx::String, vx::String> m_properties;
};
