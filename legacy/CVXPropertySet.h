#pragma once

#include "legacy/CVXProperty.h"
#include "legacy/IVXPropertySet.h"

#include <concepts>
#include <cstdint>

/// The `IVXPropertySet2` view of `CVXPropertySet`. It cannot be enumerated: operations that count properties, use an
/// index or ask for a parent return RESULT_NOT_IMPLEMENTED and change nothing.
class VX_API CVXPropertySetFace : public IVXPropertySet2 {
public:
    std::int32_t SetString(const char16_t* key, const char16_t* value) override;
    std::int32_t GetString(const char16_t* key, IVXCharBuffer* value) const override;
    std::int32_t SetLong(const char16_t* key, std::int32_t value) override;
    std::int32_t GetLong(const char16_t* key, std::int32_t* value) const override;
    std::int32_t SetDouble(const char16_t* key, double value) override;
    std::int32_t GetDouble(const char16_t* key, double* value) const override;
    std::int32_t GetCount(unsigned int* count) const override;
    std::int32_t GetProperty(unsigned int index, IVXProperty** property) const override;
    std::int32_t GetParent(IVXPropertySet** parent) const override;
    std::int32_t Set(const char16_t* key, IVXUnknown* value) override;
    std::int32_t Get(const char16_t* key, const _GUID& iid, void** result) const override;
    std::int32_t GetProperty2(unsigned int index, IVXProperty2** property) const override;
    std::int32_t GetParent2(IVXPropertySet2** parent) const override;

protected:
    CVXPropertySetFace() = default;
    ~CVXPropertySetFace() = default;
};

/// Properties by key. A derived class stores them: for a key without one, `getProperty` creates it or throws.
class VX_API CVXPropertySet : public vx::Object, public CVXPropertySetFace {
public:
    ~CVXPropertySet() noexcept(false) override;

    VX_OBJECT_UNKNOWN(vx::Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();

    /// Each calls `getProperty`, and then the operation of the same name of the property.
    virtual void set(const vx::String& key, double value);
    virtual void set(const vx::String& key, std::int32_t value);
    virtual void set(const vx::String& key, const vx::String& value);
    virtual void set(const vx::String& key, vx::Object* value);
    virtual CVXSmartPtr<vx::Object> getValue(const vx::String& key) const;
    virtual vx::String getValueString(const vx::String& key) const;
    virtual std::int32_t getValueLong(const vx::String& key) const;
    virtual double getValueDouble(const vx::String& key) const;
    /// An integer of another type, as its text.
    template <std::integral Number>
    requires(sizeof(Number) >= sizeof(std::int32_t)) void set(const vx::String& key, Number value)
    {
        set(key, vx::String::valueOf(value));
    }

protected:
    CVXPropertySet() = default;

    /// Returns what the other form returns.
    virtual CVXSmartPtr<const CVXProperty> getProperty(const vx::String& key) const;

public:
    /// Never null.
    virtual CVXSmartPtr<CVXProperty> getProperty(const vx::String& key) = 0;

private:
    friend class CVXPropertySetFace;

    CVXSmartPtr<CVXProperty> propertyOf(const vx::String& key);
    CVXSmartPtr<const CVXProperty> propertyOf(const vx::String& key) const;
};
