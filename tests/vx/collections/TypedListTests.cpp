#include "tests/AllocationProbe.h"
#include "tests/vx/Common.h"
#include "tests/vx/collections/Elements.h"
#include "vx/collections/List.h"
#include "vx/collections/Map.h"
#include "vx/collections/Set.h"
#include "vx/collections/ValueCollections.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/collections/vorb/LinkedList.h"

#include <iterator>
#include <optional>
#include <ranges>

namespace vx::collections {
namespace {

class TypedLists : public testing::Test {
protected:
    TypedLists()
    {
        for (const int value : {1, 2, 3})
            m_list->add(new Item(value));
    }

    Reference<vorb::List> m_inner {new vorb::LinkedList};
    Reference<List<Item>> m_list {new List<Item>(m_inner.get())};
};

TEST_F(TypedLists, PassEveryOperationOn)
{
    List<Item>& list = *m_list;
    const Reference<Item> one(new Item(1)), two(new Item(2));
    EXPECT_EQ(textOf(list.set(0, one.get())), "1");
    EXPECT_EQ(list.get(0), one) << "the object itself";
    EXPECT_TRUE(list.add(nullptr) && list.add(1, new Item(4)));
    EXPECT_EQ(textOfAll(list), "1 4 2 3 null ");
    EXPECT_EQ(list.indexOf(one.get()) + 10 * list.lastIndexOf(nullptr) + 100 * list.getSize(), 540);
    EXPECT_TRUE(list.contains(two.get()) && list.remove(static_cast<const Item*>(nullptr)));
    EXPECT_EQ(textOf(list.remove(1)), "4");
    const Reference<Collection<Item>> same(new Collection<Item>(m_inner.get()));
    EXPECT_TRUE(list.addAll(*same)) << "as the list with itself";
    EXPECT_TRUE(list.createSubList(2, 4)->add(new Item(7)));
    EXPECT_EQ(textOfAll(*same), "1 2 3 1 7 2 3 ") << "written through";
    const Reference<List<Item>> others(new List<Item>(new vorb::ArrayList));
    others->add(two.get());
    EXPECT_TRUE(list.removeAll(*others) && list.retainAll(*others));
    EXPECT_EQ(textOfAll(list) + std::to_string(list.hashCode()), "2 40");
    EXPECT_FALSE(list.equals(list)) << "the one behind sees a wrapper as a foreign object";
    EXPECT_TRUE(list.equals(dynamic_cast<const Object&>(*m_inner)));
    list.clear();
    EXPECT_TRUE(m_inner->isEmpty() && list.isEmpty());
    EXPECT_EQ(one->GetRefCount(), 1U) << "no count is left behind";
}

TEST_F(TypedLists, WalkAsTheListBehindDoes)
{
    List<Item>& list = *m_list;
    const Reference<Iterator<Item>> forwards = list.createIterator();
    forwards->next();
    forwards->remove();
    const Reference<ListIterator<Item>> both = list.createListIterator(1);
    both->add(new Item(5));
    EXPECT_EQ(textOf(both->previous()), "5");
    both->set(new Item(6));
    EXPECT_EQ(both->nextIndex() * 10 + both->previousIndex(), 10);
    EXPECT_TRUE(both->hasPrevious() && both->hasNext());
    EXPECT_EQ(textOfAll(list), "2 6 3 ");
    EXPECT_EQ(outcome([&] { forwards->next(); }), "plain");
    const Reference<ConstListIterator<Item>> back = std::as_const(list).createConstListIterator(3);
    m_list = nullptr;
    m_inner = nullptr;
    EXPECT_EQ(textOf(back->previous()), "3") << "kept by its iterators";
    EXPECT_EQ(textOf(back->next()), "3");
    EXPECT_EQ(outcome([&] { back->next(); }), "range");
}

TEST(TypedMap, PassesOnAndGivesPairs)
{
    const Reference<Map<Item, String>> map(new Map<Item, String>(new vorb::HashMap));
    for (int key : {1, 2})
        map->put(new Item(key), new String(String::valueOf(key * 11)));
    std::string text;
    for (const auto& [key, value] : *map)
        text += textOf(key) + value->toUtf8() + ' ';
    EXPECT_EQ(text, "222 111 ");
    const Reference<Item> two(new Item(2));
    const Reference<Set<Item>> keys = map->createKeySet();
    EXPECT_EQ(*map->get(two.get()), u"22");
    EXPECT_TRUE(map->containsKey(two.get()) && *map->remove(two.get()) == u"22");
    EXPECT_EQ(textOfAll(*keys), "1 ");
    map->clear();
    EXPECT_TRUE(keys->isEmpty() && map->getSize() == 0);
    // An object of a class with a virtual base is found by a query.
    const Reference<List<Set<Item>>> sets(new List<Set<Item>>(new vorb::ArrayList));
    sets->add(keys.get());
    EXPECT_EQ(sets->get(0), keys);
}

TEST(TypedList, IsSortedStablyWhateverItsKind)
{
    for (const Reference<vorb::List>& inner :
        {Reference<vorb::List>(new vorb::ArrayList), Reference<vorb::List>(new vorb::LinkedList)}) {
        List<Item> list(inner.get());
        for (const int value : {31, 12, 32, 11, 2})
            list.add(new Item(value));
        list.sort([](const Item& left, const Item& right) { return left.getValue() / 10 < right.getValue() / 10; });
        EXPECT_EQ(textOfAll(list), "2 12 11 31 32 ");
        list.sort();
        EXPECT_EQ(textOfAll(list), "2 11 12 31 32 ");
        const auto part = list.createSubList(1, 4);
        part->sort([](const Item& left, const Item& right) { return left.getValue() > right.getValue(); });
        EXPECT_EQ(part->get(2)->getValue(), 11);
        EXPECT_EQ(textOfAll(list), "2 31 12 11 32 ");
        list.add(nullptr);
        list.sort();
        EXPECT_EQ(list.get(0), nullptr);
        EXPECT_EQ(list.get(5)->getValue(), 32);
    }
}

static_assert(std::forward_iterator<vorb::ArrayList::Look>);
static_assert(std::input_iterator<vorb::LinkedList::Look>);
static_assert(std::ranges::common_range<List<Item>> && std::ranges::common_range<Map<Item, Item>>);

TEST(Collections, AreMadeFromElementsAndGiveThemToTheStandardLibrary)
{
    const Reference<vorb::ArrayList> array(new vorb::ArrayList);
    const Reference<vorb::LinkedList> linked(new vorb::LinkedList);
    struct Heavy : Item {
        using Item::Item;
    };
    const Reference<Item> two(new Item(2));
    List<Item> list(array.get(), {3, two, new Item(1), nullptr, Heavy(4)});
    EXPECT_EQ(textOfAll(list), "3 2 1 null 4 ");
    EXPECT_EQ(list.get(1), two);
    EXPECT_NE(dynamic_cast<Heavy*>(list.get(4).get()), nullptr) << "not sliced";
    linked->addAll(*array);

    const std::vector<Reference<Item>> typed(list.begin(), list.end());
    const std::vector<IVXUnknown*> fromArray(array->begin(), array->end());
    const std::vector<Reference<IVXUnknown>> fromLinked(linked->begin(), linked->end());
    const std::vector<Reference<IVXUnknown>> fromAny(
        static_cast<vorb::Collection&>(*linked).begin(), static_cast<vorb::Collection&>(*linked).end());
    EXPECT_TRUE(fromLinked == fromAny && std::ranges::equal(fromAny, fromArray, {}, &Reference<IVXUnknown>::get));
    EXPECT_TRUE(
        std::ranges::equal(typed, fromArray, {}, [](const auto& item) { return detail::toElement(item.get()); }));
    EXPECT_EQ(std::ranges::find(list, two)->get(), two.get());
    auto place = list.begin();
    EXPECT_EQ((*place++)->getValue() * 10 + (*place)->getValue(), 32);

    int steps = 0;
    for (auto* const element : *array) // an end that moves
        if (++steps < 3)
            array->add(element);
    EXPECT_EQ(steps, 7);

    const Map<String, Integer32> ages(
        new vorb::HashMap, {{u"Ada", 36}, {String(u"Ole"), new Integer32(7)}, {u"Ada", 37}});
    EXPECT_EQ(ages.getSize(), 2);
    EXPECT_EQ(*ages.get(Reference<String>(new String(u"Ada")).get()), 37);
    using Entries = std::vector<Map<String, Integer32>::Entry>;
    EXPECT_EQ(Entries(ages.begin(), ages.end()).size(), 2U);
    EXPECT_EQ(Set<String>(new vorb::HashSet, {u"a", u"b", u"a"}).getSize(), 2);
}

enum class Colour : std::uint8_t { RED = 1, BLUE = 200 };

static_assert(std::random_access_iterator<ValueList<int>::Iterator>);
static_assert(std::ranges::random_access_range<ValueList<double>>);

TEST(ValueCollections, HoldPlainValues)
{
    ValueList<std::uint64_t> wide {UINT64_MAX, 0, 5};
    EXPECT_EQ(wide.get(0), UINT64_MAX);
    wide.sort();
    EXPECT_EQ(std::vector<std::uint64_t>(wide.begin(), wide.end()), (std::vector<std::uint64_t> {0, 5, UINT64_MAX}));
    EXPECT_EQ(*(wide.end() - 1) - wide.begin()[1], UINT64_MAX - 5);
    wide.set(0, 7);
    EXPECT_EQ(wide.indexOf(7) + 10 * wide.indexOf(6), -10);
    EXPECT_EQ(wide.remove(1), 5U);
    EXPECT_THROW(wide.get(2), RangeErrorException);

    const ValueList<Colour> colours {Colour::BLUE, Colour::RED};
    EXPECT_EQ(std::ranges::find(colours, Colour::RED) - colours.begin(), 1);
    ValueList<double> reals {2.5, -1e300};
    reals.sort(std::greater<>());
    EXPECT_EQ(reals.get(1), -1e300);
    ValueList<std::u16string> texts {u"b", u"", u"a"};
    texts.sort();
    EXPECT_EQ(texts.get(0) + texts.get(1) + texts.get(2), u"ab");
    const ValueList<bool> flags {true, false};
    EXPECT_TRUE(flags.get(0) && !flags.get(1));

    ValueMap<std::u16string, std::uint32_t> ages {{u"Ada", 36}, {u"Ole", UINT32_MAX}};
    ages.put(u"Ada", 37);
    std::uint64_t sum = 0;
    ages.forEach([&sum](std::u16string&& name, std::uint32_t age) { sum += name.size() * age; });
    EXPECT_EQ(sum, 3 * (37 + std::uint64_t {UINT32_MAX}));
    for (const auto& [name, age] : std::as_const(ages))
        sum -= name.size() * age;
    EXPECT_EQ(sum, 0U);
    const auto twice = [](std::uint32_t number) { return number * 2 + 1; };
    EXPECT_TRUE(ages.update(u"Ida", twice) == 1 && ages.update(u"Ida", twice) == 3 && ages.remove(u"Ida") == 3U);
    EXPECT_TRUE(ages.get(u"Ada") == 37U && ages.get(u"ada") == std::nullopt);
    EXPECT_TRUE(ages.remove(u"Ole") == UINT32_MAX && ages.remove(u"Ole") == std::nullopt);
    const ValueMap<Colour, double> shades {{Colour::RED, 0.5}};
    EXPECT_TRUE(shades.containsKey(Colour::RED) && !shades.containsKey(Colour::BLUE) && shades.getSize() == 1);
}

static_assert(!detail::Boxed<long double>, "a box would lose digits");

TEST(ValueCollections, AreValues)
{
    ValueList<int> list {1}, listCopy = list;
    listCopy.add(2);
    ValueMap<int, String> map {{1, u"a"}}, mapCopy = map;
    mapCopy.put(2, u"b");
    EXPECT_EQ(list.getSize() * 10 + map.getSize(), 11);
    const ValueList<int> movedList = std::move(list);
    const ValueMap<int, String> movedMap = std::move(map);
    list.add(7); // NOLINT(bugprone-use-after-move)
    map.put(7, u"c"); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(list.getSize() == 1 && movedList.get(0) == 1 && map.getSize() == 1 && movedMap.get(1) == u"a");
    list = listCopy;
    map = std::move(mapCopy);
    listCopy.clear();
    EXPECT_TRUE(list.get(1) == 2 && map.get(2) == u"b" && mapCopy.isEmpty()); // NOLINT(bugprone-use-after-move)
}

TEST(ValueCollections, KeepTheirValuesWhenASortFails)
{
    const ValueList<std::u16string> unsorted {u"c", u"a", u"b"};
    ValueList<std::u16string> texts = unsorted;
    const auto sort = [&] { texts.sort(); };
    const int failures = failEachAllocation(sort, [&](int) {
        const std::u16string all = texts.get(0) + texts.get(1) + texts.get(2);
        EXPECT_TRUE(all == u"cab" || all == u"abc") << String(all); // it also sorts without a buffer
        texts = unsorted;
    });
    EXPECT_GT(failures, 3);
    EXPECT_EQ(texts.get(0), u"a");
}

} // namespace
} // namespace vx::collections
