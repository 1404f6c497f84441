#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vx/Offer.h"
#include "vx/i18n/ComStringBundle.h"
#include "vx/i18n/StringMapBundle.h"
#include "vx/util/CopyCharBuffer.h"

namespace vx::i18n {
namespace {

using collections::StringHashMap;

TEST(Locale, TakesItsNameApart)
{
    const std::pair<const char16_t*, const char*> cases[]
        = {{u"en_US.UTF-8@euro", "en|US|euro|en_US@euro"}, {u"de_DE", "de|DE||de_DE"}, {u"fr", "fr|||fr"},
            {u"de@euro", "de||euro|de@euro"}, {u"ja.EUC-JP", "ja|||ja"}, {u"", "|||"}, {u"_AT@", "|AT||_AT"},
            // Each separator is searched independently, so one in a wrong place is not noticed.
            {u"a.b_C", "a.b|||a.b"}, {u"a@b_C", "a@b||b_C|a@b@b_C"}, {u"a@b.c", "a@b||b.c|a@b@b.c"}};
    for (const auto& [text, parts] : cases) {
        const Locale locale(text);
        EXPECT_EQ(
            (locale.getLanguage() + u"|" + locale.getCountry() + u"|" + locale.getVariant() + u"|" + locale.toString())
                .toUtf8(),
            parts);
    }
    EXPECT_EQ(Locale(u"en", u"US", nullptr).toString(), u"en_US");
    EXPECT_EQ(Locale(u"en", nullptr, u"euro").toString(), u"en@euro");
}

TEST(Locale, TellsAComponentWhatItKnows)
{
    const Reference<Locale> locale(new Locale(u"de_AT@euro"));
    void* const view = static_cast<IVXLocale*>(locale.get());
    const Reference<String> text(new String(u"stale"));
    IVXCharBuffer* const buffer = text.get();
    const std::pair<std::size_t, const char16_t*> texts[] = {{3, u"de"}, {4, u"AT"}, {5, u"euro"}, {14, u"de_AT@euro"}};
    for (const auto& [slot, wanted] : texts) {
        EXPECT_EQ(callSlot<std::int32_t>(view, slot, buffer), RESULT_OK);
        EXPECT_EQ(*text, wanted);
    }
    IVXLocale* const inLocale = locale.get();
    for (std::size_t slot = 6; slot < 14; slot += 2) { // display names are not available
        EXPECT_EQ(callSlot<std::int32_t>(view, slot, buffer), RESULT_FAIL) << slot;
        EXPECT_EQ(callSlot<std::int32_t>(view, slot + 1, buffer, inLocale), RESULT_FAIL) << slot;
    }
    const Locale same(u"de", u"AT", u"euro"), other(u"de_at@euro");
    EXPECT_TRUE(same.equals(*locale) && same.compareTo(*locale) == 0);
    EXPECT_TRUE(!same.equals(other) && same.compareTo(other) < 0 && other.compareTo(same) > 0);
    EXPECT_FALSE(same.equals(String(u"de_AT@euro")));
    EXPECT_THROW(same.compareTo(String(u"de_AT@euro")), CastFailedException);
}

/// A bundle of another library. Its results are set by the test, and it counts the references that it gives.
struct ForeignBundle : Component<IVXResourceBundle> {
    std::int32_t LoadCharBuffer(const char16_t* key, IVXCharBuffer* value) const override
    {
        const Reference<IVXCharBuffer> kept(value);
        const auto found = m_texts.find(key);
        return found == m_texts.end() ? RESULT_NOT_FOUND : fill(value, found->second);
    }
    std::int32_t LoadString(const char16_t*, char16_t*, std::uint32_t*) const override { return RESULT_FAIL; }
    std::int32_t GetCount(std::int32_t* count) const override
    {
        *count = static_cast<std::int32_t>(m_texts.size()) + m_lie;
        return RESULT_OK;
    }
    std::int32_t GetResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const override
    {
        const Reference<IVXCharBuffer> kept(key);
        EXPECT_EQ(value, nullptr);
        if (index >= static_cast<std::int32_t>(m_texts.size()))
            return RESULT_INVALID_ARGUMENT;
        return fill(key, std::next(m_texts.begin(), index)->first);
    }
    std::int32_t GetLocale(IVXLocale**) const override { return RESULT_FAIL; }

    static std::int32_t fill(IVXCharBuffer* target, const std::u16string& text)
    {
        String source(text);
        return VXCopyCharBuffer(target, &source), RESULT_OK;
    }

    std::map<std::u16string, std::u16string> m_texts;
    std::int32_t m_lie = 0;
};

TEST(ComStringBundle, ReadsTheComponent)
{
    const Reference<ForeignBundle> component(new ForeignBundle);
    component->m_texts = {{u"empty", u""}, {u"hello", u"Grüß Gott"}};
    const Reference<StringBundle> bundle(new ComStringBundle(component.get(), nullptr));
    EXPECT_EQ(bundle->getString(u"hello"), u"Grüß Gott");
    for (const char16_t* key : {u"empty", u"missing", u""})
        EXPECT_EQ(saidBy<Exception>([&] { bundle->getString(key); }), "Resource not found") << String(key);
    const String longer(u"hello there");
    const String wrapped(String::AcquireWrap, longer, 0, 5);
    EXPECT_EQ(bundle->getString(wrapped), u"Grüß Gott") << "no zero unit after it";
    EXPECT_THROW(bundle->getString(String(u"hello\0x", 7)), Exception) << "another key";
    component->m_lie = 1;
    EXPECT_EQ(resultOf([&] { bundle->getKeys(); }), RESULT_INVALID_ARGUMENT) << "no list is kept of the first two";
    component->m_lie = 0;
    const Reference<const collections::Collection<String>> keys = bundle->getKeys();
    std::u16string listed;
    for (const Reference<String>& key : *keys)
        (listed += key->view()) += u' ';
    EXPECT_EQ(listed, u"empty hello ");
}

TEST(StringBundle, IsFoundByTheNearestLocale)
{
    const auto offer = [&](const char16_t* locale) {
        return [locale] {
            auto* component = new ForeignBundle;
            component->m_texts = {{u"locale", locale}};
            return component->GetUnknown();
        };
    };
    const auto found = [&](const char16_t* locale) {
        const Reference<Locale> wanted(locale != nullptr ? new Locale(locale) : nullptr);
        try {
            const Reference<StringBundle> bundle = StringBundle::getBundle(u"Test", wanted.get());
            EXPECT_EQ(bundle->getString(u"locale"), bundle->getLocale()->toString());
            return bundle->getString(u"locale");
        } catch (const Exception& failure) {
            return failure.getDescription();
        }
    };
    EXPECT_EQ(found(u"fr_FR"), u"Resource not found");
    const Offer cut(u"Velmaris.Test", offer(u"en_US"));
    EXPECT_THROW(StringBundle::getBundle(String(u"Test\0x", 6), nullptr), Exception) << "another name";
    const Offer fallback(u"Velmaris.Test.StringBundle.en_US", offer(u"en_US"));
    EXPECT_EQ(found(u"fr_FR"), u"en_US");
    EXPECT_EQ(found(nullptr), u"en_US");
    const Offer german(u"Velmaris.Test.StringBundle.de", offer(u"de"));
    EXPECT_EQ(found(u"de_AT@euro"), u"de");
    {
        const Offer euro(u"Velmaris.Test.StringBundle.de_AT@euro", offer(u"de_AT@euro"));
        EXPECT_EQ(found(u"de_AT@euro"), u"de_AT@euro");
        const Offer broken(u"Velmaris.Test.StringBundle.de_AT", [] { return nullptr; });
        EXPECT_EQ(found(u"de_AT"), u"de") << "a failure is silent";
    }
}

Reference<StringHashMap> mapOf(std::initializer_list<std::pair<const char16_t*, const char16_t*>> texts)
{
    const Reference<StringHashMap> map(new StringHashMap);
    for (const auto& [key, value] : texts)
        map->put(key, Reference<String>(new String(value)).get());
    return map;
}

struct ChildBundle : StringMapBundle {
    ChildBundle(StringHashMap* map, StringBundle* parent)
        : StringMapBundle(map, nullptr)
    {
        m_parent = parent;
    }
};

TEST(StringMapBundle, ServesAMapAndItsParent)
{
    const Reference<Locale> locale(new Locale(u"de"));
    const Reference<StringBundle> parent(
        new StringMapBundle(mapOf({{u"a", u"parent a"}, {u"b", u"parent b"}}).get(), locale.get()));
    const Reference<StringHashMap> map = mapOf({{u"a", u"own a"}, {u"c", u""}});
    const Reference<ChildBundle> child(new ChildBundle(map.get(), parent.get()));
    EXPECT_EQ(child->getString(u"a"), u"own a");
    EXPECT_EQ(child->getString(u"b"), u"parent b");
    EXPECT_THROW(child->getString(u"c"), Exception);
    EXPECT_THROW(StringMapBundle(nullptr, locale.get()), ResultException);

    inThreads(2, [&](int) { EXPECT_EQ(child->getKeys()->getSize(), 3); });
    const String later(u"later\0b", 7);
    map->put(later, Reference<String>(new String(u"x")).get());
    EXPECT_EQ(child->getString(later), u"x");

    const Reference<IVXResourceBundle> face(child.get());
    std::int32_t count = -1;
    EXPECT_EQ(callSlot<std::int32_t>(face.get(), 5, &count), RESULT_OK);
    EXPECT_EQ(count, 3) << "the list stays";
    const Reference<String> key(new String), value(new String);
    EXPECT_EQ(face->GetResource(2, key.get(), value.get()), RESULT_OK);
    EXPECT_EQ(*key, u"b") << "the parent's stand behind";
    EXPECT_EQ(*value, u"parent b");

    IVXLocale* none = locale.get();
    EXPECT_EQ(face->GetLocale(&none), RESULT_OK);
    EXPECT_EQ(none, nullptr);
    Reference<IVXLocale> told;
    EXPECT_EQ(parent->GetLocale(told.out()), RESULT_OK);
    EXPECT_EQ(told.get(), locale.get());
}

TEST(StringBundle, LoadsTextIntoWhatTheCallerHas)
{
    const Reference<IVXResourceBundle> face(new StringMapBundle(mapOf({{u"k", u"abc"}}).get(), nullptr));
    const Reference<String> text(new String);
    EXPECT_EQ(face->LoadCharBuffer(u"k", text.get()), RESULT_OK);
    EXPECT_EQ(*text, u"abc");
    EXPECT_EQ(face->LoadCharBuffer(u"?", text.get()), RESULT_FAIL);
    for (const auto& [room, length] : {std::pair(6U, 4U), std::pair(4U, 4U), std::pair(3U, 3U), std::pair(0U, 0U)}) {
        char16_t units[] = u"??????";
        std::uint32_t told = room;
        EXPECT_EQ(face->LoadString(u"k", units, &told), RESULT_OK);
        EXPECT_EQ(told, length) << room;
        std::u16string expected(6, u'?');
        for (std::uint32_t i = 0; i < room; ++i)
            expected[i] = i < 3 ? u"abc"[i] : u'\0';
        EXPECT_EQ(std::u16string(units, 6), expected) << room;
    }
}

} // namespace
} // namespace vx::i18n
