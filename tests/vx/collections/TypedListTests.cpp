#include "tests/Slots.h"
#include "tests/vx/collections/Elements.h"
#include "tests/vx/collections/SmallMap.h"
#include "vx/collections/List.h"
#include "vx/collections/Map.h"
#include "vx/collections/Set.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/LinkedList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vx::collections {
namespace {

template <class Elements>
std::string textOfItems(const Elements& elements)
{
    std::string text;
    for (const Reference<Item>& element : elements)
        text += textOf(element) + ' ';
    return text;
}

TEST(TypedCollections, KeepTheOrderOfTheirOperations)
{
    using C = Collection<String>;
    using L = List<String>;
    using Add = bool (L::*)(int, String*);
    using AddAll = bool (L::*)(int, const C&);
    using Remove = Reference<String> (L::*)(int);
    using Part = Reference<L> (L::*)(int, int);
    using ConstPart = Reference<const L> (L::*)(int, int) const;
    const std::size_t first = slotOf(&Object::toString) + 1;

    expectSlots("Collection", first,
        {slotOf(&C::add), slotOf(&C::contains), slotOf(&C::remove), slotOf(&C::addAll), slotOf(&C::clear),
            slotOf(&C::createIterator), slotOf(&C::createConstIterator), slotOf(&C::getSize), slotOf(&C::isEmpty),
            slotOf(&C::removeAll), slotOf(&C::retainAll)});
    expectSlots("List", first + 11,
        {slotOf<Add>(&L::add), slotOf<AddAll>(&L::addAll), slotOf<Remove>(&L::remove), slotOf(&L::createListIterator),
            slotOf(&L::createConstListIterator), slotOf<Part>(&L::createSubList), slotOf<ConstPart>(&L::createSubList),
            slotOf(&L::get), slotOf(&L::indexOf), slotOf(&L::lastIndexOf), slotOf(&L::set)});
}

class TypedLists : public testing::Test {
protected:
    Reference<vorb::List> m_inner {new vorb::LinkedList};
    Reference<List<Item>> m_list {new List<Item>(m_inner.get())};
    Reference<Item> m_one {new Item(1)};
};

TEST_F(TypedLists, PassEveryOperationOn)
{
    List<Item>& list = *m_list;
    Item* one = m_one.get();
    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.add(one) && list.add(nullptr) && list.add(1, new Item(2)));
    EXPECT_EQ(textOfItems(list), "1 2 null ");
    EXPECT_EQ(list.get(0), one) << "the object itself";
    EXPECT_EQ(list.indexOf(one) + 10 * list.lastIndexOf(nullptr) + 100 * list.getSize(), 320);
    EXPECT_TRUE(list.contains(Reference<Item>(new Item(2)).get()));
    EXPECT_EQ(list.set(0, new Item(3)), one);
    EXPECT_EQ(one->GetRefCount(), 1U) << "no count is left behind";
    EXPECT_EQ(textOf(list.remove(1)), "2");
    EXPECT_TRUE(list.remove(static_cast<const Item*>(nullptr)));
    EXPECT_EQ(outcome([&] { list.get(1); }), "range");
    EXPECT_EQ(outcome([&] { list.remove(-1); }), "range");
    EXPECT_EQ(outcome([&] { list.createSubList(1, 0); }), "range");
    EXPECT_EQ(textOfItems(list), "3 ");
    list.clear();
    EXPECT_EQ(m_inner->getSize(), 0);
}

TEST_F(TypedLists, TakeEachOtherForWhatIsBehindThem)
{
    List<Item>& list = *m_list;
    for (int value : {1, 2, 3})
        list.add(new Item(value));
    const Reference<Collection<Item>> same(new Collection<Item>(m_inner.get()));
    EXPECT_TRUE(list.addAll(*same)) << "as the list with itself";
    EXPECT_EQ(textOfItems(list), "1 2 3 1 2 3 ");
    const Reference<List<Item>> part = list.createSubList(2, 4);
    EXPECT_TRUE(part->remove(1) != nullptr && part->add(new Item(7)));
    EXPECT_EQ(textOfItems(*same), "1 2 3 7 2 3 ") << "written through";
    const Reference<List<Item>> others(new List<Item>(new vorb::ArrayList));
    others->add(new Item(2));
    EXPECT_TRUE(others->addAll(0, *others->createSubList(0, 0)) == false && list.removeAll(*others));
    EXPECT_TRUE(list.retainAll(*others));
    EXPECT_EQ(textOfItems(list), "2 ");

    // The one behind sees a wrapper as a foreign object.
    EXPECT_FALSE(list.equals(list));
    EXPECT_EQ(outcome([&] { list.compareTo(list); }), "cast");
    EXPECT_TRUE(list.equals(dynamic_cast<const Object&>(*m_inner)));
    EXPECT_EQ(list.hashCode(), 40U);
    EXPECT_TRUE(list.toString().startsWith(u"Object@"));
}

TEST_F(TypedLists, WalkAsTheListBehindDoes)
{
    List<Item>& list = *m_list;
    for (int value : {1, 2, 3})
        list.add(new Item(value));
    const Reference<Iterator<Item>> forwards = list.createIterator();
    forwards->next();
    forwards->remove();
    EXPECT_EQ(textOf(forwards->next()), "2");

    const Reference<ListIterator<Item>> both = list.createListIterator(1);
    both->add(new Item(5));
    EXPECT_EQ(textOf(both->previous()), "5");
    both->set(new Item(6));
    EXPECT_EQ(both->nextIndex() * 10 + both->previousIndex(), 10);
    EXPECT_TRUE(both->hasPrevious());
    EXPECT_EQ(textOfItems(list), "2 6 3 ");
    EXPECT_EQ(outcome([&] { forwards->next(); }), "plain");

    const Reference<ConstListIterator<Item>> back = std::as_const(list).createConstListIterator(3);
    EXPECT_EQ(textOf(back->previous()), "3");
    EXPECT_EQ(textOf(back->next()), "3");
    EXPECT_FALSE(back->hasNext());
    EXPECT_EQ(outcome([&] { back->next(); }), "range");
    both->next();
    both->remove();
    EXPECT_EQ(std::ranges::count_if(list, [](const auto& element) { return element->getValue() > 1; }), 2);
    EXPECT_EQ(outcome([&] {
        for (const auto& element : list)
            list.add(0, element.get());
    }),
        "plain");
}

TEST_F(TypedLists, LeaveWhatIsBehindThemToItsOtherOwners)
{
    m_list->add(m_one.get());
    const Reference<ConstIterator<Item>> elements = m_list->createConstIterator();
    m_list = nullptr;
    EXPECT_EQ(m_inner->getSize(), 1);
    m_inner = nullptr;
    EXPECT_EQ(elements->next(), m_one);
}

TEST(TypedMap, PassesOnAndGivesPairs)
{
    auto* small = new vorb::SmallMap;
    const Reference<Map<Item, String>> map(new Map<Item, String>(small));
    for (int key : {1, 2})
        small->append(item(key).get(), (new String(String::valueOf(key * 11)))->GetUnknown());
    std::string text;
    for (const auto& [key, value] : *map)
        text += textOf(key) + value->toUtf8() + ' ';
    EXPECT_EQ(text, "111 222 ");

    const Reference<Item> two(new Item(2)), nine(new Item(9));
    EXPECT_EQ(*map->get(two.get()), u"22");
    EXPECT_TRUE(map->containsKey(two.get()) && !map->containsKey(nine.get()));
    EXPECT_EQ(outcome([&] { map->put(nullptr, nullptr); }), "unsupported");
    const Reference<Set<Item>> keys = map->createKeySet();
    EXPECT_EQ(*map->remove(two.get()), u"22");
    EXPECT_EQ(textOfItems(*keys), "1 ");
    EXPECT_FALSE(map->equals(*map));
    EXPECT_EQ(outcome([&] { map->compareTo(*map); }), "cast");
    map->clear();
    EXPECT_TRUE(keys->isEmpty() && map->getSize() == 0);
}

TEST(TypedSet, HoldsItselfAsAnElement)
{
    // A class with a virtual base is reached by asking.
    const Reference<List<Set<Item>>> sets(new List<Set<Item>>(new vorb::ArrayList));
    const auto keys = Reference<vorb::SmallMap>(new vorb::SmallMap)->createKeySet();
    const Reference<Set<Item>> set(new Set<Item>(keys.get()));
    sets->add(set.get());
    EXPECT_EQ(sets->get(0), set);
    EXPECT_EQ(set->GetRefCount(), 2U);
}

} // namespace
} // namespace vx::collections
