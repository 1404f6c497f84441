#pragma once

#include "legacy/CVXSmartPtr.h"
#include "legacy/IVXProperty.h"
#include "vx/Object.h"
#include "vx/String.h"

#include <concepts>
#include <cstdint>

/// The `IVXProperty2` view of `CVXProperty`.
class VX_API CVXPropertyFace : public IVXProperty2 {
public:
    std::int32_t GetKey(IVXCharBuffer* key) const override;
    std::int32_t GetValueString(IVXCharBuffer* value) const override;
    std::int32_t GetValueLong(std::int32_t* value) const override;
    std::int32_t GetValueDouble(double* value) const override;
    std::int32_t SetValueString(const char16_t* value) override;
    std::int32_t SetValueLong(std::int32_t value) override;
    std::int32_t SetValueDouble(double value) override;
    std::int32_t GetValue(const _GUID& iid, void** result) const override;
    std::int32_t SetValue(IVXUnknown* value) override;

protected:
    CVXPropertyFace() = default;
    ~CVXPropertyFace() = default;
};

/// A key with a value that is an object. Numbers are kept as their text.
///
/// Through the component view, a value may also be a component that is no object. Only that view can read it;
/// `getValue` and the others throw Exception "Value is not a CVXObject", as they do if there is no value.
class VX_API CVXProperty : public vx::Object, public CVXPropertyFace {
public:
    /// Keeps a reference on the value, which may be null.
    CVXProperty(const vx::String& key, vx::Object* value);
    CVXProperty(const vx::String& key, const vx::String& value);
    CVXProperty(const vx::String& key, std::int32_t value);
    CVXProperty(const vx::String& key, double value);
    template <std::integral Number>
    requires(sizeof(Number) >= sizeof(std::int32_t)) CVXProperty(const vx::String& key, Number value)
        : CVXProperty(key, vx::String::valueOf(value))
    {
    }
    ~CVXProperty() noexcept(false) override;

    VX_OBJECT_UNKNOWN(vx::Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();

    virtual vx::String getKey() const;
    virtual CVXSmartPtr<vx::Object> getValue() const;
    virtual vx::String getValueString() const;
    /// A Number is converted. For anything else its text is parsed.
    virtual std::int32_t getValueLong() const;
    virtual double getValueDouble() const;
    virtual void set(double value);
    virtual void set(std::int32_t value);
    virtual void set(const vx::String& value);
    /// Null removes the value.
    virtual void set(vx::Object* value);
    /// An integer of another type, as its text.
    template <std::integral Number>
    requires(sizeof(Number) >= sizeof(std::int32_t)) void set(Number value) { set(vx::String::valueOf(value)); }

protected:
    /// Without a value.
    explicit CVXProperty(const vx::String& key);

private:
    friend class CVXPropertyFace;

    vx::String m_key;
    vx::Reference<vx::Object> m_object;
    vx::Reference<IVXUnknown> m_component;
};
