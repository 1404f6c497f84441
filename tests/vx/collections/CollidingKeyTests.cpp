#include "legacy/CVXByteBuffer.h"
#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vx/collections/Elements.h"
#include "vx/NumberBoxes.h"
#include "vx/Str1HashMap.h"
#include "vx/collections/StringHashMap.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/io/ByteBuffer.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"
#include "vx/net/QueryKey.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RegistryKey.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vx::collections {
namespace {

using vorb::HashMap;

/// Counts how often texts are read through buffers of its kind. One of these reads can call code of the test.
struct ReadCounter : util::ROCharBuffer {
    explicit ReadCounter(const String& text)
        : ROCharBuffer(text.getData(), text.getLength() + 1)
        , m_text(text)
    {
    }
    const char16_t* getReadLock() const override
    {
        if (++s_reads == s_readOfWork && s_work != nullptr)
            std::exchange(s_work, nullptr)();
        return ROCharBuffer::getReadLock();
    }

    static inline std::uint32_t s_reads = 0;
    static inline std::uint32_t s_readOfWork = 0;
    static inline std::function<void()> s_work;
    String m_text; ///< keeps the units
};

Reference<String> countedKey(std::u16string_view text)
{
    const Reference<ReadCounter> buffer(new ReadCounter(String(text)));
    return new String(String::AcquireShare, buffer.get());
}

/// Reads of their texts, through buffers of the program, tell how many keys a map has compared.
TEST(HashMaps, FindKeysThatShareTheirHashInLogarithmicTime)
{
    constexpr std::uint32_t KEYS = 3000, MOST_READS = 100;
    const Reference<HashMap> map(new HashMap), queries(new HashMap);
    StringHashMap texts;
    ReadCounter::s_reads = 0;
    for (std::uint32_t number = 0; number < KEYS; ++number) {
        const Reference<String> key = countedKey(collidingText(number)), query(new net::QueryKey(*key));
        for (const bool isNew : {true, false}) {
            EXPECT_EQ(map->put(key->GetUnknown(), key->GetUnknown()) == nullptr, isNew);
            EXPECT_EQ(queries->put(query->GetUnknown(), key->GetUnknown()) == nullptr, isNew);
            EXPECT_EQ(texts.put(*key, key.get()) == nullptr, isNew);
        }
    }
    EXPECT_LT(ReadCounter::s_reads / KEYS, MOST_READS) << "with those of growth";
    for (std::uint32_t number = 0; number < KEYS; ++number) {
        const Reference<String> key(new String(collidingText(number * 7 % KEYS))), query(new net::QueryKey(*key));
        ReadCounter::s_reads = 0;
        ASSERT_EQ(map->get(key->GetUnknown()), texts.get(*key)->GetUnknown());
        ASSERT_EQ(map->remove(key->GetUnknown()), texts.remove(*key)->GetUnknown());
        ASSERT_NE(queries->remove(query->GetUnknown()), nullptr);
        ASSERT_TRUE(map->get(key->GetUnknown()) == nullptr && texts.get(*key) == nullptr);
        ASSERT_LT(ReadCounter::s_reads, MOST_READS) << number;
    }
}

/// A text of 64 units, of which the hash reads every second one.
std::u16string textOfHash(std::uint32_t hash, char16_t number)
{
    std::u16string text(64, u'\0');
    for (std::size_t place = text.size() - 2; hash != 0; place -= 2, hash /= 37)
        text[place] = static_cast<char16_t>(hash % 37);
    text[1] = number;
    return text;
}

/// The keys of a case have its hashes in turn. So long buckets stay together, meet other entries, or part when a map grows.
TEST(HashMaps, KeepTheOrderOfLongBucketsWhileTheyGrowAndShrink)
{
    using Chain = std::vector<std::uint32_t>;
    constexpr std::uint32_t KEYS = 900, HASH = 1000;
    const std::vector<std::uint32_t> cases[] = {{HASH}, {HASH, 5, HASH, 6, 7}, {HASH, HASH + 203, HASH + 407},
        {HASH, HASH % 101, HASH % 203, HASH % 407, 8}, {HASH, HASH + 2 * 203, 9, HASH + 407 * 815, HASH}};
    Random random;
    for (const auto& hashes : cases) {
        const Reference<HashMap> map(new HashMap);
        Str1HashMap<std::uint32_t> light;
        std::vector<Chain> buckets(HashMap::DEFAULT_CAPACITY);
        const auto hashOf = [&](std::uint32_t number) { return hashes[number % hashes.size()]; };
        const auto bucketOf = [&](std::uint32_t number) -> Chain& { return buckets[hashOf(number) % buckets.size()]; };
        const auto textAt
            = [&](std::uint32_t number) { return textOfHash(hashOf(number), static_cast<char16_t>(number)); };
        const auto joined = [](auto bucket, auto end) {
            Chain all;
            for (; bucket != end; ++bucket)
                all.insert(all.end(), bucket->begin(), bucket->end());
            return all;
        };
        std::uint32_t size = 0;
        for (std::uint32_t step = 0; step < 4 * KEYS; ++step) {
            const std::uint32_t number = step < KEYS ? step : random() % KEYS;
            const std::u16string text = textAt(number);
            const Reference<String> key(new String(text));
            const bool isThere = std::ranges::count(bucketOf(number), number) != 0;
            ASSERT_TRUE(map->containsKey(key->GetUnknown()) == isThere && light.containsKey(Str1(text)) == isThere);
            if (isThere && step < 3 * KEYS) {
                map->remove(key->GetUnknown());
                light.remove(Str1(text));
                std::erase(bucketOf(number), number);
                --size;
            } else if (!isThere && step % 8 != 0) {
                map->put(key->GetUnknown(), nullptr);
                light.put(Str1(text), number);
                if (size++ >= static_cast<std::uint32_t>(static_cast<float>(buckets.size()) * HashMap::DEFAULT_LOAD)) {
                    const Chain all = joined(buckets.rbegin(), buckets.rend());
                    buckets = std::vector<Chain>(2 * buckets.size() + 1);
                    for (const std::uint32_t each : all)
                        bucketOf(each).insert(bucketOf(each).begin(), each);
                }
                bucketOf(number).insert(bucketOf(number).begin(), number);
            }
            if (step % 100 != 0)
                continue;
            Chain numbers, lightNumbers;
            for (const auto entry : *map)
                numbers.push_back(dynamic_cast<const String&>(*entry.key).getCharAt(1));
            ASSERT_EQ(numbers, joined(buckets.rbegin(), buckets.rend()));
            Str1HashMap<std::uint32_t>::KeyValueIterator iterator;
            for (light.iteratorInit(iterator); light.iteratorHasNext(iterator);) {
                std::uint32_t* value = nullptr;
                light.iteratorNext(iterator, nullptr, &value);
                lightNumbers.push_back(*value);
            }
            ASSERT_EQ(lightNumbers, joined(buckets.begin(), buckets.end()));
        }
    }
}

/// When the map grows, the numbers become the first of the bucket of the texts. Their own bucket was the one before.
TEST(HashMap, AsksItsComparatorInALongBucketThatGotKeysOfAnotherClass)
{
    constexpr std::uint32_t HASH = 1000, NEIGHBOUR = HASH + 100 * 203, NUMBERS = 3;
    const Reference<HashMap> map(new HashMap);
    const auto number = [](std::uint32_t hash) { return Reference(new Integer32(static_cast<int>(hash))); };
    const auto neighbour = [&](std::uint32_t index) { return number(NEIGHBOUR + index * 101 * 203); };
    for (std::uint32_t index = 0; index < NUMBERS; ++index)
        map->put(neighbour(index)->GetUnknown(), nullptr);
    for (char16_t text = 0; text < 72; ++text)
        map->put(Reference<String>(new String(textOfHash(HASH, text)))->GetUnknown(), nullptr);
    for (const bool hasGrown : {false, true}) {
        EXPECT_EQ(outcome([&] { map->get(number(HASH)->GetUnknown()); }), "result " + std::to_string(RESULT_FAIL))
            << "as a text cannot be compared with it, " << hasGrown;
        for (std::uint32_t index = 0; index < NUMBERS; ++index)
            EXPECT_TRUE(map->containsKey(neighbour(index)->GetUnknown())) << hasGrown;
        map->put(number(5)->GetUnknown(), nullptr);
    }
}

/// The keys are those of two buckets that become one when the map grows. They have no letters with a case.
template <class Map, class KeyClass>
void expectChangesToBeNoticed()
{
    static constexpr std::uint32_t KEYS = 75, NEW = 100, READS = 30, HASHES[] = {1000, 1000 + 203};
    const auto keyOf = [](std::uint32_t number) -> Reference<String> {
        const Reference<String> key
            = countedKey(textOfHash(HASHES[number % 2], static_cast<char16_t>(0x4E00 + number)));
        return new KeyClass(*key);
    };
    const auto argument = [](const Reference<String>& key) -> decltype(auto) {
        if constexpr (std::same_as<Map, HashMap>)
            return key->GetUnknown();
        else
            return *key;
    };
    const auto put = [&](Map& map, std::uint32_t number) {
        const Reference<String> key = keyOf(number);
        if constexpr (std::same_as<Map, HashMap>)
            map.put(argument(key), key->GetUnknown());
        else
            map.put(argument(key), key.get());
    };
    const auto get = [&](Map& map, std::uint32_t number) { return map.get(argument(keyOf(number))) != nullptr; };
    const auto remove = [&](Map& map, std::uint32_t number) { map.remove(argument(keyOf(number))); };
    using Use = std::function<void(Map&)>;
    const std::tuple<const char*, Use, bool> uses[] = {{"get", [&](Map& map) { get(map, 7); }, true},
        {"remove", [&](Map& map) { remove(map, 7); }, true}, {"put", [&](Map& map) { put(map, KEYS); }, false}};
    const std::tuple<const char*, Use, std::function<bool(std::uint32_t)>> changes[] = {
        {"clear", [](Map& map) { map.clear(); }, [](std::uint32_t) { return false; }},
        {"remove",
            [&](Map& map) {
                for (std::uint32_t number = 0; number < KEYS; ++number)
                    if (number % 3 == 0)
                        remove(map, number);
            },
            [](std::uint32_t number) { return number % 3 != 0 && number < KEYS; }},
        {"put",
            [&](Map& map) {
                for (std::uint32_t number = NEW; number < NEW + KEYS; ++number)
                    put(map, number);
            },
            [](std::uint32_t number) { return number != KEYS; }},
    };
    int noticed = 0;
    for (const auto& [use, useMap, throwsAlways] : uses) {
        for (const auto& [change, changeMap, isLeft] : changes) {
            for (std::uint32_t read = 2; read < READS; ++read) { // the first one is for the hash
                const Reference<Map> map(new Map);
                for (std::uint32_t number = 0; number < KEYS; ++number)
                    put(*map, number);
                ReadCounter::s_reads = 0;
                ReadCounter::s_readOfWork = read;
                ReadCounter::s_work = [&, &changed = changeMap] { changed(*map); };
                bool isThrown = false;
                try {
                    useMap(*map);
                } catch (const Exception& failure) {
                    isThrown = typeid(failure) == typeid(Exception);
                }
                if (std::exchange(ReadCounter::s_work, nullptr) != nullptr)
                    break; // all its reads were tried
                noticed += static_cast<int>(isThrown);
                ASSERT_TRUE(isThrown || !throwsAlways) << use << ' ' << change << ' ' << read;
                int size = 0;
                for (std::uint32_t number = 0; number < NEW + KEYS; number += number == KEYS ? NEW - KEYS : 1) {
                    const bool isAdded = !isThrown && number == KEYS && std::string_view(change) != "clear";
                    size += static_cast<int>(isLeft(number) || isAdded);
                    ASSERT_EQ(get(*map, number), isLeft(number) || isAdded)
                        << use << ' ' << change << ' ' << read << ' ' << number;
                }
                ASSERT_EQ(map->getSize(), size);
            }
        }
    }
    EXPECT_GT(noticed, 30);
}

TEST(HashMaps, ThrowWhenTheReadOfAKeyInALongBucketChangesThem)
{
    expectChangesToBeNoticed<HashMap, String>();
    expectChangesToBeNoticed<HashMap, net::QueryKey>();
    expectChangesToBeNoticed<StringHashMap, String>();
}

/// The twin has a comparator of the test, so that it has no index. All keys share a bucket, the texts also their hash.
TEST(HashMap, FindsTextsInLogarithmicTimeThoughOthersShareTheirBucket)
{
    using Keys = std::vector<Reference<IVXUnknown>>;
    constexpr std::uint32_t TEXTS = 600, MOST_READS = 60;
    const auto number = [](int value) { return Reference((new Integer32(value))->GetUnknown()); };
    const Keys null = {nullptr}, mixed = {number(101), nullptr, item(202), number(303), item(404), number(505)};
    const Keys equalHash = {(new Integer64(0LL))->GetUnknown()}, refused = {item(0)};
    for (const auto& [others, isFast] : {std::pair(null, true), {mixed, true}, {equalHash, false}, {refused, false}}) {
        const Reference<WatchedComparator> watched(new WatchedComparator);
        watched->m_calls = -1;
        const Reference<HashMap> map(new HashMap(101, 100)), twin(new HashMap(watched.get(), watched.get(), 101, 100));
        Keys keys;
        for (std::uint32_t text = 0; text < TEXTS; ++text) {
            if (text % (TEXTS / 4) == 5 && text / (TEXTS / 4) < 3) // before there is an index, and twice later
                for (std::size_t at = text / (TEXTS / 4); at < others.size(); at += 3)
                    keys.push_back(others[at]);
            keys.emplace_back(countedKey(textOfHash(0, static_cast<char16_t>(text + 1)))->GetUnknown());
        }
        Random random;
        const auto use = [&](HashMap& used, int what, IVXUnknown* key) -> std::string {
            try {
                const auto result = what == 0 ? used.put(key, key) : what == 1 ? used.get(key) : used.remove(key);
                return result == nullptr ? "null" : result == key ? "key" : "other";
            } catch (const ResultException& failure) {
                return std::to_string(failure.getResult());
            }
        };
        for (std::size_t step = 0; step < 4 * keys.size(); ++step) {
            IVXUnknown* const key
                = keys[step < keys.size() ? step : static_cast<std::size_t>(random()) % keys.size()].get();
            const int what = step < keys.size() ? 0 : random.below(3);
            ReadCounter::s_reads = 0;
            const std::string result = use(*map, what, key);
            ASSERT_TRUE(!isFast || dynamic_cast<String*>(key) == nullptr || ReadCounter::s_reads < MOST_READS)
                << ReadCounter::s_reads << " reads in step " << step;
            ASSERT_EQ(result, use(*twin, what, key)) << step;
        }
        ASSERT_EQ(map->getSize(), twin->getSize());
        for (auto left = map->begin(), right = twin->begin(); left != map->end(); ++left, ++right)
            ASSERT_TRUE((*left).key == (*right).key && (*left).value == (*right).value);
    }
}

TEST(Str1HashMap, KeepsNoIndexOfABucketThatBecameShort)
{
    Str1HashMap<int> map(101, 1000);
    map.put(Str1(collidingText(0)), 0);
    const long live = AllocationProbe::live();
    for (std::uint32_t number = 1; number < 1000; ++number)
        map.put(Str1(collidingText(number)), 1);
    for (std::uint32_t number = 1; number < 1000; ++number)
        map.remove(Str1(collidingText(number)));
    EXPECT_TRUE(map.containsKey(Str1(collidingText(0))));
    EXPECT_EQ(AllocationProbe::live(), live);
}

math::BigInteger bigKey(int number, int ignored)
{
    math::BigInteger key(number);
    key.multiply(math::BigInteger(String(u"10000000000000000"), 16));
    key.setBit(ignored);
    key.clearBit(ignored);
    return key;
}

/// The comparator copies the other big number, so that allocations tell how many keys a map has compared.
TEST(HashMap, FindsExactlyTheKeysOfItsOwnAmongMoreThatShareTheirHash)
{
    using Make = std::function<Reference<Object>(int)>;
    constexpr int KEYS = 1000, MOST_ALLOCATIONS = 200;
    const auto textOfKey = [](int number) { return collidingText(static_cast<std::uint32_t>(number)); };
    const auto block = [&]<class Buffer>(std::type_identity<Buffer>, int number, auto order) {
        const std::u16string text = textOfKey(number);
        const Reference<Buffer> buffer(new Buffer(64U, order, false));
        for (unsigned int index = 0; index < text.size(); ++index)
            buffer->put(index, text[index]);
        return buffer;
    };
    const std::tuple<const char*, Make, bool> cases[] = {
        {"bytes", [&](int n) { return block(std::type_identity<io::ByteBuffer>(), n, io::VX_ENDIAN_BIG); }, false},
        {"older bytes", [&](int n) { return block(std::type_identity<CVXByteBuffer>(), n, CVX_ORDER_BIG); }, false},
        {"registry keys", [&](int n) { return new util::RegistryKey(VX_HKEY_USER, u"K" + String(textOfKey(n))); },
            false},
        {"query keys", [&](int n) { return new net::QueryKey(String(textOfKey(n)) + u"Q"); }, false},
        {"whole numbers", [](int n) { return new math::BigInteger(bigKey(n, 0)); }, true},
        {"numbers below 1", [](int n) { return new math::BigDecimal(math::BigInteger(n), n % 2 + 4); }, true},
    };
    for (const auto& [name, key, isCounted] : cases) {
        const Reference<HashMap> map(new HashMap(1, 1000));
        const auto valueAt = [&, &make = key](int number) {
            const Reference<Object> wanted = make(number);
            return textOf(map->get(wanted->GetUnknown()));
        };
        for (int number = 1; number < KEYS; number += 2)
            map->put(key(number)->GetUnknown(), item(number).get());
        for (int number = 1; number < KEYS; ++number) {
            const Reference<Object> wanted = key(number);
            const AllocationProbe probe;
            ASSERT_EQ(textOf(map->get(wanted->GetUnknown())), textOf(number % 2 != 0 ? number : NO_ITEM)) << name;
            ASSERT_TRUE(!isCounted || probe.count() < MOST_ALLOCATIONS) << name << ' ' << number;
        }
        map->remove(key(101)->GetUnknown());
        EXPECT_EQ(valueAt(99) + valueAt(101) + valueAt(103), "99null103") << name;
        if (!isCounted) { // another class
            map->put(Reference<Object>(new String)->GetUnknown(), nullptr);
            EXPECT_EQ(valueAt(99), "99") << name;
        }
    }
}

TEST(HashMap, FindsBigNumbersWithBytesOf0AtTheirTop)
{
    const auto key = [](int number, int ignored) { return Reference(new math::BigInteger(bigKey(number, ignored))); };
    const Reference<HashMap> map(new HashMap);
    for (int number = 1; number < 100; ++number)
        map->put(key(number, 0)->GetUnknown(), item(number).get());
    EXPECT_EQ(textOf(map->get(key(50, 300)->GetUnknown())), "50");
    map->put(key(100, 300)->GetUnknown(), nullptr);
    EXPECT_FALSE(map->containsKey(key(100, 0)->GetUnknown())) << "as the stored key has such bytes";
    EXPECT_EQ(textOf(map->remove(key(50, 300)->GetUnknown())), "50");
}

/// The library's own comparator finds only numbers of other kinds equal across classes, and a NaN to nothing.
TEST(HashMap, TakesNumbersAndOthersThatShareABucket)
{
    const Reference<HashMap> map(new HashMap(1, 1000));
    const auto key = [](double value) { return Reference<Double>(new Double(value)); };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (int number = 0; number < 50; ++number)
        EXPECT_EQ(map->put(key(number / 50.0)->GetUnknown(), key(number)->GetUnknown()), nullptr);
    const auto valueAt = [&](const auto& at) { return dynamic_cast<Number&>(*map->get(at->GetUnknown())).toLong(); };
    EXPECT_EQ(valueAt(key(-0.0)), 0);
    EXPECT_EQ(valueAt(key(0.98)), 49);
    EXPECT_EQ(map->put(key(nan)->GetUnknown(), nullptr), nullptr);
    EXPECT_EQ(map->put(key(nan)->GetUnknown(), nullptr), nullptr);
    EXPECT_FALSE(map->containsKey(key(nan)->GetUnknown()));
    EXPECT_EQ(map->getSize(), 52);
    EXPECT_EQ(valueAt(Reference<Float>(new Float(0.5F))), 25) << "converted to a Double first";
    EXPECT_EQ(outcome([&] { map->get(Reference<String>(new String)->GetUnknown()); }),
        "result " + std::to_string(RESULT_FAIL))
        << "as the first number says that a text cannot be compared with it";
    map->put(nullptr, key(7)->GetUnknown());
    EXPECT_EQ(valueAt(key(0.98)), 49);
    EXPECT_NE(map->get(nullptr), nullptr);
    EXPECT_NE(map->remove(key(0.5)->GetUnknown()), nullptr);
    EXPECT_FALSE(map->containsKey(key(0.5)->GetUnknown()));
    map->createKeySet()->clear();
    EXPECT_EQ(map->getSize(), 0);
}

TEST(HashMap, StaysWholeThoughKeysInALongBucketAreChanged)
{
    Random random;
    const Reference<HashMap> map(new HashMap(3, 100));
    std::vector<Reference<String>> keys;
    for (std::uint32_t number = 0; number < 60; ++number) {
        keys.emplace_back(new String(collidingText(number)));
        map->put(keys.back()->GetUnknown(), nullptr);
    }
    for (int step = 0; step < 2000; ++step) {
        const Reference<String>& key = keys[random() % keys.size()];
        const int what = random.below(3);
        if (what == 0)
            key->setCharAt(1, static_cast<char16_t>(random.below(0x80)));
        else if (what == 1)
            map->put(key->GetUnknown(), nullptr);
        else
            map->remove(key->GetUnknown());
    }
    const int size = map->getSize();
    int count = 0;
    for (const auto iterator = map->createEntrySet()->createIterator(); iterator->hasNext(); ++count) {
        iterator->next();
        iterator->remove();
    }
    EXPECT_TRUE(count == size && map->getSize() == 0) << count << " of " << size;
    for (const Reference<String>& key : keys)
        EXPECT_EQ(key->GetRefCount(), 1U);
}

} // namespace
} // namespace vx::collections
