#include "legacy/CVXAbstractConnector.h"
#include "legacy/CVXPropertySet.h"

#include "tests/Outcome.h"
#include "tests/Told.h"
#include "vx/Exception.h"
#include "vx/NumberBoxes.h"
#include "vx/Result.h"
#include "vx/collections/vorb/HashMap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <utility>

using namespace vx;

namespace {

class Foreign : public IVXConnector {
public:
    std::int32_t QueryInterface(const _GUID& iid, void** out) override
    {
        *out = std::memcmp(&iid, &IVXConnector::IID, sizeof iid) == 0 ? this : nullptr;
        m_count += *out != nullptr ? 1 : 0;
        return *out != nullptr ? RESULT_OK : RESULT_NO_INTERFACE;
    }
    std::uint32_t AddRef() const override { return ++m_count; }
    std::uint32_t Release() const override { return --m_count; }
    std::int32_t Connect(const char16_t*, const _GUID&, void**) override { return RESULT_FAIL; }
    std::int32_t SetProperty(const char16_t*, const char16_t*) override { return RESULT_FAIL; }
    std::int32_t GetProperty(const char16_t*, IVXCharBuffer*) const override { return RESULT_FAIL; }

    virtual ~Foreign() = default;

    mutable std::uint32_t m_count = 0;
};

class Property : public CVXProperty {
public:
    using CVXProperty::CVXProperty;
    explicit Property(const char16_t* key)
        : CVXProperty(String(key))
    {
    }
};

TEST(CVXSmartPtr, CountsAsReferencesDo)
{
    CVXSmartPtr<Property> property(new Property(u"k"));
    {
        const CVXSmartPtr<Object> object = property;
        const Reference<Object> reference = object;
        const CVXSmartPtr<const CVXProperty> back = Reference<Property>(property);
        EXPECT_EQ(property->GetRefCount(), 4U);
    }
    const CVXSmartPtr<IVXProperty> view = property;
    EXPECT_EQ(std::exchange(property, nullptr)->GetRefCount(), 2U);
    String text;
    EXPECT_EQ(view->GetKey(&text), 0) << "the other reference keeps the object";
}

TEST(CVXObjectMap, TakesNullForKeysAndValuesButNotForItsMap)
{
    EXPECT_THROW((CVXObjectMap<String, Integer32>(nullptr)), Exception);
    CVXObjectMap<String, Integer32> map(new collections::vorb::HashMap);
    EXPECT_EQ(map.get(nullptr), nullptr);
    EXPECT_EQ(map.put(nullptr, new Integer32(1)), nullptr);
    const CVXSmartPtr<Integer32> one = map.put(nullptr, nullptr);
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(*one, 1);
    EXPECT_EQ(map.put(new String(u"key"), nullptr), nullptr);
    EXPECT_EQ(map.get(nullptr), nullptr);
}

TEST(CVXProperty, KeepsNumbersAsText)
{
    const CVXSmartPtr<CVXProperty> number(new CVXProperty(u"k", 42));
    EXPECT_NE(dynamic_cast<String*>(number->getValue().get()), nullptr);
    EXPECT_EQ(number->getValueString(), u"42");
    number->set(1LL << 40);
    EXPECT_EQ(number->getValueDouble(), 0x1p40);
    number->set(-1.5);
    EXPECT_EQ((Told {number->getValueString(), number->getValueDouble(), number->getValueLong()}), "-1.5 -1.5 -1");
    struct Odd : Integer32 { // converts without its text
        Odd()
            : Integer32(7)
        {
        }
        String toString() const override { return u"seven"; }
    };
    number->set(new Odd);
    EXPECT_EQ((Told {number->getValueLong(), number->getValueString()}), "7 seven");
    number->set(static_cast<Object*>(nullptr));
    EXPECT_EQ(saidBy<Exception>([&] { number->getValueLong(); }), "Value is not a CVXObject");
    void* result = nullptr;
    EXPECT_EQ(number->GetValue(IVXUnknown::IID, &result), RESULT_FAIL);
}

TEST(CVXProperty, TakesAnyComponentThroughItsView)
{
    Foreign foreign;
    const CVXSmartPtr<CVXProperty> property(new CVXProperty(u"k", u"old"));
    {
        const Reference<IVXProperty2> view(property.get());
        EXPECT_EQ(view->SetValue(&foreign), 0);
        Reference<IVXConnector> value;
        EXPECT_EQ(view->GetValue(IVXConnector::IID, value.outVoid()), 0);
        EXPECT_EQ((Told {value == &foreign, foreign.m_count}), "1 2");
        std::int32_t number = 9;
        double real = 0;
        EXPECT_EQ((Told {view->GetValueLong(&number), number}), (Told {RESULT_FAIL, 0})) << "cleared first";
        EXPECT_EQ((Told {view->SetValueString(u"12"), view->GetValueDouble(&real), real}), "0 0 12");
        const Reference<Object> object(new Integer32(3));
        EXPECT_EQ(view->SetValue(object->GetUnknown()), 0);
        EXPECT_EQ(property->getValue(), object);
    }
    EXPECT_EQ(foreign.m_count, 0U);
}

class Store : public CVXPropertySet {
public:
    CVXSmartPtr<CVXProperty> getProperty(const String& key) override
    {
        if (key.isEmpty())
            return nullptr;
        CVXSmartPtr<CVXProperty>& property = m_properties[key.toUtf8()];
        if (property == nullptr)
            property = new Property(key.getData());
        return property;
    }

private:
    std::map<std::string, CVXSmartPtr<CVXProperty>> m_properties;
};

TEST(CVXPropertySet, RestsOnItsStore)
{
    const CVXSmartPtr<Store> store(new Store);
    const Reference<IVXPropertySet2> view(store.get());
    EXPECT_EQ(Reference<IVXPropertySet>(store.get()), view.get());
    store->set(u"number", 17UL);
    store->set(u"real", 0.5);
    store->set(u"object", new Integer32(4));
    EXPECT_EQ(store->getValueLong(u"object"), 4);
    String text;
    std::int32_t number = 9;
    double real = 0;
    EXPECT_EQ((Told {view->GetString(u"number", &text), text}), "0 17");
    EXPECT_EQ((Told {view->GetLong(u"real", &number), number}), "0 0");
    EXPECT_EQ((Told {view->SetDouble(u"real", 2.25), view->GetDouble(u"real", &real), real}), "0 0 2.25");
    EXPECT_EQ((Told {view->SetString(u"text", u"-8"), view->SetLong(u"number", 6)}), "0 0");
    EXPECT_EQ((Told {store->getValueLong(u"text"), store->getValueDouble(u"number")}), "-8 6");
    Foreign foreign;
    EXPECT_EQ(view->Set(u"object", &foreign), 0);
    Reference<IVXConnector> value;
    EXPECT_EQ(view->Get(u"object", IVXConnector::IID, value.outVoid()), 0);
    EXPECT_EQ(view->Set(u"object", nullptr), 0);
    EXPECT_EQ(view->GetParent(nullptr), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(saidBy<Exception>([&] { store->set(u"", 1); }), "No property ") << "a store that breaks its word";
    EXPECT_EQ(view->SetLong(u"", 1), RESULT_FAIL);
}

class Connector : public CVXAbstractConnector {
public:
    CVXSmartPtr<IVXUnknown> connect() override
    {
        if (!hasProperty(u"target"))
            return nullptr;
        setProperty(u"seen", getProperty(u"target") + u"!");
        return m_connection;
    }
    using CVXAbstractConnector::getProperty;

    CVXSmartPtr<IVXUnknown> m_connection;
};

TEST(CVXAbstractConnector, KeepsTextsAndConnects)
{
    const CVXSmartPtr<Connector> connector(new Connector);
    const Reference<Integer32> connection(new Integer32(1));
    connector->m_connection = connection->GetUnknown();
    const Reference<IVXConnector> view(connector.get());
    String text(u"as it was");
    EXPECT_EQ(view->GetProperty(u"target", &text), RESULT_FAIL);
    EXPECT_EQ(saidBy<Exception>([&] { connector->getProperty(u"target"); }), "Property Not Found.");
    void* none = &none;
    EXPECT_EQ((Told {view->Connect(u"any", IVXComparable::IID, &none), none == nullptr}), (Told {RESULT_FAIL, true}))
        << "there is no target yet";
    EXPECT_EQ(view->SetProperty(u"target", u"a") | view->SetProperty(u"target", u"b"), 0);
    Reference<IVXComparable> result;
    EXPECT_EQ(view->Connect(nullptr, IVXComparable::IID, result.outVoid()), 0);
    EXPECT_EQ(connection->GetRefCount(), 3U) << "what connect gave is released";
    EXPECT_EQ((Told {view->GetProperty(u"seen", &text), text}), "0 b!");
}

} // namespace
