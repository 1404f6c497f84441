#include "tests/vx/Common.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"
#include "vx/vorb/ClassFactory.h"
#include "vx/vorb/Module.h"
#include "vxsys/Memory.h"

#include <numeric>

using namespace vx;

namespace {

constexpr _GUID UNKNOWN_INTERFACE {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

static_assert(!std::constructible_from<Reference<Object>, IVXUnknown*>, "a class has no identifier to ask for");
static_assert(!std::convertible_to<Reference<Object>, bool>);

/// Records its construction and destruction in `events`, and shows its count to a test.
class Watched : public Object {
public:
    explicit Watched(std::string* events = nullptr)
        : m_events(events)
    {
    }
    ~Watched() noexcept(false) override { tell("~"); }

    std::uint32_t AddRef() const override
    {
        tell("+");
        return Object::AddRef();
    }
    std::uint32_t Release() const override
    {
        tell("-");
        return Object::Release();
    }
    using ComObject::InternalAddRef;
    using ComObject::InternalRelease;

    Reference<Object> keeps;

private:
    void tell(const char* event) const
    {
        if (m_events != nullptr)
            *m_events += event;
    }

    std::string* m_events;
};

struct Foreign : IVXUnknown {
    virtual ~Foreign() = default;
    std::int32_t QueryInterface(const _GUID&, void** out) override
    {
        *out = this; // of no use after a failure
        return RESULT_NO_INTERFACE;
    }
    std::uint32_t AddRef() const override { return 1; }
    std::uint32_t Release() const override { return 1; }
};

TEST(Object, AnswersForItsInterfacesAndWithOneIdentity)
{
    struct {
        const char* name;
        Reference<ComObject> object;
        const _GUID& iid;
        bool isComparable;
    } cases[] = {
        {"Object", new Object, IVXComparable::IID, true},
        {"String", new String, IVXCharBuffer::IID, true},
        {"RWCharBuffer", new util::RWCharBuffer, IVXCharBuffer::IID, true},
        {"RWByteBuffer", new util::RWByteBuffer, IVXByteBuffer::IID, true},
        {"ClassFactory", new vorb::ClassFactory, IVXClassFactory::IID, false},
    };
    Foreign foreign;
    for (IVXUnknown* lacking : {static_cast<IVXUnknown*>(nullptr), static_cast<IVXUnknown*>(&foreign)})
        EXPECT_EQ(Reference<IVXComparable>(lacking), nullptr);
    for (const auto& row : cases) {
        Reference<IVXUnknown> view;
        EXPECT_EQ(row.object->QueryInterface(row.iid, view.outVoid()), RESULT_OK) << row.name;
        EXPECT_EQ(row.object->GetRefCount(), 2U) << row.name;
        Reference<IVXUnknown> root;
        EXPECT_EQ(view->QueryInterface(IVXUnknown::IID, root.outVoid()), RESULT_OK) << row.name;
        EXPECT_EQ(root, row.object->GetUnknown()) << row.name;

        Reference<IVXComparable> comparable(view.get());
        EXPECT_EQ(comparable != nullptr, row.isComparable) << row.name;

        void* none = &none;
        EXPECT_EQ(view->QueryInterface(UNKNOWN_INTERFACE, &none), RESULT_NO_INTERFACE) << row.name;
        EXPECT_EQ(none, nullptr) << row.name;
        EXPECT_EQ(view->QueryInterface(row.iid, nullptr), RESULT_POINTER) << row.name;
        EXPECT_EQ(row.object->GetRefCount(), comparable != nullptr ? 4U : 3U) << row.name;
    }
}

TEST(QueryInterfaceMap, WalksItsRowsInOrder)
{
    using vorb::InterfaceData;
    // The function of a row returns its data as the result; 0 means that it has answered.
    const auto give = [](ComObject* object, const _GUID&, void** out, std::uintptr_t data) {
        *out = object;
        return static_cast<std::int32_t>(data);
    };
    constexpr auto refused = static_cast<std::uintptr_t>(static_cast<std::uint32_t>(RESULT_INVALID_ARGUMENT));
    const _GUID* const asked = &UNKNOWN_INTERFACE;
    const _GUID* const other = &IVXComparable::IID;
    const InterfaceData end = vorb::endRow(), view {asked, vorb::displacementMarker(), 0};
    struct {
        const char* name;
        InterfaceData map[4];
        std::int32_t result;
        bool isFilled;
        std::uint32_t count;
    } cases[] = {
        {"no rows", {end, view, end}, RESULT_NO_INTERFACE, false, 1},
        {"no row matches", {{other, give, 0}, end}, RESULT_NO_INTERFACE, false, 1},
        {"a view is counted", {{other, give, refused}, view, end}, RESULT_OK, true, 2},
        {"a function counts itself", {{asked, give, 0}, view, end}, RESULT_OK, true, 1},
        {"a named row ends the walk when it fails", {{asked, give, refused}, view, end}, RESULT_INVALID_ARGUMENT, true,
            1},
        {"a chain does not", {{nullptr, give, refused}, view, end}, RESULT_OK, true, 2},
        {"nor does a success with a meaning", {{asked, give, 1}, view, end}, RESULT_OK, true, 2},
        {"a chain that fails last", {{nullptr, give, refused}, end}, RESULT_NO_INTERFACE, false, 1},
        {"a chain answers before a later row", {{nullptr, give, 0}, {asked, give, refused}, end}, RESULT_OK, true, 1},
    };
    for (const auto& row : cases) {
        const Reference<Object> object(new Object);
        void* out = nullptr;
        EXPECT_EQ(vorb::QueryInterfaceMap(row.map, object.get(), UNKNOWN_INTERFACE, &out), row.result) << row.name;
        EXPECT_EQ(out != nullptr, row.isFilled) << row.name;
        EXPECT_EQ(object->GetRefCount(), row.count) << row.name;
        if (row.count == 2)
            object->Release();

        const Reference<IVXUnknown> root(object->GetUnknown());
        EXPECT_EQ(vorb::QueryInterfaceMap(row.map, object.get(), IVXUnknown::IID, &out), RESULT_OK) << row.name;
        EXPECT_EQ(out, root.get()) << row.name;
        root->Release();
    }
}

TEST(ComObject, HoldsOneLockOfItsModuleWhileItIsShared)
{
    vorb::Module module(nullptr);
    class Member : public Watched {
    public:
        explicit Member(vorb::Module& owner)
            : m_owner(owner)
        {
            SetComModule(&owner);
        }
        ~Member() noexcept override { EXPECT_EQ(m_owner.GetRefCount(), 0U) << "released before the destructor runs"; }

    private:
        vorb::Module& m_owner;
    };
    auto* member = new Member(module);
    EXPECT_EQ(module.GetRefCount(), 0U);
    for (const std::uint32_t count : {1U, 2U, 3U})
        EXPECT_TRUE(member->AddRef() == count && module.GetRefCount() == 1) << count;
    EXPECT_EQ(member->Release(), 2U);
    EXPECT_EQ(member->InternalRelease(), 1U);
    EXPECT_EQ(member->InternalRelease(), 0U) << "and neither the object nor the module's lock is gone";
    EXPECT_EQ(module.GetRefCount(), 1U);
    EXPECT_EQ(member->AddRef(), 1U);
    EXPECT_EQ(module.GetRefCount(), 2U) << "the way from 0 to 1 takes the lock again";
    module.Release();
    EXPECT_EQ(member->InternalAddRef(), 2U);
    EXPECT_EQ(member->InternalRelease(), 1U);
    EXPECT_EQ(member->Release(), 0U);
    EXPECT_EQ(module.GetRefCount(), 0U);
}

TEST(ComObject, IsDestroyedOnceThoughItsDestructorHandsItOut)
{
    class HandsOut : public Watched {
    public:
        using Watched::Watched;
        ~HandsOut() noexcept override { const Reference<Object> moment(this); }
    };
    std::string events;
    Reference<Object>(new HandsOut(&events));
    EXPECT_EQ(events, "+-+-~");
}

/// Records its number when it is destroyed, releases the left object and then the right one.
class Branch : public Object {
public:
    ~Branch() noexcept(false) override
    {
        s_order.push_back(number);
        left = nullptr;
        right = nullptr;
        if (number % 7 == 0) // the root as well
            throw IllegalStateException();
    }

    int number = 0;
    Reference<Branch> left, right;
    static inline std::vector<int> s_order;
};

TEST(ComObject, IsDestroyedInTheOrderOfReleasesHoweverDeepItLies)
{
    constexpr int DEPTH = 100'000; // more than a stack has room for
    for (const auto& [deep, flat] :
        {std::pair(&Branch::left, &Branch::right), std::pair(&Branch::right, &Branch::left)}) {
        std::vector<int> wanted(2 * DEPTH + 1);
        std::iota(wanted.begin(), wanted.end(), 0);
        Branch::s_order.clear();
        Reference<Branch> root(new Branch);
        Branch* branch = root.get();
        for (int depth = 1; depth <= DEPTH; ++depth) {
            branch->*deep = new Branch;
            branch->*flat = new Branch;
            const bool isFlatFirst = flat == &Branch::left;
            (branch->*flat)->number = isFlatFirst ? 2 * depth - 1 : 2 * DEPTH + 1 - depth;
            (branch->*deep)->number = isFlatFirst ? 2 * depth : depth;
            branch = (branch->*deep).get();
        }
        EXPECT_NO_THROW(root = nullptr);
        EXPECT_TRUE(Branch::s_order == wanted);
    }
}

TEST(ComObject, IsCopiedWithItsCountAndModuleWhereAnObjectStartsFresh)
{
    vorb::Module module(nullptr);
    const auto expectCopies = [&]<class T>(const T&, std::uint32_t count, const vorb::Module* owner) {
        T first;
        first.SetComModule(&module);
        first.AddRef();
        const T copy(first);
        T assigned;
        assigned = first;
        for (const T* each : {&copy, &std::as_const(assigned)}) {
            EXPECT_EQ(each->GetRefCount(), count);
            EXPECT_EQ(each->GetComModule(), owner);
        }
        first = T();
        EXPECT_EQ(first.GetRefCount(), 1U - count) << "an object keeps its own";
        EXPECT_EQ(first.GetComModule(), owner == nullptr ? &module : nullptr);
    };
    expectCopies(ComObject(), 1, &module);
    expectCopies(Object(), 0, nullptr);
}

template <std::size_t alignment>
struct alignas(alignment) Aligned : Object {
};

TEST(ComObject, LiesWhereItsAlignmentAsksFor)
{
    const auto expectAligned = []<class T>(const T&) {
        Reference<Object> objects[20];
        for (Reference<Object>& object : objects) {
            object = new T;
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.get()) % alignof(T), 0U) << alignof(T);
        }
        std::vector<T, vxsys::Allocator<T>> row(3);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(row.data()) % alignof(T), 0U) << alignof(T);
    };
    expectAligned(Object()), expectAligned(Aligned<32>());
    expectAligned(Aligned<256>()), expectAligned(Aligned<4096>());
}

TEST(Object, ClonesItsExactTypeOnlyAndComparesByAddress)
{
    Object objects[3];
    const Reference<Object> copy(objects[0].clone());
    EXPECT_EQ(copy->GetRefCount(), 1U);
    EXPECT_FALSE(copy->equals(objects[0]));
    EXPECT_EQ(saidBy<CloneNotSupportedException>([] { Watched().clone(); }), "");
    for (const int other : {0, 1, 2})
        EXPECT_EQ(objects[1].compareTo(objects[other]), 1 - other);
    EXPECT_TRUE(objects[1].equals(objects[1]) && !objects[1].equals(objects[0]));
    EXPECT_EQ(objects[1].hashCode(), static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&objects[1])));
    // Foreign components are compared by address.
    struct {
        Foreign below;
        Object object;
        Foreign above;
    } row;
    IVXComparable* view = &row.object;
    const std::pair<const IVXUnknown*, int> cases[]
        = {{nullptr, -1}, {&row.below, -1}, {&row.above, 1}, {row.object.GetUnknown(), 0}, {view, 0}};
    for (const auto& [other, wanted] : cases) {
        int order = 7;
        EXPECT_EQ(view->CompareTo(other, &order), RESULT_OK) << wanted;
        EXPECT_EQ(order, wanted);
    }
}

TEST(Object, TurnsWhatItsOperationsThrowIntoResults)
{
    class Fails : public Object {
    public:
        std::uint32_t hashCode() const override { throw ResultException(RESULT_END_OF_FILE); }
    };
    Fails object;
    std::uint32_t hash = 7;
    EXPECT_EQ(static_cast<IVXComparable&>(object).HashCode(&hash), RESULT_END_OF_FILE);
    EXPECT_EQ(hash, 0U);
}

TEST(Reference, CountsTheNewObjectBeforeItReleasesTheOld)
{
    std::string events;
    Reference<Watched> reference(new Watched(&events));
    events.clear();
    Watched* const only = reference.get();
    reference = only;
    EXPECT_EQ(events, "+-") << "alive though nothing else holds it";
    reference = static_cast<const Reference<Watched>&>(reference);
    EXPECT_EQ(events, "+-+-");
    Reference<Watched>& itself = reference;
    reference = std::move(itself);
    EXPECT_EQ(reference, only);
    auto* kept = new Watched(&events);
    reference->keeps = kept;
    events.clear();
    reference = static_cast<Watched*>(reference->keeps.get());
    EXPECT_EQ(events, "+-~-") << "what the old object alone kept alive stays";
    EXPECT_EQ(kept->GetRefCount(), 1U);
}

} // namespace
