#include "legacy/CVXByteBuffer.h"
#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/vx/collections/Elements.h"
#include "vx/NumberBoxes.h"
#include "vx/Result.h"
#include "vx/collections/StringHashMap.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/io/ByteBuffer.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"
#include "vx/net/QueryKey.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RegistryKey.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vx::collections {
namespace {

using vorb::HashMap;
using vorb::Iterator;

/// Counts how often texts are read through buffers of its kind.
struct ReadCounter : util::ROCharBuffer {
    explicit ReadCounter(const String& text)
        : ROCharBuffer(text.getData(), text.getLength() + 1)
        , m_text(text)
    {
    }
    const char16_t* getReadLock() const override { return ++s_reads, ROCharBuffer::getReadLock(); }

    static inline std::uint32_t s_reads = 0;
    String m_text; ///< keeps the units
};

/// Reads of their texts, through buffers of the program, tell how many keys a map has compared.
TEST(HashMaps, FindKeysThatShareTheirHashInLogarithmicTime)
{
    constexpr std::uint32_t KEYS = 3000, MOST_READS = 400;
    const Reference<HashMap> map(new HashMap), queries(new HashMap);
    StringHashMap texts;
    ReadCounter::s_reads = 0;
    for (std::uint32_t number = 0; number < KEYS; ++number) {
        const Reference<ReadCounter> buffer(new ReadCounter(String(collidingText(number))));
        const Reference<String> key(new String(String::AcquireShare, buffer.get())), query(new net::QueryKey(*key));
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
        ASSERT_LT(ReadCounter::s_reads, 2 * MOST_READS) << number;
    }
}

TEST(HashMap, FindsExactlyTheKeysOfItsOwnAmongMoreThatShareTheirHash)
{
    using Make = std::function<Reference<Object>(std::uint32_t)>;
    const auto block = []<class Buffer>(std::type_identity<Buffer>, std::uint32_t number, auto order) {
        const std::u16string text = collidingText(number);
        const Reference<Buffer> buffer(new Buffer(64U, order, false));
        for (unsigned int index = 0; index < text.size(); ++index)
            buffer->put(index, text[index]);
        return buffer;
    };
    const std::pair<const char*, Make> cases[] = {
        {"bytes", [&](auto number) { return block(std::type_identity<io::ByteBuffer>(), number, io::VX_ENDIAN_BIG); }},
        {"older bytes", [&](auto number) { return block(std::type_identity<CVXByteBuffer>(), number, CVX_ORDER_BIG); }},
        {"registry keys",
            [](auto number) { return new util::RegistryKey(VX_HKEY_USER, u"K" + String(collidingText(number))); }},
        {"query keys", [](auto number) { return new net::QueryKey(String(collidingText(number)) + u"Q"); }},
    };
    for (const auto& [name, key] : cases) {
        const Reference<HashMap> map(new HashMap(1, 1000));
        const auto valueAt = [&, &make = key](int number) {
            return textOf(map->get(make(static_cast<std::uint32_t>(number))->GetUnknown()));
        };
        for (std::uint32_t number = 0; number < 200; number += 2)
            map->put(key(number)->GetUnknown(), item(static_cast<int>(number)).get());
        for (int number = 0; number < 200; ++number)
            EXPECT_EQ(valueAt(number), textOf(number % 2 == 0 ? number : NO_ITEM)) << name;
        map->remove(key(100)->GetUnknown());
        EXPECT_EQ(valueAt(98) + valueAt(100) + valueAt(102), "98null102") << name;
        map->put(Reference<Object>(new String)->GetUnknown(), nullptr); // another class: no index any more
        EXPECT_EQ(valueAt(98), "98") << name;
    }
}

/// The comparator copies the other big number, so that allocations tell how many keys a map has compared.
TEST(HashMap, FindsBigNumbersThatShareTheirHashInLogarithmicTime)
{
    using math::BigInteger;
    constexpr int KEYS = 1000, MOST_ALLOCATIONS = 200;
    const auto high = [](int number, int ignored) {
        const Reference<BigInteger> key(new BigInteger(number));
        key->multiply(BigInteger(String(u"10000000000000000"), 16));
        key->setBit(ignored);
        key->clearBit(ignored);
        return key;
    };
    const std::pair<const char*, std::function<Reference<Number>(int)>> cases[] = {
        {"whole", [&](int number) { return high(number, 0); }},
        {"below 1", [](int number) { return Reference(new math::BigDecimal(BigInteger(number), number % 2 + 4)); }},
    };
    for (const auto& [name, key] : cases) {
        const Reference<HashMap> map(new HashMap);
        for (int number = 1; number < KEYS; number += 2)
            EXPECT_EQ(map->put(key(number)->GetUnknown(), item(number).get()), nullptr);
        for (int number = 1; number < KEYS; ++number) {
            const Reference<Number> wanted = key(number);
            const AllocationProbe probe;
            ASSERT_EQ(textOf(map->get(wanted->GetUnknown())), textOf(number % 2 != 0 ? number : NO_ITEM)) << name;
            ASSERT_LT(probe.count(), MOST_ALLOCATIONS) << name << ' ' << number;
        }
    }
    const Reference<HashMap> map(new HashMap);
    for (int number = 1; number < 100; ++number)
        map->put(high(number, 0)->GetUnknown(), item(number).get());
    EXPECT_EQ(textOf(map->get(high(50, 300)->GetUnknown())), "50") << "which has bytes of 0 at its top";
    map->put(high(100, 300)->GetUnknown(), nullptr);
    EXPECT_FALSE(map->containsKey(high(100, 0)->GetUnknown())) << "as the stored key has such bytes";
    EXPECT_EQ(textOf(map->remove(high(50, 300)->GetUnknown())), "50");
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
    int count = 0;
    for ([[maybe_unused]] const auto entry : *map)
        ++count;
    EXPECT_EQ(count, map->getSize());
    const Reference<Iterator> iterator = map->createEntrySet()->createIterator();
    for (; iterator->hasNext(); iterator->remove())
        iterator->next();
    EXPECT_EQ(map->getSize(), 0);
    for (const Reference<String>& key : keys)
        EXPECT_EQ(key->GetRefCount(), 1U);
}

} // namespace
} // namespace vx::collections
