#include "tests/vx/Common.h"
#include "tests/vx/Offer.h"
#include "vx/util/vorb/VorbPropertySet.h"

#include <initializer_list>

namespace vx::util {
namespace {

using vorb::IPropertyKeyIterator;
using vorb::IPropertySet;
using vorb::VorbPropertySet;

TEST(PropertySet, AsksItsParentLast)
{
    const Reference<PropertySet> parent(new PropertySet), child(new PropertySet(parent.get()));
    parent->set(u"host", u"far");
    EXPECT_TRUE(child->get(u"host") == u"far" && child->hasProperty(u"host") && child->remove(u"host") == u"");
    child->set(u"host", u"near");
    child->set(u"host", u"here");
    EXPECT_EQ(child->getKeys()->getSize(), 1);
    EXPECT_EQ(child->remove(u"host"), u"here");
    child->set(u"port", u"");
    EXPECT_TRUE(child->hasProperty(u"port")) << "an empty value is a value";
    child->clear();
    EXPECT_EQ(child->get(u"host"), u"far");
    EXPECT_FALSE(child->hasProperty(u"port"));
}

/// Returns a value for one key that it does not have.
class Answering : public PropertySet {
public:
    using PropertySet::PropertySet;

    String get(const String& key) const override { return key == u"asked" ? u"answer" : PropertySet::get(key); }
    bool hasProperty(const String& key) const override { return key == u"asked" || PropertySet::hasProperty(key); }
};

TEST(PropertySet, HasAsManyParentsAsThereIsMemoryFor)
{
    Reference<PropertySet> set(new PropertySet);
    set->set(u"first", u"found");
    for (int child = 0; child < 100'000; ++child) // more than the depth of recursion that fits on the stack
        set = child == 50'000 ? new Answering(set.get()) : new PropertySet(set.get());
    EXPECT_EQ(set->get(u"first"), u"found");
    EXPECT_EQ(set->get(u"asked"), u"answer") << "by the class in between";
    EXPECT_TRUE(set->hasProperty(u"first") && set->hasProperty(u"asked") && !set->hasProperty(u"other"));
    EXPECT_THROW(set->get(u"other"), Exception);
}

TEST(PropertySet, SharesItsEntriesAcrossTheBorder)
{
    const Reference<PropertySet> parent(new PropertySet);
    parent->set(u"inherited", u"yes");
    PropertySet set(parent.get()); // on the stack: there must be no reference to it
    const Reference<const IPropertySet> shared = PropertySet::getVorb(set);
    auto* const face = const_cast<IPropertySet*>(shared.get());
    const Reference<String> value(new String(u"7"));
    EXPECT_EQ(face->Set(u"port", value->GetUnknown()), RESULT_OK);
    *value = u"8";
    EXPECT_EQ(set.get(u"port"), u"7") << "a copy";
    set.set(u"host", u"here");

    for (const auto& [key, expected] : {std::pair(u"host", u"here"), std::pair(u"inherited", u"yes")}) {
        Reference<IVXCharBuffer> text;
        EXPECT_EQ(face->Get(key, IVXCharBuffer::IID, text.outVoid()), RESULT_OK);
        EXPECT_EQ(String(text.get()), expected);
    }
    for (const char16_t* expected : {u"here", u""}) { // the second time it is gone
        Reference<IVXCharBuffer> old;
        EXPECT_EQ(face->Remove(u"host", IVXCharBuffer::IID, old.outVoid()), RESULT_OK);
        EXPECT_EQ(String(old.get()), expected);
    }
    void* out = &out;
    EXPECT_THROW(static_cast<void>(face->Get(u"host", IVXCharBuffer::IID, &out)), Exception);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(face->GetKeyIterator(IPropertyKeyIterator::IID, &out), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(face->Set(u"port", Reference<Object>(new Object)->GetUnknown()), RESULT_NO_INTERFACE);
    EXPECT_EQ(set.get(u"port"), u"7");
}

struct ForeignKeys : Component<IPropertyKeyIterator> {
    std::int32_t IsAtEnd() override { return m_next == 2; }
    std::int32_t GetNext(const _GUID& iid, void** key) override
    {
        return Reference<String>(new String(++m_next == 1 ? u"one" : u"two"))->QueryInterface(iid, key);
    }
    int m_next = 0;
};

/// A set of another library. The test sets its results, which may be wrong ones.
struct ForeignSet : Component<IPropertySet> {
    std::int32_t Set(const char16_t* key, IVXUnknown* value) override
    {
        m_events += String(u"set ") + key + u"=" + String(Reference<IVXCharBuffer>(value).get());
        return m_result;
    }
    std::int32_t Get(const char16_t*, const _GUID& iid, void** result) const override
    {
        *result = nullptr;
        return m_result < 0 ? m_result : Reference<String>(new String(u"value"))->QueryInterface(iid, result);
    }
    std::int32_t Remove(const char16_t* key, const _GUID& iid, void** result) override
    {
        m_events += String(u"remove ") + key + u" ";
        return Get(key, iid, result);
    }
    std::int32_t GetKeyIterator(const _GUID& iid, void** result) const override
    {
        EXPECT_TRUE(iid == IPropertyKeyIterator::IID);
        *result = m_result == RESULT_OK ? Reference<IPropertyKeyIterator>(new ForeignKeys).detach() : nullptr;
        return m_result;
    }

    String m_events;
    std::int32_t m_result = RESULT_OK;
};

TEST(VorbPropertySet, GoesThroughTheComponentAndTellsItsFailure)
{
    const Reference<ForeignSet> foreign(new ForeignSet);
    const Reference<PropertySet> parent(new PropertySet);
    parent->set(u"key", u"the parent's");
    VorbPropertySet set(foreign.get(), parent.get());
    set.set(u"key", u"new");
    EXPECT_EQ(foreign->m_events, u"set key=new");
    EXPECT_TRUE(set.get(u"key") == u"value" && set.hasProperty(u"key") && set.remove(u"key") == u"value");
    EXPECT_EQ(set.getKeys()->getSize(), 2);
    foreign->m_events.clear();
    set.clear();
    EXPECT_TRUE(foreign->m_events == u"remove one remove two " || foreign->m_events == u"remove two remove one ");
    foreign->m_events.clear();
    const String zero(u"key\0s", 5);
    EXPECT_EQ(resultOf([&] { set.set(zero, u"value"); }), RESULT_INVALID_NAME);
    EXPECT_EQ(resultOf([&] { set.get(zero); }), RESULT_INVALID_NAME);
    EXPECT_TRUE(!set.hasProperty(zero) && set.remove(zero).isEmpty());
    EXPECT_EQ(foreign->m_events, u"") << "no other key was touched";
    foreign->m_result = RESULT_END_OF_FILE;
    for (const auto& work : std::initializer_list<std::function<void()>> {
             [&] { set.get(u"key"); }, [&] { set.clear(); }, [&] { set.set(u"key", u"value"); }})
        EXPECT_EQ(resultOf(work), RESULT_END_OF_FILE);
    EXPECT_TRUE(!set.hasProperty(u"other") && set.remove(u"key").isEmpty());
}

} // namespace
} // namespace vx::util
