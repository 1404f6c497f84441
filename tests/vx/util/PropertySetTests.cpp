#include "tests/Slots.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/util/vorb/VorbPropertySet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vx::util {
namespace {

using vorb::IPropertyKeyIterator;
using vorb::IPropertySet;
using vorb::VorbPropertySet;

TEST(PropertySet, KeepsTheOrderOfVirtualOperations)
{
    expectSlots("PropertySet", 11,
        {slotOf(&PropertySet::set), slotOf(&PropertySet::get), slotOf(&PropertySet::hasProperty),
            slotOf(&PropertySet::getKeys), slotOf(&PropertySet::clear), slotOf(&PropertySet::remove)});
    expectSlots("IPropertySet", 3,
        {slotOf(&IPropertySet::Set), slotOf(&IPropertySet::Get), slotOf(&IPropertySet::Remove),
            slotOf(&IPropertySet::GetKeyIterator)});
    expectSlots(
        "IPropertyKeyIterator", 3, {slotOf(&IPropertyKeyIterator::IsAtEnd), slotOf(&IPropertyKeyIterator::GetNext)});
}

TEST(PropertySet, AsksItsParentLast)
{
    const Reference<PropertySet> parent(new PropertySet);
    const Reference<PropertySet> child(new PropertySet(parent.get()));
    parent->set(u"host", u"far");
    EXPECT_EQ(child->get(u"host"), u"far");
    EXPECT_TRUE(child->hasProperty(u"host"));
    EXPECT_EQ(child->getKeys()->getSize(), 0);
    EXPECT_EQ(child->remove(u"host"), u"");

    child->set(u"host", u"near");
    child->set(u"host", u"here");
    EXPECT_EQ(child->get(u"host"), u"here");
    EXPECT_EQ(child->getKeys()->getSize(), 1);
    EXPECT_EQ(child->remove(u"host"), u"here");
    EXPECT_EQ(child->get(u"host"), u"far");

    child->set(u"port", u"");
    EXPECT_TRUE(child->hasProperty(u"port")) << "an empty value is a value";
    child->clear();
    EXPECT_FALSE(child->hasProperty(u"port"));
    EXPECT_EQ(child->get(u"host"), u"far");
    try {
        child->get(u"port");
        FAIL();
    } catch (const Exception& failure) {
        EXPECT_EQ(typeid(failure), typeid(Exception));
        EXPECT_EQ(failure.getDescription(), u"");
    }
}

TEST(PropertySet, SharesItsEntriesAcrossTheBorder)
{
    const Reference<PropertySet> parent(new PropertySet);
    parent->set(u"inherited", u"yes");
    PropertySet set(parent.get()); // on the stack: nobody may count it
    const Reference<const IPropertySet> shared = PropertySet::getVorb(set);
    auto* const face = const_cast<IPropertySet*>(shared.get());

    const Reference<String> value(new String(u"7"));
    EXPECT_EQ(callSlot<std::int32_t>(face, 3, u"port", value->GetUnknown()), RESULT_OK);
    EXPECT_EQ(set.get(u"port"), u"7");
    *value = u"8";
    EXPECT_EQ(set.get(u"port"), u"7") << "a copy";
    set.set(u"host", u"here");

    for (const auto& [key, expected] : {std::pair(u"host", u"here"), std::pair(u"inherited", u"yes")}) {
        Reference<IVXCharBuffer> text;
        EXPECT_EQ(callSlot<std::int32_t>(face, 4, key, &IVXCharBuffer::IID, text.outVoid()), RESULT_OK);
        EXPECT_EQ(String(text.get()), expected);
    }
    Reference<IVXCharBuffer> old;
    EXPECT_EQ(callSlot<std::int32_t>(face, 5, u"host", &IVXCharBuffer::IID, old.outVoid()), RESULT_OK);
    EXPECT_EQ(String(old.get()), u"here");
    EXPECT_EQ(face->Remove(u"host", IVXCharBuffer::IID, old.outVoid()), RESULT_OK) << "it is gone";
    EXPECT_EQ(old->GetLength(), 0);
    EXPECT_FALSE(set.hasProperty(u"host"));

    void* out = &out;
    EXPECT_EQ(face->Get(u"port", IPropertySet::IID, &out), RESULT_NO_INTERFACE);
    EXPECT_EQ(out, nullptr);
    out = &out;
    EXPECT_THROW(static_cast<void>(face->Get(u"host", IVXCharBuffer::IID, &out)), Exception);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(face->Get(u"port", IVXCharBuffer::IID, nullptr), RESULT_POINTER);
    out = &out;
    EXPECT_EQ(callSlot<std::int32_t>(face, 6, &IPropertyKeyIterator::IID, &out), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(out, nullptr);

    EXPECT_EQ(face->Set(u"port", nullptr), RESULT_NO_INTERFACE);
    EXPECT_EQ(face->Set(u"port", Reference<Object>(new Object)->GetUnknown()), RESULT_NO_INTERFACE);
    EXPECT_EQ(set.get(u"port"), u"7");
}

/// A set of another library: it gives what it is told to and can do as it should not.
struct ForeignSet : Object, IPropertySet {
    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap()
    {
        static const vx::vorb::InterfaceData map[]
            = {vx::vorb::viewRow<ForeignSet, IPropertySet>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
        return map;
    }

    std::int32_t Set(const char16_t* key, IVXUnknown* value) override
    {
        m_events
            += u"set " + std::u16string(key) + u"=" + std::u16string(String(Reference<IVXCharBuffer>(value).get()));
        return m_result;
    }
    std::int32_t Get(const char16_t*, const _GUID& iid, void** result) const override { return give(iid, result); }
    std::int32_t Remove(const char16_t* key, const _GUID& iid, void** result) override
    {
        m_events += u"remove " + std::u16string(key) + u" ";
        return give(iid, result);
    }
    std::int32_t GetKeyIterator(const _GUID& iid, void** result) const override;

    std::int32_t give(const _GUID& iid, void** result) const
    {
        *result = nullptr;
        if (m_result < 0 || m_givesNothing)
            return m_result;
        return Reference<String>(new String(u"value"))->QueryInterface(iid, result);
    }

    std::u16string m_events;
    std::int32_t m_result = RESULT_OK;
    bool m_givesNothing = false;
};

struct ForeignKeys : Object, IPropertyKeyIterator {
    VX_OBJECT_UNKNOWN(Object)
    std::int32_t IsAtEnd() override { return m_next == 2; }
    std::int32_t GetNext(const _GUID& iid, void** key) override
    {
        return Reference<String>(new String(++m_next == 1 ? u"one" : u"two"))->QueryInterface(iid, key);
    }
    int m_next = 0;
};

std::int32_t ForeignSet::GetKeyIterator(const _GUID& iid, void** result) const
{
    *result = nullptr;
    if (m_result < 0 || m_givesNothing)
        return m_result;
    EXPECT_TRUE(iid == IPropertyKeyIterator::IID);
    const Reference<IPropertyKeyIterator> keys(new ForeignKeys);
    *result = Reference<IPropertyKeyIterator>(keys).detach();
    return RESULT_OK;
}

TEST(VorbPropertySet, GoesThroughTheComponent)
{
    const Reference<ForeignSet> foreign(new ForeignSet);
    const Reference<PropertySet> parent(new PropertySet);
    parent->set(u"key", u"the parent's");
    VorbPropertySet set(foreign.get(), parent.get());
    set.set(u"key", u"new");
    EXPECT_EQ(foreign->m_events, u"set key=new");
    EXPECT_EQ(set.get(u"key"), u"value");
    EXPECT_TRUE(set.hasProperty(u"key"));
    EXPECT_EQ(set.remove(u"key"), u"value");
    const Reference<const collections::Set<String>> keys = set.getKeys();
    EXPECT_EQ(keys->getSize(), 2);
    EXPECT_TRUE(keys->contains(Reference<String>(new String(u"two")).get()));
    foreign->m_events.clear();
    set.clear();
    EXPECT_TRUE(foreign->m_events == u"remove one remove two " || foreign->m_events == u"remove two remove one ");
}

TEST(VorbPropertySet, TellsTheFailureOfTheComponent)
{
    const Reference<ForeignSet> foreign(new ForeignSet);
    VorbPropertySet set(foreign.get(), nullptr);
    const auto resultOf = [](auto work) {
        try {
            work();
            return RESULT_OK;
        } catch (const ResultException& failure) {
            return failure.getResult();
        }
    };
    struct {
        std::int32_t result;
        bool givesNothing;
        std::int32_t told;
    } cases[] = {{RESULT_END_OF_FILE, false, RESULT_END_OF_FILE}, {RESULT_OK, true, RESULT_POINTER}};
    for (const auto& row : cases) {
        foreign->m_result = row.result;
        foreign->m_givesNothing = row.givesNothing;
        EXPECT_EQ(resultOf([&] { set.get(u"key"); }), row.told);
        EXPECT_EQ(resultOf([&] { set.getKeys(); }), row.told);
        EXPECT_EQ(resultOf([&] { set.clear(); }), row.told);
        EXPECT_EQ(resultOf([&] { set.set(u"key", u"value"); }), row.result);
        EXPECT_EQ(set.hasProperty(u"key"), row.result >= 0);
        EXPECT_EQ(set.remove(u"key"), u"");
    }

    PropertySet own;
    const Reference<const IPropertySet> shared = PropertySet::getVorb(own);
    const VorbPropertySet bridge(const_cast<IPropertySet*>(shared.get()), nullptr);
    EXPECT_EQ(resultOf([&] { bridge.getKeys(); }), RESULT_NOT_IMPLEMENTED);
    EXPECT_FALSE(bridge.hasProperty(u"key"));
    own.set(u"key", u"value");
    EXPECT_EQ(bridge.get(u"key"), u"value");
}

} // namespace
} // namespace vx::util
