#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vx/UserBuffer.h"
#include "tests/vx/collections/Elements.h"
#include "vx/NumberBoxes.h"
#include "vx/collections/DefaultComparator.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/collections/vorb/LinkedList.h"
#include "vx/collections/vorb/detail/Length.h"
#include "vx/util/Comparator.h"
#include "vx/util/MTCharBuffer.h"

#include <cmath>

namespace vx::collections::vorb {
namespace {

template <class Class>
Reference<Class> listOf(std::initializer_list<int> values)
{
    Reference<Class> list(new Class);
    for (const int value : values)
        list->add(item(value).get());
    return list;
}

TEST(Comparator, GoesThroughTheComparableViewAndTakesWhatHasNoneForNull)
{
    class Opaque : public ComObject { };
    const Reference<Opaque> opaque(new Opaque);
    const Reference<IVXUnknown> three = item(3), alsoThree = item(3), five = item(5), bare = opaque->GetUnknown();
    const std::tuple<const IVXUnknown*, const IVXUnknown*, int, std::uint32_t> cases[]
        = {{three.get(), five.get(), -2, 3}, {three.get(), alsoThree.get(), 0, 3}, {nullptr, nullptr, 0, 0},
            {nullptr, three.get(), -1, 0}, {bare.get(), bare.get(), -1, 0}, {bare.get(), three.get(), -1, 0},
            {bare.get(), nullptr, 0, 0}};
    const Reference<IVXComparator> comparator = GetDefaultComparator();
    int order = 99;
    std::uint32_t hash = 99;
    for (const auto& row : cases) {
        const auto& [a, b, wantedOrder, wantedHash] = row;
        EXPECT_EQ(comparator->Compare(a, b, &order) | comparator->Hash(a, &hash), 0);
        EXPECT_TRUE(order == wantedOrder && hash == wantedHash) << &row - cases;
    }
    EXPECT_EQ(comparator->Hash(Item(4).GetUnknown(), &hash), 0);
    EXPECT_EQ(hash, 4U);
    EXPECT_EQ(comparator->Compare(three.get(), Reference<Object>(new Object)->GetUnknown(), &order), RESULT_FAIL);
}

template <class Class>
class Lists : public testing::Test {
};

using ListClasses = testing::Types<ArrayList, LinkedList>;
TYPED_TEST_SUITE(Lists, ListClasses);

TYPED_TEST(Lists, CompareByTheirElements)
{
    struct {
        std::initializer_list<int> left, right;
        int order;
    } cases[] = {{{}, {}, 0}, {{5, 7}, {5}, 1}, {{5}, {5, 7}, -1}, {{5, 9}, {5, 7, 1}, 2}, {{NO_ITEM}, {5}, -1},
        {{NO_ITEM, 1}, {NO_ITEM, 1}, 0}};
    for (const auto& row : cases) {
        const auto left = listOf<TypeParam>(row.left);
        const auto right = listOf<ArrayList>(row.right);
        const Reference<List> part = left->createSubList(0, left->getSize());
        EXPECT_EQ(left->compareTo(*right), row.order) << &row - cases;
        EXPECT_EQ(left->equals(*right), row.order == 0) << &row - cases;
        EXPECT_TRUE(left->equals(dynamic_cast<const Object&>(*part))) << &row - cases;
    }
    EXPECT_EQ(outcome([&] { return listOf<TypeParam>({1})->compareTo(Item(1)); }), "cast");
}

TYPED_TEST(Lists, PassOnWhatAComparatorDoesInMidSearch)
{
    const Reference<IVXUnknown> two = item(2);
    const auto source = listOf<TypeParam>({1, 5, 3});
    const Reference<WatchedComparator> comparator(new WatchedComparator);
    Reference<TypeParam> list;
    // The operation, and its outcome when the comparator removes an element and finds the next one equal.
    const std::tuple<const char*, std::function<void()>, const char*> cases[] = {
        {"contains", [&] { list->contains(two.get()); }, "done"}, {"remove", [&] { list->remove(two.get()); }, "plain"},
        {"removeAll", [&] { list->removeAll(*listOf<ArrayList>({2})); }, "plain"},
        {"lastIndexOf", [&] { list->lastIndexOf(two.get()); }, nullptr},
        {"hashCode", [&] { list->hashCode(); }, nullptr}, {"compareTo", [&] { list->compareTo(*source); }, nullptr},
        {"of a sublist", [&] { list->createSubList(0, 3)->contains(two.get()); }, nullptr}};
    for (const auto& [operation, work, changed] : cases) {
        const auto run = [&, &operate = work](const std::function<std::int32_t()>& comparing) {
            list = new TypeParam(*source, comparator.get());
            comparator->m_failure = comparing;
            comparator->m_calls = 1;
            const std::string result = outcome(operate);
            return result + ' ' + textOfAll(*list);
        };
        EXPECT_EQ(run([] { return RESULT_TIMED_OUT; }), "result " + std::to_string(RESULT_TIMED_OUT) + " 1 5 3 ")
            << operation;
        if (changed != nullptr) {
            EXPECT_EQ(run([&] { return list->remove(0) != nullptr ? RESULT_OK : RESULT_FAIL; }),
                std::string(changed) + " 5 3 ")
                << operation;
        }
    }
}

TYPED_TEST(Lists, FindExactlyWhatTheComparatorFindsEqual)
{
    class OwnText : public String { };
    const Reference<Object> elements[] = {nullptr, new String(u"a"), new String(u"a"), new String(u"b"), new String,
        new String(String::AcquireShare, new util::MTCharBuffer(8)), new OwnText, new Integer8(1), new Integer32(1),
        new Integer32(257), new Float(NAN), new Double(-0.0), new Double(0.0), new Object, new Object, new Item(1)};
    const auto unknownOf
        = [](const Reference<Object>& object) { return object != nullptr ? object->GetUnknown() : nullptr; };
    for (const auto& stored : elements) {
        for (const auto& wanted : elements) {
            int order = 0;
            const auto code = GetDefaultComparator()->Compare(unknownOf(stored), unknownOf(wanted), &order);
            const Reference<TypeParam> list(new TypeParam);
            list->add(unknownOf(stored));
            int first = 9, last = 9;
            const std::string expected = code < 0 ? "result " + std::to_string(code) : "done";
            EXPECT_EQ(outcome([&] { first = list->indexOf(unknownOf(wanted)); }), expected);
            EXPECT_EQ(outcome([&] { last = list->lastIndexOf(unknownOf(wanted)); }), expected);
            EXPECT_TRUE(code < 0 || (first == (order == 0 ? 0 : -1) && last == first))
                << &stored - elements << ' ' << &wanted - elements;
        }
    }
}

TYPED_TEST(Lists, FindATextAsAComparisonHasLeftIt)
{
    const Reference<String> wanted(new String(u"a"));
    class Changing : public Object {
    public:
        explicit Changing(String& text)
            : m_text(text)
        {
        }
        int compareTo(const Object&) const override
        {
            m_text += u"b";
            return 1;
        }

    private:
        String& m_text;
    };
    TypeParam list;
    for (const Reference<Object>& element :
        std::initializer_list<Reference<Object>> {new Changing(*wanted), new String(u"a"), new String(u"ab")})
        list.add(element->GetUnknown());
    EXPECT_EQ(list.indexOf(wanted->GetUnknown()), 2);
}

TYPED_TEST(Lists, AreWalkedByARangeForLikeByAnIterator)
{
    const std::tuple<void (*)(List&), const char*> cases[] = {
        {[](List& list) { list.getSize() < 4 && list.add(item(9).get()); }, "done 1 2 9 9 "},
        {[](List& list) { list.getSize() < 4 && list.addAll(*listOf<ArrayList>({9})); }, "done 1 2 9 9 "},
        {[](List& list) { list.set(0, nullptr); }, "plain 1 "},
        {[](List& list) { list.remove(list.getSize() - 1); }, "done 1 "},
        {[](List& list) { list.clear(); }, "done 1 "},
    };
    for (const auto& row : cases) {
        for (const bool asItself : {true, false}) {
            const auto list = listOf<TypeParam>({1, 2});
            std::string seen;
            const auto walk = [&](const auto& elements) {
                for (const auto& element : elements) {
                    seen += textOf(element) + ' ';
                    std::get<0>(row)(*list);
                }
            };
            const auto result = outcome([&] { asItself ? walk(*list) : walk(static_cast<const Collection&>(*list)); });
            EXPECT_EQ(result + ' ' + seen, std::get<1>(row)) << &row - cases << asItself;
        }
    }
    TypeParam onTheStack;
    onTheStack.add(item(3).get());
    EXPECT_EQ(textOfAll(onTheStack) + textOfAll(*listOf<TypeParam>({4})->createSubList(0, 1)), "3 4 ");
}

TYPED_TEST(Lists, WorkOnThemselves)
{
    const auto list = listOf<TypeParam>({1, NO_ITEM, 2});
    EXPECT_TRUE(list->addAll(*list) && list->containsAll(*list));
    EXPECT_FALSE(list->retainAll(*list));
    EXPECT_EQ(outcome([&] { list->addAll(0, *list); }), "plain") << "the list changes under its own iterator";
    EXPECT_TRUE(list->removeAll(*listOf<LinkedList>({2, 1, 7}))) << "one occurrence each";
    EXPECT_EQ(textOfAll(*list), "1 null 1 null 2 ");
}

TYPED_TEST(Lists, RetainElementsUpToAFailure)
{
    const Reference<WatchedComparator> comparator(new WatchedComparator);
    LinkedList two(comparator.get());
    two.add(item(2).get());
    for (const bool isPart : {false, true}) {
        const auto whole = listOf<TypeParam>({1, 2, 3, 4});
        const Reference<List> list = isPart ? whole->createSubList(0, 4) : Reference<List>(whole.get());
        comparator->m_calls = 2;
        EXPECT_EQ(outcome([&] { list->retainAll(two); }), "result " + std::to_string(RESULT_TIMED_OUT));
        EXPECT_EQ(textOf(list->getSize()) + ": " + textOfAll(*whole), "3: 2 3 4 ") << isPart;
        EXPECT_EQ(outcome([&] { return list->get(1); }), "3") << isPart;
    }
}

/// Texts are looked up in another way than the rest. The number has the hash of a text, with which it cannot be compared.
TEST(ArrayList, RetainsTextsAsAListDoesThatAsksForEachElement)
{
    Random random;
    const auto element = [&](int kind) -> Reference<IVXUnknown> {
        if (kind == 0)
            return Reference<Integer32>(new Integer32(u'a'))->GetUnknown();
        const std::u16string text(1 + static_cast<std::size_t>(kind % 2), static_cast<char16_t>(u'a' + kind % 20));
        if (kind % 7 != 1)
            return Reference<String>(new String(text))->GetUnknown();
        const Reference<IVXCharBuffer> buffer(new UserBuffer(text));
        return Reference<String>(new String(String::AcquireShare, buffer.get()))->GetUnknown();
    };
    for (int round = 0; round < 300; ++round) {
        const Reference<ArrayList> list(new ArrayList);
        const Reference<LinkedList> other(new LinkedList);
        HashSet kept;
        for (int count = random.below(40); count > 0; --count) {
            const Reference<IVXUnknown> added = element(random.below(60));
            list->add(added.get());
            other->add(added.get());
        }
        for (int count = random.below(40); count > 0; --count)
            outcome([&] { kept.add(element(random.below(60)).get()); });
        const std::string expected = outcome([&] { return static_cast<int>(other->retainAll(kept)); });
        EXPECT_EQ(outcome([&] { return static_cast<int>(list->retainAll(kept)); }), expected);
        ASSERT_EQ(list->getSize(), other->getSize());
        for (int index = 0; index < list->getSize(); ++index)
            ASSERT_EQ(list->get(index), other->get(index));
    }
}

/// The operation has the only reference to the new element, and must not leak it if it fails.
TYPED_TEST(Lists, LeaveNoElementOverThatTheyRefuse)
{
    const auto fresh = [] { return (new Item(5))->GetUnknown(); };
    const auto list = listOf<TypeParam>({1, 2});
    const Reference<List> part = list->createSubList(0, 2);
    const Reference<ListIterator> place = list->createListIterator(1);
    const int alive = Item::s_alive;
    const std::pair<const char*, std::function<void()>> refused[] = {{"range", [&] { list->add(3, fresh()); }},
        {"range", [&] { list->set(2, fresh()); }}, {"range", [&] { part->add(3, fresh()); }},
        {"range", [&] { part->set(2, fresh()); }}, {"state", [&] { place->set(fresh()); }},
        {"done", [&] { list->add(0, nullptr); }}, {"plain", [&] { place->add(fresh()); }},
        {"unsupported", [&] { Reference<HashMap>(new HashMap)->createKeySet()->add(fresh()); }}};
    for (const auto& [result, work] : refused)
        EXPECT_EQ(outcome(work), result) << &result - &refused->first;
    EXPECT_EQ(Item::s_alive, alive);
}

TYPED_TEST(Lists, AreWholeForElementsThatUseThemInTheirDestructors)
{
    std::string seen;
    Reference<TypeParam> list(new TypeParam);
    const auto lookAndAdd = [&, owner = list.get()] {
        seen += std::to_string(owner->getSize()) + ' ';
        owner->add(item(7).get());
    };
    for (int i = 0; i < 3; ++i)
        list->add((new Looking(lookAndAdd))->GetUnknown());
    list->set(1, nullptr);
    list = nullptr;
    EXPECT_EQ(seen, "3 0 1 ");
    EXPECT_EQ(Item::s_alive, 0);

    for (const bool isPart : {false, true}) {
        const auto whole = listOf<TypeParam>({1, 2, 3});
        const Reference<List> walked = isPart ? whole->createSubList(0, 3) : Reference<List>(whole.get());
        const Reference<ListIterator> place = walked->createListIterator(0);
        seen.clear();
        const auto look = [&] { seen += textOf(walked->getSize()) + outcome([&] { return place->next(); }) + ' '; };
        const auto looking = [&] { return (new Looking(look))->GetUnknown(); };
        place->next();
        place->set(looking());
        place->remove();
        place->set(looking());
        place->set(nullptr);
        EXPECT_EQ(seen, "22 23 ") << "the iterator goes on" << isPart;
    }
}

TEST(ArrayList, IsClearedThoughElementsRemoveOthersInTheirDestructors)
{
    const auto list = listOf<ArrayList>({1, 2});
    list->add((new Looking([&] { list->remove(0); }))->GetUnknown());
    EXPECT_EQ(outcome([&] { list->clear(); }), "done");
    EXPECT_EQ(list->getSize(), 0);
}

TYPED_TEST(Lists, AreReleasedHoweverDeepTheyAreNested)
{
    Reference<TypeParam> list(new TypeParam);
    for (int depth = 0; depth < 100'000; ++depth) {
        const Reference<TypeParam> outer(new TypeParam);
        outer->add(list->GetUnknown());
        list = outer;
    }
    EXPECT_EQ(list->getSize(), 1);
    list = nullptr; // too many for one nested call each
}

TEST(ArrayList, GrowsByHalf)
{
    const Reference<ArrayList> list(new ArrayList);
    const AllocationProbe probe;
    std::size_t last = 0;
    std::string asked;
    for (int i = 0; i < 20; ++i) {
        list->add(nullptr);
        if (std::exchange(last, probe.lastRawSize()) != probe.lastRawSize())
            asked += std::to_string(last / sizeof(void*)) + ' ';
    }
    EXPECT_EQ(asked, "1 2 3 4 6 9 13 19 28 ");
    EXPECT_EQ(detail::grownCapacity(detail::MAX_LENGTH - 1), detail::MAX_LENGTH);
    EXPECT_THROW(detail::checkLength(0x3FFFFFFF, "too long"), std::length_error);
}

TEST(LinkedList, GoesWithoutRecursionHoweverLong)
{
    const Reference<LinkedList> list(new LinkedList);
    for (int i = 0; i < 2'000'000; ++i) // far more than a stack has frames for
        list->add(nullptr);
    EXPECT_EQ(Reference<ArrayList>(new ArrayList(*list))->getSize(), 2'000'000) << "in a step for each";
}

} // namespace
} // namespace vx::collections::vorb
