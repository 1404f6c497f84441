#include "tests/Random.h"
#include "vx/Str1HashMap.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace vx {
namespace {

/// The keys in the order of iteration, with a comma after each.
template <class T>
std::u16string keysOf(const Str1HashMap<T>& map)
{
    std::u16string keys;
    typename Str1HashMap<T>::KeyValueIterator iterator;
    for (map.iteratorInit(iterator); map.iteratorHasNext(iterator);) {
        const Str1* key = nullptr;
        map.iteratorNext(iterator, &key, nullptr);
        keys.append(key->view()) += u',';
    }
    return keys;
}

/// A key of one unit hashes to the unit, and 105 is a multiple of 7 and 15: U+0061 and U+00CA, U+0063 and U+00CC share
/// a bucket in tables of 7 and 15.
TEST(Str1HashMap, IteratesInTheOrderOfBucketsAndTurnsChainsWhenItGrows)
{
    Str1HashMap<void*> map(3, 0.75F); // threshold 2
    const std::pair<const char16_t*, const char16_t*> steps[] = {
        {u"a", u"a,"}, // 97 % 3 = 1
        {u"c", u"c,a,"}, // 99 % 3 = 0
        {u"\u00CA", u"c,\u00CA,a,"}, // 7 buckets, threshold 5: c in 1, a in 6, U+00CA before it
        {u"\u00CC", u"\u00CC,c,\u00CA,a,"}, // 204 % 7 = 1
        {u"b", u"b,\u00CC,c,\u00CA,a,"}, // 98 % 7 = 0
        {u"d", u"a,\u00CA,b,c,\u00CC,d,"}, // 15 buckets: a in 7, b in 8, c in 9, d in 10; both chains turned
    };
    for (const auto& [key, order] : steps) {
        map.put(key, nullptr);
        EXPECT_EQ(keysOf(map), order);
    }
    map.remove(u"a");
    map.remove(u"none");
    EXPECT_EQ(keysOf(map), u"\u00CA,b,c,\u00CC,d,");
    map.clear();
    EXPECT_TRUE(map.isEmpty() && keysOf(map).empty());
    for (const char16_t* key : {u"d", u"c", u"b", u"a"}) // 15 buckets still
        map.put(key, nullptr);
    EXPECT_EQ(keysOf(map), u"a,b,c,d,");
}

TEST(Str1HashMap, DoesWhatAnotherMapDoes)
{
    Random random;
    for (const float load : {0.75F, 5.0F, 0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(),
             std::numeric_limits<float>::infinity(), std::numeric_limits<float>::max(), 1e-30F}) {
        Str1HashMap<Str1> map(static_cast<int>(random() % 4) - 2, load);
        std::unordered_map<std::u16string, std::u16string> model;
        for (int i = 0; i < 3000; ++i) {
            const auto letter = static_cast<char16_t>(u'a' + random() % 26);
            std::u16string key(random() % 3, letter);
            if (random() % 2 == 0) // all have one hash, which looks at every second unit
                (key.assign(64, u'x'))[1] = letter;
            const Str1 lightKey(key);
            const std::u16string value(random() % 40, static_cast<char16_t>(u'0' + random() % 10));
            Str1 previous(u"none"), current(u"none");
            const bool isKnown = model.contains(key);
            const std::u16string expected = isKnown ? model[key] : u"none";
            ASSERT_EQ(map.get(lightKey, current), isKnown);
            ASSERT_EQ(current, expected);
            if (random() % 3 != 0) {
                map.put(lightKey, Str1(value), &previous);
                model[key] = value;
            } else {
                map.remove(lightKey, &previous);
                model.erase(key);
            }
            ASSERT_EQ(previous, expected);
            ASSERT_EQ(map.containsKey(lightKey), model.contains(key));
            ASSERT_EQ(map.getSize(), static_cast<int>(model.size()));
        }
        int entries = 0;
        Str1HashMap<Str1>::KeyValueIterator iterator;
        for (map.iteratorInit(iterator); map.iteratorHasNext(iterator); ++entries) {
            const Str1* key = nullptr;
            Str1* value = nullptr;
            map.iteratorNext(iterator, &key, &value);
            ASSERT_EQ(*value, model.at(std::u16string(key->view())));
        }
        EXPECT_EQ(entries, map.getSize());
    }
}

TEST(Str1HashMap, EndsAnIterationWhenEntriesComeOrGo)
{
    using Map = Str1HashMap<void*>;
    const std::tuple<const char*, void (*)(Map&), bool> cases[] = {
        {"new value", [](Map& map) { map.put(u"a", nullptr); }, true},
        {"remove nothing", [](Map& map) { map.remove(u"x"); }, true},
        {"new key", [](Map& map) { map.put(u"x", nullptr); }, false},
        {"remove", [](Map& map) { map.remove(u"a"); }, false},
        {"clear", [](Map& map) { map.clear(); }, false},
    };
    for (const auto& [change, work, goesOn] : cases) {
        Map map;
        map.put(u"a", nullptr);
        map.put(u"b", nullptr);
        Map::KeyValueIterator iterator;
        EXPECT_FALSE(map.iteratorHasNext(iterator)) << "not begun";
        map.iteratorInit(iterator);
        EXPECT_FALSE(Map().iteratorHasNext(iterator)) << "another map's";
        work(map);
        EXPECT_EQ(map.iteratorHasNext(iterator), goesOn) << change;
        const Str1* key = nullptr;
        void** value = nullptr;
        map.iteratorNext(iterator, &key, &value);
        EXPECT_EQ(key != nullptr && value != nullptr, goesOn) << change;
    }
}

TEST(Str1HashMap, KeepsKeysAndValuesThatOutliveTheirSource)
{
    Str1HashMap<Str1> map;
    map.put(u"loc", u"replaced below");
    {
        char16_t array[8] = u"local";
        Str1Fixed<128> fixed;
        fixed = u"fixed";
        const auto put = [&map](const auto&... texts) { (map.put(texts, texts), ...); };
        put(Str1Local(array, 5, 8), Str1Wrap(array, 4), Str1Static(array, 3), fixed);
        std::fill(std::begin(array), std::end(array), u'#');
    }
    for (const char16_t* key : {u"local", u"loca", u"loc", u"fixed"}) {
        Str1 value;
        EXPECT_TRUE(map.get(Str1Static(key), value));
        EXPECT_EQ(value, key);
        map.put(key, value, &value); // the old value goes where the new one comes from
        EXPECT_EQ(value, key);
    }
}

TEST(Str1HashMapLC, FindsKeysInAnyCaseAndKeepsThemInLower)
{
    Str1HashMapLC<Str1> map;
    const Str1 key(u"Key\u00C9");
    map.put(key, u"1");
    map.put(u"kEY\u00E9", u"2");
    Str1 value;
    EXPECT_TRUE(map.get(u"KEY\u00C9", value));
    EXPECT_EQ(value, u"2");
    EXPECT_EQ(keysOf(map), u"key\u00E9,");
    EXPECT_EQ(key, u"Key\u00C9");
    map.remove(u"keY\u00E9");
    EXPECT_EQ(map.getSize(), 0);
}

/// Looks at the map while the map releases it.
class Watcher : public ComObject {
public:
    explicit Watcher(Str1HashMap<Reference<ComObject>>& map)
        : m_map(map)
    {
    }
    ~Watcher() override
    {
        Reference<ComObject> value;
        ++s_gone;
        s_found += m_map.get(u"key", value) ? 1 : 0;
    }

    static inline int s_gone = 0, s_found = 0;

private:
    Str1HashMap<Reference<ComObject>>& m_map;
};

TEST(Str1HashMap, IsWholeWhenItReleasesAValue)
{
    Str1HashMap<Reference<ComObject>> map(1);
    const auto put = [](auto& to, const char16_t* key = u"key") { to.put(key, new Watcher(to)); };
    put(map);
    put(map); // finds the new one
    map.remove(u"key");
    put(map);
    map.clear();
    EXPECT_TRUE(Watcher::s_gone == 3 && Watcher::s_found == 1);
    {
        Str1HashMap<Reference<ComObject>> ending;
        put(ending);
        put(ending, u"other");
    }
    EXPECT_TRUE(Watcher::s_gone == 5 && Watcher::s_found == 1);
}

/// Hashes that are multiples of 2 * 9375 + 1 spread over 9375 buckets, and meet in one when the map grows.
TEST(Str1HashMap, LetsAChainGoThatIsLongerThanTheStackIsDeep)
{
    constexpr int CAPACITY = 9375;
    constexpr std::uint32_t ENTRIES = 16 * CAPACITY + 1;
    Str1HashMap<std::uint32_t> map(CAPACITY, 16.0F);
    for (std::uint32_t i = 0; i < ENTRIES; ++i) {
        char16_t units[7]; // the digits of the hash to the base 37
        std::uint32_t hash = i * (2 * CAPACITY + 1);
        for (int place = 6; place >= 0; --place, hash /= 37)
            units[place] = static_cast<char16_t>(hash % 37);
        map.put(Str1(units, 7), i);
    }
    Str1HashMap<std::uint32_t>::KeyValueIterator iterator;
    map.iteratorInit(iterator);
    const std::int32_t bucket = iterator.nextBucket;
    for (std::uint32_t i = 1; i < ENTRIES; ++i)
        map.iteratorNext(iterator, nullptr, nullptr);
    EXPECT_TRUE(map.iteratorHasNext(iterator) && iterator.nextBucket == bucket) << "not one chain";
    map.clear();
}

} // namespace
} // namespace vx
