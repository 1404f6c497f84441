#include "tests/AllocationProbe.h"
#include "tests/Slots.h"
#include "tests/vx/collections/Elements.h"
#include "vx/Class.h"
#include "vx/NumberBoxes.h"
#include "vx/Result.h"
#include "vx/collections/DefaultComparator.h"
#include "vx/collections/IntegerHashMap.h"
#include "vx/collections/Set.h"
#include "vx/collections/StringHashMap.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/HashMapIterator.h"
#include "vx/collections/vorb/HashSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace vx::collections {
namespace {

using vorb::ArrayList;
using vorb::HashMap;
using vorb::HashMapIterator;
using vorb::HashSet;
using vorb::Iterator;
using vorb::MapEntry;

std::string keysOf(const HashMap& map)
{
    std::string text;
    for (const auto [key, value] : map)
        text += textOf(valueOf(key)) + ' ';
    return text;
}

void put(HashMap& map, std::initializer_list<int> keys)
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

/// Here a key is its own hash, so that the order tells the capacity: the last bucket comes first.
TEST(HashMap, GrowsBeforeTheNewEntryThatFindsItFull)
{
    struct {
        int capacity;
        float load;
        std::initializer_list<int> keys;
        const char* order;
        int next;
        const char* grown;
    } cases[] = {
        {1, 0.75F, {1, 3}, "1 3 ", 5, "5 3 1 "}, // 1, 3, 7: the first entry already finds it full
        {4, 2.0F, {1, 2, 3, 4, 5, 6, 7, 8}, "7 3 6 2 5 1 8 4 ", 9, "8 7 6 5 4 3 2 1 9 "},
        {10, 0.7F, {1, 2, 3, 4, 5, 10}, "5 4 3 2 1 10 ", 6, "10 6 5 4 3 2 1 "}, // the product as a float would be 7
        {0, 0.75F, {1, 3}, "1 3 ", 5, "5 3 1 "},
        {3, -1.0F, {1, 3}, "1 3 ", 5, "5 3 1 "},
        {3, std::numeric_limits<float>::quiet_NaN(), {1, 3}, "1 3 ", 5, "5 3 1 "},
        {3, std::numeric_limits<float>::infinity(), {1, 3, 6, 9}, "1 9 6 3 ", 5, "5 1 9 6 3 "},
    };
    for (const auto& row : cases) {
        const Reference<HashMap> map(new HashMap(row.capacity, row.load));
        put(*map, row.keys);
        EXPECT_EQ(keysOf(*map), row.order);
        put(*map, {*row.keys.begin()});
        EXPECT_EQ(keysOf(*map), row.order) << "nothing new";
        put(*map, {row.next});
        EXPECT_EQ(keysOf(*map), row.grown);
    }

    const Reference<Object> created((Class::forName(u"CVXHashMap"))->createInstance());
    auto& map = dynamic_cast<HashMap&>(*created);
    for (int key = 1; key < 75; ++key)
        put(map, {key});
    put(map, {101}); // bucket 0 of 101, bucket 101 of 203
    EXPECT_EQ(valueOf((*map.begin()).key), 74);
    put(map, {75});
    EXPECT_EQ(valueOf((*map.begin()).key), 101);
}

TEST(HashMap, TakesItsCapacityFromTheMapThatItIsFilledFrom)
{
    const Reference<HashMap> five = mapOf({1, 2, 3, 4, 11}), six = mapOf({1, 2, 3, 4, 5, 12});
    const auto keysOfNew = [](HashMap* map) { return keysOf(*Reference<HashMap>(map)); };
    EXPECT_EQ(keysOfNew(new HashMap(*five, 0.75F)), "4 3 2 1 11 ") << "11 buckets";
    EXPECT_EQ(keysOfNew(new HashMap(*six, 0.75F)), "5 4 3 2 1 12 ") << "12 buckets";
    EXPECT_EQ(keysOfNew(new HashMap(*six)), "12 5 4 3 2 1 ") << "101 buckets";
    EXPECT_EQ(HashMap::calcCapacity(std::numeric_limits<int>::max()), std::numeric_limits<int>::max());
}

TEST(HashMap, HoldsNullsAndWhatCannotBeCompared)
{
    class Opaque : public ComObject { };
    const Reference<ComObject> opaque(new Opaque);
    const Reference<HashMap> map(new HashMap);
    EXPECT_EQ(map->put(nullptr, nullptr), nullptr);
    EXPECT_TRUE(map->containsKey(nullptr) && map->containsValue(nullptr) && map->get(nullptr) == nullptr);
    EXPECT_EQ(textOf(map->put(nullptr, item(1).get())), "null");
    EXPECT_EQ(textOf(map->remove(nullptr)), "1");
    EXPECT_FALSE(map->containsKey(nullptr));

    // It hashes to 0 and counts as null where it is stored, as something else where it is looked for.
    map->put(opaque->GetUnknown(), item(2).get());
    map->put(opaque->GetUnknown(), item(3).get());
    EXPECT_EQ(map->getSize(), 2);
    EXPECT_FALSE(map->containsKey(opaque->GetUnknown()));
    EXPECT_EQ(textOf(map->get(nullptr)), "3");

    const Reference<IVXUnknown> empty((new String)->GetUnknown()), zero((new String(u'\0'))->GetUnknown());
    map->put(empty.get(), nullptr); // both hash to 0
    EXPECT_FALSE(map->containsKey(zero.get()));
}

/// The keys share a bucket, and 7 is at its head.
TEST(HashMap, PassesOnWhatItsComparatorDoesInMidSearch)
{
    const Reference<WatchedComparator> comparator(new WatchedComparator);
    const Reference<HashMap> map(new HashMap(comparator.get(), comparator.get(), 3, 10));
    put(*map, {1, 4, 7});
    const Reference<IVXUnknown> four = item(4), fresh = item(5);
    const Reference<vorb::Set> entries = map->createEntrySet(), keys = map->createKeySet();
    const Reference<Iterator> iterator = entries->createIterator();
    const Reference<IVXUnknown> entry = iterator->next();
    struct {
        const char* operation;
        int calls;
        std::function<void()> work;
    } cases[] = {
        {"put, hash", 0, [&] { map->put(fresh.get(), fresh.get()); }},
        {"put, equality", 1, [&] { map->put(four.get(), fresh.get()); }},
        {"get", 1, [&] { map->get(four.get()); }},
        {"remove", 1, [&] { map->remove(four.get()); }},
        {"containsValue", 1, [&] { map->containsValue(item(40).get()); }},
        {"entry set, key", 1, [&] { entries->contains(entry.get()); }},
        {"entry set, value", 2, [&] { entries->contains(entry.get()); }},
        {"key set", 0, [&] { keys->remove(four.get()); }},
        {"equals", 0,
            [&] {
                map->equals(*mapOf({1, 4, 7}));
            }},
    };
    for (const auto& row : cases) {
        comparator->m_calls = row.calls;
        EXPECT_EQ(outcome(row.work), "result " + std::to_string(RESULT_TIMED_OUT)) << row.operation;
        comparator->m_calls = 1000;
        EXPECT_EQ(keysOf(*map), "7 4 1 ") << row.operation;
        EXPECT_EQ(dynamic_cast<ComObject&>(*fresh).GetRefCount(), 1U) << row.operation;
    }
    EXPECT_EQ(textOf(MapEntry::of(iterator->next())->getKey()), "4") << "no iterator was disturbed";

    comparator->m_failure = [&] {
        map->clear();
        return RESULT_OK;
    };
    for (const auto& row : cases) {
        put(*map, {1, 4, 7});
        comparator->m_calls = row.calls;
        if (row.calls == 0)
            continue;
        EXPECT_EQ(outcome(row.work), "plain") << row.operation << " meets a change of the map";
        EXPECT_EQ(map->getSize(), 0) << row.operation;
    }
}

TEST(HashMap, IsWholeWhenAnElementThatGoesLooksAtIt)
{
    const Reference<HashMap> map(new HashMap(1, 10));
    std::string seen;
    const auto fill = [&] {
        map->put((new Looking([&] {
            seen += std::to_string(map->getSize()) + ": " + keysOf(*map);
            put(*map, {6});
        }))->GetUnknown(),
            nullptr);
    };
    put(*map, {1});
    fill();
    const Reference<Iterator> iterator = map->createKeySet()->createIterator();
    iterator->next();
    iterator->remove();
    EXPECT_EQ(outcome([&] { iterator->next(); }), "plain") << "the key put another one in";
    fill();
    map->clear();
    EXPECT_EQ(seen + keysOf(*map), "1: 1 0: 6 ");
}

TEST(HashMaps, StandAsBeforeWhereverAnAllocationFails)
{
    const Reference<HashMap> map(new HashMap(3, 1)), full(new HashMap(1, 3));
    const Reference<HashSet> set(new HashSet);
    const Reference<IntegerHashMap> numbers(new IntegerHashMap(1, 2));
    const Reference<StringHashMap> texts(new StringHashMap(1, 2));
    put(*map, {1, 2});
    put(*full, {1, 2, 3});
    for (int key = 1; key < 3; ++key) {
        numbers->put(key, nullptr);
        texts->put(String::valueOf(key), nullptr);
    }
    const Reference<IVXUnknown> one = item(1), four = item(4);
    const Reference<Item> value(new Item(7));
    const String three(u"3");
    const auto entries = map->createEntrySet();
    const Reference<Iterator> iterator = entries->createIterator();
    Reference<IVXUnknown> entry;
    struct {
        const char* operation;
        std::function<void()> work;
    } cases[] = {
        {"entry", [&] { entry = iterator->next(); }},
        {"iterator", [&] { entries->createIterator(); }},
        {"keys", [&] { texts->createKeySet(); }},
        {"put", [&] { map->put(four.get(), value->GetUnknown()); }},
        {"put into a full map", [&] { full->put(four.get(), value->GetUnknown()); }},
        {"set", [&] { set->add(four.get()); }},
        {"numbers", [&] { numbers->put(3, value.get()); }},
        {"texts", [&] { texts->put(three, value.get()); }},
    };
    const auto all = [&] {
        return keysOf(*map) + keysOf(*full) + textOfAll(*set) + std::to_string(numbers->getSize() + texts->getSize())
            + ", held by " + std::to_string(value->GetRefCount());
    };
    for (const auto& row : cases) {
        const std::string before = all();
        Reference<Iterator> undisturbed = entries->createIterator();
        const auto check = [&](int failing) {
            EXPECT_EQ(all(), before) << row.operation << failing;
            EXPECT_EQ(outcome([&] { undisturbed->next(); }), "done") << row.operation << failing;
            undisturbed = entries->createIterator();
        };
        EXPECT_NE(failEachAllocation(row.work, check), 0) << row.operation;
    }
    EXPECT_EQ(textOf(MapEntry::of(entry)->getKey()), "2") << "the iterator went on";

    const AllocationProbe probe;
    map->put(one.get(), value->GetUnknown()); // a new value for a key that is there
    map->remove(one.get());
    full->clear();
    EXPECT_EQ(probe.count(), 0);
}

TEST(HashMap, ShowsItsEntriesWhichAllLookAlike)
{
    const Reference<HashMap> map = mapOf({1, 2}), other = mapOf({1});
    const auto entries = map->createEntrySet();
    const Reference<Iterator> iterator = entries->createIterator();
    const Reference<IVXUnknown> two = iterator->next();
    const Reference<MapEntry> entry = MapEntry::of(two);
    EXPECT_EQ(two, entries->createIterator()->next()) << "one object for each entry";
    EXPECT_EQ(dynamic_cast<ComObject&>(*two).GetRefCount(), 3U) << "the map, and two references";
    EXPECT_EQ(entry->compareTo(*map), 0);
    EXPECT_TRUE(entry->equals(*map));
    EXPECT_EQ(entry->hashCode() + map->hashCode(), 0U);

    EXPECT_TRUE(entries->contains(two.get()));
    EXPECT_FALSE(other->createEntrySet()->contains(two.get()));
    EXPECT_EQ(outcome([&] { entries->contains(item(1).get()); }), "cast");
    EXPECT_EQ(outcome([&] { entries->add(two.get()); }), "unsupported");
    EXPECT_EQ(outcome([&] { map->createKeySet()->add(item(1).get()); }), "unsupported");
    EXPECT_FALSE(entries->remove(two.get())) << "an entry is not comparable";
    EXPECT_TRUE(entries->remove(nullptr)) << "and equals null therefore";
    EXPECT_EQ(outcome([&] {
        for (const auto [key, value] : *map)
            map->remove(key);
    }),
        "plain");
    EXPECT_EQ(textOf(entry->setValue(item(5).get())), "20");
    EXPECT_EQ(textOf(entry->getValue()), "5") << "an entry outlives its place in the map";
    EXPECT_FALSE(entries->equals(*dynamic_cast<Object*>(map->createEntrySet().get()))) << "views are told by address";
}

TEST(HashSet, ComparesAsItsMapDoes)
{
    const Reference<IVXComparator> comparator(new WatchedComparator);
    const Reference<ArrayList> list(new ArrayList);
    for (const int value : {7, 12, 107, 12})
        list->add(item(value).get());
    const Reference<HashSet> set(new HashSet(*list)), other(new HashSet(*list, comparator.get()));
    EXPECT_EQ(textOfAll(*set), "12 7 107 ");
    const Reference<HashSet> copy(new HashSet(*other));
    EXPECT_EQ(copy->getComparator(), comparator);
    EXPECT_TRUE(copy->equals(*set));
    copy->add(item(1).get());
    EXPECT_EQ(set->compareTo(*copy), -1) << "by size";
    EXPECT_EQ(copy->compareTo(*set), -1) << "by what is missing, which is null";
    EXPECT_EQ(outcome([&] { set->equals(*list); }), "cast");
    EXPECT_EQ(set->hashCode(), 0U);
}

/// Multiples of the grown capacity spread over the smaller table and meet in one bucket when it grows.
TEST(HashMap, GoesWithoutRecursionHoweverLongAChainIs)
{
    constexpr int KEYS = 200'000, CAPACITY = 10'000;
    static_assert((2LL * CAPACITY + 1) * KEYS < 0xFFFFFFFFLL);
    Reference<HashMap> map(new HashMap(CAPACITY, static_cast<float>(KEYS) / CAPACITY));
    const int alive = Item::s_alive;
    for (int number = 0; number <= KEYS; ++number)
        map->put(item(static_cast<int>(number * (2U * CAPACITY + 1))).get(), nullptr);
    EXPECT_EQ(Item::s_alive, alive + KEYS + 1);
    EXPECT_EQ(valueOf((*map->begin()).key), static_cast<int>(KEYS * (2U * CAPACITY + 1))) << "the newest of one chain";
    map = nullptr;
    EXPECT_EQ(Item::s_alive, alive);
}

TEST(HashMap, GivesTheSameEntryToReadersAtTheSameTime)
{
    for (int round = 0; round < 20; ++round) {
        const Reference<HashMap> map = mapOf({1, 2, 3, 4, 5, 6, 7, 8});
        std::vector<Reference<IVXUnknown>> seen[2];
        std::vector<std::thread> readers;
        for (auto& entries : seen)
            readers.emplace_back([&map, &entries] {
                const auto iterator = std::as_const(*map).createEntrySet()->createConstIterator();
                while (iterator->hasNext()) {
                    entries.push_back(iterator->next());
                    EXPECT_EQ(textOf(map->get(MapEntry::of(entries.back())->getKey().get())),
                        textOf(MapEntry::of(entries.back())->getValue()));
                }
            });
        for (std::thread& reader : readers)
            reader.join();
        EXPECT_EQ(seen[0], seen[1]);
        EXPECT_EQ(seen[0].size(), 8U);
    }
}

TEST(PlainKeyMaps, KeepTheOrderOfTheirOperations)
{
    using ByText = Reference<Object> (StringHashMap::*)(const char16_t*, int) const;
    using ByString = Reference<Object> (StringHashMap::*)(const String&) const;
    using HasText = bool (StringHashMap::*)(const char16_t*, int) const;
    using HasString = bool (StringHashMap::*)(const String&) const;
    expectSlots("IntegerHashMap", slotOf(&Object::toString) + 1,
        {slotOf(&IntegerHashMap::clear), slotOf(&IntegerHashMap::get), slotOf(&IntegerHashMap::getSize),
            slotOf(&IntegerHashMap::isEmpty), slotOf(&IntegerHashMap::put), slotOf(&IntegerHashMap::remove),
            slotOf(&IntegerHashMap::createKeySet)});
    expectSlots("StringHashMap", slotOf(&Object::toString) + 1,
        {slotOf(&StringHashMap::clear), slotOf<ByText>(&StringHashMap::get), slotOf<ByString>(&StringHashMap::get),
            slotOf(&StringHashMap::getSize), slotOf<HasText>(&StringHashMap::containsKey),
            slotOf<HasString>(&StringHashMap::containsKey), slotOf(&StringHashMap::isEmpty),
            slotOf(&StringHashMap::put), slotOf(&StringHashMap::remove), slotOf(&StringHashMap::createKeySet)});
    StringHashMap map;
    map.put(u"k", Reference<Item>(new Item(1)).get());
    EXPECT_TRUE((callSlot<bool, const char16_t*, int>(&map, slotOf<HasText>(&StringHashMap::containsKey), u"key", 1)));
}

int numberOf(int key)
{
    return key;
}
/// The hash of a text of one unit.
int numberOf(const String& key)
{
    return key[0];
}

/// A map with keys that hash to a number.
template <class Map>
struct PlainKeyMaps : testing::Test {
    using Key = std::conditional_t<std::is_same_v<Map, IntegerHashMap>, int, String>;

    static Key key(int number)
    {
        if constexpr (std::is_same_v<Key, int>)
            return number;
        else
            return String(static_cast<char16_t>(number));
    }
    static std::string keysOf(const Map& map)
    {
        std::string text;
        for (const auto [key, value] : map)
            text += std::to_string(numberOf(key)) + ' ';
        return text;
    }
};

using PlainKeyMapTypes = testing::Types<IntegerHashMap, StringHashMap>;
TYPED_TEST_SUITE(PlainKeyMaps, PlainKeyMapTypes);

TYPED_TEST(PlainKeyMaps, GrowAsHashMapDoesAndGoThroughTheirBucketsUpwards)
{
    const auto put = [](TypeParam& map, std::initializer_list<int> numbers) {
        for (const int number : numbers)
            map.put(TestFixture::key(number), nullptr);
    };
    TypeParam map;
    for (int number = 1; number < 75; ++number)
        put(map, {number});
    put(map, {202}); // bucket 0 of 101
    EXPECT_EQ(this->keysOf(map).substr(0, 8), "202 1 2 ");
    put(map, {202});
    EXPECT_EQ(this->keysOf(map).substr(0, 8), "202 1 2 ") << "nothing new";
    put(map, {75}); // bucket 202 of 203
    EXPECT_EQ(this->keysOf(map).substr(0, 6), "1 2 3 ");
    map.clear();
    EXPECT_TRUE(map.isEmpty());
    put(map, {202, 406, 609, 203});
    EXPECT_EQ(this->keysOf(map), "203 609 406 202 ") << "203 buckets still, the newest first in each";

    TypeParam small(1, 3);
    put(small, {101, 1, 202});
    EXPECT_EQ(this->keysOf(small), "202 1 101 ");
    const auto keys = small.createKeySet();
    put(small, {5});
    std::string text;
    for (const auto& key : *keys)
        text += std::to_string(numberOf(*key)) + ' ';
    EXPECT_EQ(text, "1 101 202 ") << "those of its time, in the order of a set that is filled in their order";
}

TYPED_TEST(PlainKeyMaps, DoWhatAnotherMapDoes)
{
    std::mt19937 random(std::random_device {}());
    for (const float load : {0.75F, 0.1F, 4.0F}) {
        TypeParam map(1, load);
        std::map<int, Reference<Object>> model;
        for (int i = 0; i < 3000; ++i) {
            const int number = 1 + static_cast<int>(random() % 200);
            const auto found = model.find(number);
            const Reference<Object> old = found != model.end() ? found->second : nullptr;
            const Reference<Object> value = random() % 8 != 0 ? new Item(number) : nullptr;
            ASSERT_EQ(map.get(this->key(number)), old);
            if (random() % 2 == 0) {
                ASSERT_EQ(map.put(this->key(number), value.get()), old);
                model[number] = value;
            } else {
                ASSERT_EQ(map.remove(this->key(number)), old);
                model.erase(number);
            }
            ASSERT_EQ(map.getSize(), static_cast<int>(model.size()));
        }
        std::map<int, Reference<Object>> entries;
        for (const auto [key, value] : map)
            entries.emplace(numberOf(key), value);
        EXPECT_EQ(entries, model);
        entries.clear();
        model.clear();
        EXPECT_NE(Item::s_alive, 0);
        map.clear();
        EXPECT_EQ(Item::s_alive, 0);
    }
}

TEST(IntegerHashMap, TakesNumbersBelow0ByTheirBits)
{
    IntegerHashMap map;
    for (const int key : {-1, 66, 68, std::numeric_limits<int>::min()}) // 4294967295 % 101 = 67, 2147483648 % 101 = 34
        map.put(key, nullptr);
    EXPECT_EQ(PlainKeyMaps<IntegerHashMap>::keysOf(map), "-2147483648 66 -1 68 ");
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
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(value->toString(), text);
        EXPECT_EQ(value, map.get(String(text)));
        EXPECT_EQ(value == map.get(text.c_str()), text.find(u'\0') == std::u16string::npos);
        EXPECT_TRUE(map.containsKey(text.data(), length) && map.containsKey(String(text)));
    }

    map.put(u"null", nullptr);
    EXPECT_EQ(map.getSize(), static_cast<int>(std::size(texts)) + 1);
    EXPECT_FALSE(map.containsKey(u"null") || map.containsKey(String(u"null")));
    String changing(u"before");
    map.put(changing, Reference<Object>(new Object).get());
    changing += u" and behind";
    EXPECT_TRUE(map.containsKey(u"before") && !map.containsKey(changing)) << "the key is a copy";
    StringHashMap::KeyAndValue first = *map.begin();
    EXPECT_EQ(map.remove(first.key)->toString(), u"") << "by the map's own copy";
}

} // namespace
} // namespace vx::collections
