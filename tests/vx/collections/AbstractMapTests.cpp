#include "tests/vx/collections/Elements.h"
#include "tests/vx/collections/SmallMap.h"
#include "vx/collections/vorb/ArrayList.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vx::collections::vorb {
namespace {

using Pairs = std::vector<std::pair<int, int>>;

Reference<SmallMap> mapOf(const Pairs& pairs)
{
    Reference<SmallMap> map(new SmallMap);
    for (const auto& [key, value] : pairs)
        map->append(item(key).get(), item(value).get());
    return map;
}

std::string textOfEntries(const Map& map)
{
    std::string text;
    for (const auto& entry : map)
        text += textOf(entry->getKey()) + '=' + textOf(entry->getValue()) + ' ';
    return text;
}

TEST(AbstractMap, AnswersByAWalkOverItsEntries)
{
    const auto map = mapOf({{1, 10}, {NO_ITEM, 20}, {3, NO_ITEM}, {1, 40}});
    struct {
        int key;
        bool contained;
        const char *got, *removed, *left;
    } cases[] = {
        {1, true, "10", "40", "null=20 3=null "},
        {NO_ITEM, true, "20", "20", "1=10 3=null 1=40 "},
        {3, true, "null", "null", "1=10 null=20 1=40 "},
        {4, false, "null", "null", "1=10 null=20 3=null 1=40 "},
    };
    for (const auto& row : cases) {
        const Reference<IVXUnknown> key = item(row.key);
        const Reference<SmallMap> changing(new SmallMap(*map));
        EXPECT_EQ(map->containsKey(key.get()), row.contained) << row.key;
        EXPECT_EQ(textOf(map->get(key.get())), row.got) << row.key;
        EXPECT_EQ(textOf(changing->remove(key.get())), row.removed) << row.key;
        EXPECT_EQ(textOfEntries(*changing), row.left) << row.key;
    }
    EXPECT_TRUE(map->containsValue(item(40).get()));
    EXPECT_TRUE(map->containsValue(nullptr));
    EXPECT_FALSE(map->containsValue(item(1).get()));
    EXPECT_EQ(map->getSize(), 4);
    EXPECT_EQ(map->hashCode(), 0x40000000U) << "the sum of four entries in 32 bits";
    EXPECT_EQ(outcome([&] { return map->put(item(1).get(), nullptr); }), "unsupported");
    EXPECT_EQ(outcome([&] { map->putAll(*map); }), "unsupported");
    map->clear();
    EXPECT_TRUE(map->isEmpty());
}

TEST(AbstractMap, ComparesByTheOtherMapsAnswers)
{
    struct {
        Pairs left, right;
        int order;
        bool equal;
    } cases[] = {
        {{}, {}, 0, true},
        {{{1, 10}}, {{1, 10}}, 0, true},
        {{{1, 10}, {2, 20}}, {{2, 20}, {1, 10}}, 0, true},
        {{{1, 10}}, {{1, 13}}, -3, false},
        {{{1, 10}}, {{2, 10}}, -1, false}, // a value against none: foreign to it, by address
        {{{1, NO_ITEM}}, {{2, NO_ITEM}}, 1, false},
        {{{1, NO_ITEM}}, {{1, 10}}, -1, false},
        {{{1, NO_ITEM}}, {{1, NO_ITEM}}, 0, true},
        {{{1, 10}}, {{1, 10}, {2, 20}, {3, 30}}, -2, false},
        {{}, {{1, 10}}, -1, false},
    };
    for (const auto& row : cases) {
        const auto left = mapOf(row.left), right = mapOf(row.right);
        EXPECT_EQ(left->compareTo(*right), row.order) << &row - cases;
        EXPECT_EQ(left->equals(*right), row.equal) << &row - cases;
    }
    const auto map = mapOf({{1, 1}});
    EXPECT_FALSE(map->equals(Item(1)));
    EXPECT_EQ(outcome([&] { return map->compareTo(Item(1)); }), "cast");
}

TEST(AbstractMap, OffersViewsThatLookThrough)
{
    auto map = mapOf({{1, 10}, {2, 20}, {3, 10}, {4, NO_ITEM}});
    const Reference<Set> keys = map->createKeySet();
    const Reference<Collection> values = map->createValueCollection();
    EXPECT_EQ(textOfAll(*keys), "1 2 3 4 ");
    EXPECT_EQ(textOfAll(*values), "10 20 10 null ");
    EXPECT_TRUE(keys->contains(item(2).get()) && !keys->contains(item(20).get()));
    EXPECT_TRUE(values->contains(item(20).get()) && !values->contains(item(2).get()));

    EXPECT_TRUE(values->remove(item(10).get())) << "the first of its kind";
    EXPECT_EQ(textOfEntries(*map), "2=20 3=10 4=null ");
    const Reference<ArrayList> kept(new ArrayList);
    kept->add(item(3).get());
    EXPECT_TRUE(keys->retainAll(*kept));
    EXPECT_EQ(textOfEntries(*map), "3=10 ");
    for (Collection* view : {static_cast<Collection*>(keys.get()), values.get()}) {
        EXPECT_EQ(outcome([&] { return int {view->add(nullptr)}; }), "unsupported");
        EXPECT_EQ(view->getSize(), 1);
    }

    const auto& set = dynamic_cast<const Object&>(*keys);
    const Reference<Set> again = map->createKeySet();
    EXPECT_TRUE(set.equals(set));
    EXPECT_FALSE(set.equals(dynamic_cast<const Object&>(*again))) << "by address";

    const Reference<Iterator> last = values->createIterator();
    map = nullptr;
    EXPECT_EQ(textOf(last->next()), "10") << "kept by its views";
    last->remove();
    EXPECT_TRUE(keys->isEmpty());
}

TEST(MapEntry, IsAskedOfAnElement)
{
    EXPECT_EQ(outcome([] { MapEntry::of(item(1)); }), "cast");
    EXPECT_EQ(outcome([] { MapEntry::of(item(NO_ITEM)); }), "cast");
}

} // namespace
} // namespace vx::collections::vorb
