#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vx/UserBuffer.h"
#include "tests/vx/collections/Elements.h"
#include "vx/NumberBoxes.h"
#include "vx/Str1HashMap.h"
#include "vx/collections/IntegerHashMap.h"
#include "vx/collections/Set.h"
#include "vx/collections/StringHashMap.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/util/PropertySet.h"

#include <initializer_list>
#include <numeric>
#include <vector>

namespace vx::collections {
namespace {

using vorb::HashMap;
using vorb::Iterator;
using vorb::MapEntry;

/// The digits of the hash to the base 37.
std::u16string textOfHash(std::uint32_t hash)
{
    std::u16string text(7, u'\0');
    for (std::size_t place = 7; place-- > 0; hash /= 37)
        text[place] = static_cast<char16_t>(hash % 37);
    return text;
}

std::string keysOf(const HashMap& map)
{
    std::string text;
    for (const auto [key, value] : map)
        text += textOf(valueOf(key)) + ' ';
    return text;
}

void put(HashMap& map, const std::vector<int>& keys)
{
    for (const int key : keys)
        map.put(item(key).get(), item(10 * key).get());
}

Reference<HashMap> mapOf(std::initializer_list<int> keys)
{
    const Reference<HashMap> map(new HashMap);
    put(*map, keys);
    return map;
}

/// Here a key is its own hash, so the order shows the capacity: the last bucket comes first.
TEST(HashMap, TakesAnyCapacityAndLoad)
{
    const std::tuple<int, float, std::vector<int>, const char*> cases[] = {
        {10, 0.7F, {1, 2, 3, 4, 5, 10, 6}, "10 6 5 4 3 2 1 "}, // the product as a float would be 7
        {0, 0.75F, {1, 3, 5}, "5 3 1 "},
        {3, -1.0F, {1, 3, 5}, "5 3 1 "},
        {3, std::numeric_limits<float>::quiet_NaN(), {1, 3, 5}, "5 3 1 "},
        {3, std::numeric_limits<float>::infinity(), {1, 3, 6, 9, 5}, "5 1 9 6 3 "},
    };
    for (const auto& [capacity, load, keys, order] : cases) {
        const Reference<HashMap> map(new HashMap(capacity, load));
        put(*map, keys);
        EXPECT_EQ(keysOf(*map), order);
    }
    const Reference<HashMap> source = mapOf({1, 2, 3, 4, 11});
    const Reference<HashMap> filled(new HashMap(static_cast<const vorb::Map&>(*source)));
    EXPECT_EQ(keysOf(*filled), "4 3 2 1 11 ") << "11 buckets";
    EXPECT_EQ(HashMap::calcCapacity(std::numeric_limits<int>::max()), std::numeric_limits<int>::max());
}

TEST(AbstractMap, ComparesByTheOtherMapsAnswers)
{
    using Entries = std::vector<std::pair<int, int>>;
    const std::tuple<Entries, Entries, int> cases[] = {{{{1, 10}, {2, 20}}, {{2, 20}, {1, 10}}, 0},
        {{{1, 10}}, {{1, 13}}, -3}, {{{1, 10}}, {{2, 10}}, -1}, // a value against none: foreign to it, by address
        {{{1, NO_ITEM}}, {{2, NO_ITEM}}, 1}, {{{1, NO_ITEM}}, {{1, 10}}, -1}, {{{1, NO_ITEM}}, {{1, NO_ITEM}}, 0},
        {{{1, 10}}, {{1, 10}, {2, 20}, {3, 30}}, -2}};
    const auto mapWith = [](const Entries& entries) {
        const Reference<HashMap> map(new HashMap);
        for (const auto& [key, value] : entries)
            map->put(item(key).get(), item(value).get());
        return map;
    };
    for (const auto& row : cases) {
        const auto left = mapWith(std::get<0>(row)), right = mapWith(std::get<1>(row));
        EXPECT_EQ(left->compareTo(*right), std::get<2>(row)) << &row - cases;
        EXPECT_EQ(left->equals(*right), std::get<2>(row) == 0) << &row - cases;
    }
    EXPECT_EQ(outcome([&] { return mapOf({1})->compareTo(Item(1)); }), "cast");
}

/// The keys share a bucket, and 7 is its first entry.
TEST(HashMap, PassesOnWhatItsComparatorDoesInMidSearch)
{
    const Reference<WatchedComparator> comparator(new WatchedComparator);
    const Reference<HashMap> map(new HashMap(comparator.get(), comparator.get(), 3, 10));
    put(*map, {1, 4, 7});
    const Reference<IVXUnknown> four = item(4), fresh = item(5);
    const Reference<vorb::Set> entries = map->createEntrySet();
    const Reference<Iterator> iterator = entries->createIterator();
    const Reference<IVXUnknown> entry = iterator->next();
    const std::tuple<const char*, int, std::function<void()>> cases[] = {
        {"put, hash", 0, [&] { map->put(fresh.get(), fresh.get()); }},
        {"put, equality", 1, [&] { map->put(four.get(), fresh.get()); }},
        {"get", 1, [&] { map->get(four.get()); }},
        {"remove", 1, [&] { map->remove(four.get()); }},
        {"containsValue", 1, [&] { map->containsValue(item(40).get()); }},
        {"entry set, value", 2, [&] { entries->contains(entry.get()); }},
    };
    for (const auto& [operation, calls, work] : cases) {
        comparator->m_calls = calls;
        EXPECT_EQ(outcome(work), "result " + std::to_string(RESULT_TIMED_OUT)) << operation;
        comparator->m_calls = 1000;
        EXPECT_EQ(keysOf(*map), "7 4 1 ") << operation;
        EXPECT_EQ(dynamic_cast<ComObject&>(*fresh).GetRefCount(), 1U) << operation;
    }
    EXPECT_EQ(textOf(MapEntry::of(iterator->next())->getKey()), "4") << "no iterator was disturbed";
    comparator->m_failure = [&] {
        map->clear();
        return RESULT_OK;
    };
    for (const auto& [operation, calls, work] : cases) {
        put(*map, {1, 4, 7});
        comparator->m_calls = calls;
        EXPECT_TRUE(calls == 0 || outcome(work) == "plain") << operation << " meets a change of the map";
    }
}

TEST(HashMap, IsWholeWhenAKeyThatGoesLooksAtIt)
{
    const Reference<HashMap> map(new HashMap(1, 10));
    std::string seen;
    const auto look = [&] {
        seen = keysOf(*map);
        put(*map, {6});
    };
    put(*map, {1});
    map->put((new Looking(look))->GetUnknown(), nullptr);
    const Reference<Iterator> iterator = map->createKeySet()->createIterator();
    iterator->next();
    iterator->remove();
    EXPECT_EQ(outcome([&] { iterator->next(); }), "plain") << "the key put another one in";
    EXPECT_EQ(seen + keysOf(*map), "1 6 1 ");
}

/// The operations of the other maps, as templates, since plain ones would override those of the map. An iteration that
/// a change of the map ends throws what theirs throws.
struct LightMap : Str1HashMap<Reference<Object>> {
    using Base = Str1HashMap<Reference<Object>>;
    using Base::Base;

    Reference<Object> put(const std::same_as<Str1> auto& key, Object* value)
    {
        Reference<Object> old;
        Base::put(key, value, &old);
        return old;
    }
    Reference<Object> remove(const std::same_as<Str1> auto& key)
    {
        Reference<Object> old;
        Base::remove(key, &old);
        return old;
    }
    Reference<Object> get(const std::same_as<Str1> auto& key) const
    {
        Reference<Object> value;
        EXPECT_EQ(Base::get(key, value), containsKey(key));
        return value;
    }
};

template <class Map, class Visit>
void walk(const Map& map, Visit visit)
{
    for (const auto [key, value] : map)
        visit(key, value);
}
template <class Visit>
void walk(const LightMap& map, Visit visit)
{
    LightMap::KeyValueIterator iterator;
    int left = map.getSize();
    for (map.iteratorInit(iterator); map.iteratorHasNext(iterator); --left) {
        const Str1* key = nullptr;
        Reference<Object>* value = nullptr;
        map.iteratorNext(iterator, &key, &value);
        visit(Str1(*key), value->get());
    }
    if (left != 0)
        throw Exception();
}

template <class MapClass, class Key>
struct PlainKeys {
    using Map = MapClass;
    /// Its hash is the number, but texts from 100 to 999 share one hash.
    static Key key(std::uint32_t number)
    {
        if constexpr (std::is_same_v<Key, int>)
            return static_cast<int>(number);
        else
            return Key(number >= 100 && number < 1000 ? collidingText(number) : textOfHash(number));
    }
    static std::uint32_t numberOf(const auto& wanted)
    {
        std::uint32_t number = 0;
        while (!(key(number) == wanted))
            ++number;
        return number;
    }
    static void put(Map& map, std::uint32_t number, Object* value) { map.put(key(number), value); }
    static bool has(const Map& map, std::uint32_t number) { return map.get(key(number)) != nullptr; }
};
using Numbers = PlainKeys<IntegerHashMap, int>;
using Texts = PlainKeys<StringHashMap, String>;
using LightTexts = PlainKeys<LightMap, Str1>;

struct Objects {
    using Map = HashMap;
    static Reference<IVXUnknown> key(std::uint32_t number) { return item(static_cast<int>(number)); }
    static void put(Map& map, std::uint32_t number, Object* value)
    {
        map.put(key(number).get(), detail::toElement(value));
    }
    static bool has(const Map& map, std::uint32_t number) { return map.containsKey(key(number).get()); }
};

struct Elements {
    using Map = vorb::HashSet;
    static void put(Map& set, std::uint32_t, Object* value) { set.add(detail::toElement(value)); }
    static bool has(const Map& set, std::uint32_t number) { return set.contains(Objects::key(number).get()); }
};

template <class Kind>
struct HashMaps : testing::Test {
};
using Kinds = testing::Types<Numbers, Texts, LightTexts, Objects, Elements>;
TYPED_TEST_SUITE(HashMaps, Kinds);

TYPED_TEST(HashMaps, AreWholeForElementsThatUseThemInTheirDestructors)
{
    std::string seen;
    for (const bool isCleared : {true, false}) {
        const auto map = std::make_unique<typename TypeParam::Map>();
        for (std::uint32_t key = 1; key <= 3; ++key) {
            const auto look = [&, key, owner = map.get()] {
                seen += std::to_string(owner->getSize()) + (TypeParam::has(*owner, key) ? "? " : " ");
                TypeParam::put(*owner, key, Reference<Object>(new Item(static_cast<int>(key))).get());
            };
            TypeParam::put(*map, key, Reference<Object>(new Looking(look)).get());
        }
        if (isCleared)
            map->clear();
    }
    EXPECT_EQ(seen + std::to_string(Item::s_alive), "0 1 2 0 1 2 0");
}

/// The hashes are in different buckets first, and in one bucket after the map has grown.
TYPED_TEST(HashMaps, GoWithoutRecursionHoweverLongAChainIs)
{
    constexpr std::uint32_t KEYS = 200'000, CAPACITY = 10'000, STEP = 2 * CAPACITY + 1;
    static_assert(std::uint64_t {STEP} * KEYS < 0xFFFFFFFFU);
    const int alive = Item::s_alive;
    if constexpr (!std::is_same_v<TypeParam, Elements>) {
        typename TypeParam::Map map(CAPACITY, static_cast<float>(KEYS) / CAPACITY);
        for (std::uint32_t number = 0; number <= KEYS; ++number)
            TypeParam::put(map, number * STEP, Reference<Object>(new Item(1)).get());
        EXPECT_GT(Item::s_alive, alive + static_cast<int>(KEYS));
    }
    EXPECT_EQ(Item::s_alive, alive);
}

TEST(Str1HashMap, IsWholeForAValueThatUsesItInItsDestructor)
{
    Str1HashMap<Reference<Object>> map(1);
    std::string seen;
    const auto look = [&] { seen += map.containsKey(u"key") ? "there " : "gone "; };
    for (int time = 0; time < 2; ++time)
        map.put(u"key", new Looking(look));
    map.remove(u"key");
    EXPECT_EQ(seen, "there gone ");

    map.put(u"key", new Object);
    Reference<Object> value(new Looking([&] { map.remove(u"key"); }));
    map.remove(u"key", &value); // releases the object that removes the same key
    EXPECT_EQ(map.getSize(), 0);
}

TEST(HashMap, StandsAsBeforeWhereAnEntryHasNoMemory)
{
    const Reference<HashMap> map = mapOf({1});
    Reference<Iterator> iterator = map->createEntrySet()->createIterator();
    EXPECT_NE(failEachAllocation([&] { iterator->next(); }, [&](int) { EXPECT_TRUE(iterator->hasNext()); }), 0);
    const Reference<IVXUnknown> one = item(1);
    const AllocationProbe probe;
    map->put(one.get(), one.get()); // a new value for a key that is there
    map->remove(one.get());
    map->clear();
    EXPECT_EQ(probe.count(), 0);
}

TEST(HashMap, ShowsItsEntriesWhichAllLookAlike)
{
    Reference<HashMap> map = mapOf({1, 2});
    const auto entries = map->createEntrySet(), keys = map->createKeySet();
    const Reference<IVXUnknown> two = entries->createIterator()->next();
    const Reference<MapEntry> entry = MapEntry::of(two);
    EXPECT_EQ(two, entries->createIterator()->next()) << "one object for each entry";
    EXPECT_EQ(entry->compareTo(*map), 0);
    EXPECT_TRUE(entry->equals(*map));
    EXPECT_EQ(entry->hashCode() + map->hashCode(), 0U);
    EXPECT_EQ(outcome([&] { entries->contains(item(1).get()); }), "cast");
    EXPECT_FALSE(entries->remove(two.get())) << "an entry is not comparable";
    EXPECT_TRUE(entries->remove(nullptr)) << "and equals null therefore";
    EXPECT_EQ(outcome([&] { keys->add(nullptr); }), "unsupported");
    map = nullptr;
    EXPECT_EQ(keys->getSize(), 1) << "of the map that its views keep";
}

TEST(HashMap, IsWalkedByARangeForOverAViewThatNothingElseHolds)
{
    std::string text;
    for (const auto& key : *mapOf({1, 2})->createKeySet())
        text += textOf(key) + ' ';
    for (const auto& entry : *mapOf({3})->createEntrySet())
        text += textOf(MapEntry::of(entry.get()).getValue()) + ' ';
    for (const auto [key, value] : *mapOf({4}))
        text += textOf(valueOf(key));
    EXPECT_EQ(text, "2 1 30 4");
    using Dereferenced = decltype(*std::declval<Reference<HashMap>>());
    static_assert(!std::is_lvalue_reference_v<Dereferenced>, "`auto& map = *newMap()` would outlive the map");
    static_assert(std::is_convertible_v<Dereferenced, const vorb::Map&>);
}

TEST(HashMap, GivesTheSameEntryToReadersAtTheSameTime)
{
    for (int round = 0; round < 20; ++round) {
        const Reference<HashMap> map = mapOf({1, 2, 3, 4, 5, 6, 7, 8});
        std::vector<Reference<IVXUnknown>> seen[2];
        inThreads(2, [&](int reader) {
            const auto iterator = std::as_const(*map).createEntrySet()->createConstIterator();
            while (iterator->hasNext())
                seen[reader].push_back(iterator->next());
        });
        EXPECT_EQ(seen[0], seen[1]);
        EXPECT_EQ(seen[0].size(), 8U);
    }
}

template <class Kind>
struct PlainKeyMaps : testing::Test {
};
using PlainKinds = testing::Types<Numbers, Texts, LightTexts>;
TYPED_TEST_SUITE(PlainKeyMaps, PlainKinds);

TYPED_TEST(PlainKeyMaps, NoticeInAWalkThatTheyChange)
{
    typename TypeParam::Map map;
    using Key = decltype(TypeParam::key(0));
    const std::pair<const char*, std::function<void(const Key&)>> cases[] = {
        {"done", [&](const Key& key) { map.put(key, Reference<Item>(new Item(1)).get()); }},
        {"done", [&](const Key&) { map.remove(TypeParam::key(300)); }},
        {"plain", [&](const Key& key) { map.remove(Key(key)); }},
        {"plain", [&](const Key& key) { map.put(TypeParam::key(300 + TypeParam::numberOf(key)), nullptr); }},
        {"plain", [&](const Key&) { map.clear(); }},
    };
    for (const auto& [result, change] : cases) {
        for (std::uint32_t number = 1; number < 4; ++number)
            map.put(TypeParam::key(number), nullptr);
        const auto work = [&, change = change] { walk(map, [&](const Key& key, Object*) { change(key); }); };
        EXPECT_EQ(outcome(work), result) << &result - &cases->first;
    }
}

TYPED_TEST(PlainKeyMaps, DoWhatAnotherMapDoes)
{
    using Limits = std::numeric_limits<float>;
    Random random;
    for (const float load :
        {0.75F, 0.1F, 4.0F, 0.0F, -1.0F, 1e-30F, Limits::max(), Limits::infinity(), Limits::quiet_NaN()}) {
        typename TypeParam::Map map(random.below(4) - 2, load);
        std::map<std::uint32_t, Reference<Object>> model, entries;
        for (int i = 0; i < 3000; ++i) {
            const std::uint32_t number = random() % 200;
            const auto key = TypeParam::key(number);
            const Reference<Object> old = model.contains(number) ? model[number] : nullptr;
            const Reference<Object> value = random() % 8 != 0 ? new Item(i) : nullptr;
            ASSERT_EQ(map.get(key), old);
            if (random() % 2 == 0) {
                ASSERT_EQ(map.put(key, value.get()), old);
                model[number] = value;
            } else {
                ASSERT_EQ(map.remove(key), old);
                model.erase(number);
            }
            ASSERT_EQ(map.getSize(), static_cast<int>(model.size()));
        }
        walk(map, [&](const auto& key, Object* value) { entries.emplace(TypeParam::numberOf(key), value); });
        EXPECT_EQ(entries, model);
        if constexpr (requires { map.createKeySet(); })
            for (const auto& key : *map.createKeySet())
                EXPECT_EQ(entries.erase(TypeParam::numberOf(*key)), 1U);
        else
            entries.clear();
        EXPECT_TRUE(entries.empty());
        model.clear();
        map.clear();
        EXPECT_EQ(Item::s_alive, 0);
    }
}

TEST(IntegerHashMap, TakesNumbersBelow0ByTheirBits)
{
    IntegerHashMap map;
    for (const int key : {-1, 66, 68, std::numeric_limits<int>::min()}) // 4294967295 % 101 = 67, 2147483648 % 101 = 34
        map.put(key, nullptr);
    std::string keys;
    for (const auto [key, value] : map)
        keys += std::to_string(key) + ' ';
    EXPECT_EQ(keys, "-2147483648 66 -1 68 ");
}

/// A map shares the buffers of its keys. A second read lock of one thread would wait for ever if a writer waits meanwhile.
TEST(Maps, LockABufferOnceThatTheKeyAndTheWantedKeyShare)
{
    auto* buffer = new UserBuffer(collidingText(99));
    const Reference<String> key(new String(String::AcquireShare, buffer)), wanted(new String(*key));
    const Reference<HashMap> map(new HashMap(1, 1000));
    StringHashMap texts(1, 1000);
    const Reference<util::PropertySet> properties(new util::PropertySet);
    properties->set(*key, u"value");
    for (const bool isIndexed : {false, true}) {
        map->put(key->GetUnknown(), key->GetUnknown());
        texts.put(*key, key.get());
        for (std::uint32_t number = 0; isIndexed && number < 20; ++number) {
            map->put(Reference<Object>(new String(collidingText(number)))->GetUnknown(), nullptr);
            texts.put(String(collidingText(number)), nullptr);
        }
        EXPECT_EQ(map->get(wanted->GetUnknown()), key->GetUnknown());
        EXPECT_TRUE(texts.get(*wanted) == key.get() && texts.containsKey(*wanted));
        EXPECT_EQ(map->put(wanted->GetUnknown(), nullptr), key->GetUnknown());
        EXPECT_EQ(texts.put(*wanted, key.get()), key.get());
        EXPECT_TRUE(properties->hasProperty(*wanted));
        EXPECT_EQ(map->remove(wanted->GetUnknown()), nullptr);
        EXPECT_EQ(texts.remove(*wanted), key.get());
    }
    EXPECT_EQ(buffer->m_deepest, 1);
    EXPECT_TRUE(buffer->isUnlocked());
}

TEST(StringHashMap, TellsTextsByTheirUnits)
{
    std::u16string even(64, u'a'), odd(64, u'a');
    odd[1] = u'b'; // the hash looks at every second unit only
    const std::u16string texts[] = {u"", u"A", u"AB", u"Ab", {u"A\0", 2}, even, odd};
    StringHashMap map;
    for (const auto& text : texts)
        EXPECT_EQ(map.put(String(text), Reference<Object>(new String(text)).get()), nullptr);
    for (const auto& text : texts) {
        const int length = static_cast<int>(text.size());
        const Reference<Object> value = map.get(text.data(), length);
        EXPECT_TRUE(value != nullptr && value->toString() == text && value == map.get(String(text)));
        EXPECT_EQ(value == map.get(text.c_str()), text.find(u'\0') == std::u16string::npos);
    }
    map.put(u"null", nullptr);
    EXPECT_FALSE(map.containsKey(u"null") || map.containsKey(String(u"null")));
    StringHashMap::KeyAndValue first = *map.begin();
    EXPECT_EQ(map.remove(first.key)->toString(), u"") << "by the map's own copy";
}

TEST(Maps, GiveTheirEntriesToAlgorithmsThatTakeTwoIteratorsOfOneType)
{
    IntegerHashMap numbers;
    StringHashMap texts;
    for (int number = 0; number < 40; ++number) {
        numbers.put(number * 7, nullptr);
        texts.put(String::valueOf(number), nullptr);
    }
    const auto sum = [](int before, const auto& entry) { return before + entry.key; };
    EXPECT_EQ(std::accumulate(numbers.begin(), numbers.end(), 0, sum), 7 * 40 * 39 / 2);
    EXPECT_EQ((std::vector<StringHashMap::KeyAndValue>(texts.begin(), texts.end()).size()), 40U);
    const auto map = mapOf({1, 2, 3});
    const std::vector<HashMap::KeyAndValue> entries(map->begin(), map->end());
    EXPECT_EQ(entries.size(), 3U);
    HashMap::Walk walk = map->begin();
    EXPECT_EQ((*walk++).key, entries[0].key);
    EXPECT_EQ((*walk).key, entries[1].key);
}

} // namespace
} // namespace vx::collections
