#include "vx/Str1HashMap.h"

#include "tests/vx/Common.h"

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
        {u"d", u"a,\u00CA,b,c,\u00CC,d,"}, // 15 buckets: a in 7, b in 8, c in 9, d in 10; both chains are reversed
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

TEST(Str1HashMap, TellsNothingByAnIteratorOfNoMapOrOfAnotherOne)
{
    Str1HashMap<void*> map, other;
    map.put(u"a", nullptr);
    Str1HashMap<void*>::KeyValueIterator iterator;
    EXPECT_FALSE(map.iteratorHasNext(iterator)) << "not begun";
    map.iteratorInit(iterator);
    EXPECT_FALSE(other.iteratorHasNext(iterator));
    map.put(u"b", nullptr);
    const Str1* key = nullptr;
    void** value = nullptr;
    map.iteratorNext(iterator, &key, &value);
    EXPECT_TRUE(key == nullptr && value == nullptr) << "the map has changed";
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
        map.put(key, value, &value); // `value` is also the place of the old value
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

TEST(Str1HashMap, FindsAValueThatMayBeChangedInPlace)
{
    Str1HashMapLC<int> map;
    for (const char16_t* word : {u"Tick", u"tock", u"TICK", u"tick"}) {
        if (int* const count = map.find(word))
            ++*count;
        else
            map.put(word, 1);
    }
    int count = 0;
    EXPECT_TRUE(map.get(u"tick", count));
    EXPECT_EQ(count, 3);
    const auto& same = map;
    EXPECT_EQ(same.find(u"tIck"), map.find(u"tick"));
    EXPECT_EQ(*same.find(u"Tock"), 1);
    EXPECT_EQ(same.find(u"tic"), nullptr);
    map.remove(u"tick");
    EXPECT_EQ(map.find(u"tick"), nullptr);
}

} // namespace
} // namespace vx
