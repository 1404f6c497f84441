#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "vx/Object.h"
#include "vx/vorb/ClassFactory.h"
#include "vx/vorb/Component.h"
#include "vx/vorb/Module.h"

#include <atomic>

using namespace vx;
using namespace vx::vorb;

namespace {

constexpr _GUID FIRST_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr _GUID SECOND_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 12}};
constexpr _GUID UNKNOWN_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 13}};

std::atomic<int> g_factoriesMade {0};
std::string g_events;

std::int32_t createFactory(Module* module, InstanceCreator creator, const _GUID& iid, void** out)
{
    ++g_factoriesMade;
    return createComponentFactory(module, creator, iid, out);
}

constexpr FactoryCreator FAILS
    = [](Module*, InstanceCreator, const _GUID&, void**) -> std::int32_t { return RESULT_END_OF_FILE; };
constexpr FactoryCreator THROWS
    = [](Module*, InstanceCreator, const _GUID&, void**) -> std::int32_t { throw OutOfMemoryException(); };

/// A module and its table. The last row only ends it.
struct Library {
    explicit Library(FactoryCreator firstCreator = createFactory)
        : table {row(FIRST_CLASS, firstCreator), row(SECOND_CLASS, createFactory), {}}
        , module(table)
    {
        g_factoriesMade = 0;
    }

    static ClassData row(const _GUID& classId, FactoryCreator creator)
    {
        return {&classId, createComponent<Object>, creator, ComObject::GetComProgID, ComObject::GetComDescription,
            ComObject::GetComVersionIndependentProgID, nullptr};
    }

    std::int32_t get(const _GUID& classId, Reference<IVXClassFactory>& factory)
    {
        return module.GetClassObject(classId, IVXClassFactory::IID, factory.outVoid());
    }

    ClassData table[3];
    Module module;
};

TEST(Module, MakesOneFactoryForAClassAndKeepsIt)
{
    Library library;
    Reference<IVXClassFactory> first, second, got[4];
    inThreads(4, [&](int thread) { EXPECT_EQ(library.get(FIRST_CLASS, got[thread]), RESULT_OK); });
    EXPECT_EQ(library.get(FIRST_CLASS, first), RESULT_OK);
    EXPECT_EQ(g_factoriesMade, 1) << "though threads ask at once";
    for (const auto& again : got)
        EXPECT_EQ(first, again);
    EXPECT_TRUE(library.get(SECOND_CLASS, second) == RESULT_OK && second != first);
    void* none = &none;
    EXPECT_EQ(library.module.GetClassObject(SECOND_CLASS, IVXComparable::IID, &none), RESULT_NO_INTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_NE(library.table[1].factory, nullptr) << "the factory stays";
    EXPECT_EQ(g_factoriesMade, 2);
    EXPECT_EQ(library.module.CanUnloadNow(), RESULT_OK) << "these factories keep no library";
}

TEST(Module, SaysWhyThereIsNoFactory)
{
    Library library, failing(FAILS), throwing(THROWS), incomplete(nullptr);
    Module noTable(nullptr);
    ClassData emptyTable {};
    Module noRows(&emptyTable);
    const std::tuple<const char*, Module&, const _GUID&, std::int32_t> cases[] = {
        {"unknown class", library.module, UNKNOWN_CLASS, RESULT_CLASS_NOT_AVAILABLE},
        {"no table", noTable, FIRST_CLASS, RESULT_CLASS_NOT_AVAILABLE},
        {"no rows", noRows, FIRST_CLASS, RESULT_CLASS_NOT_AVAILABLE},
        // The rows after a failed one are asked too, and the last answer is the result.
        {"a creator that fails", failing.module, FIRST_CLASS, RESULT_CLASS_NOT_AVAILABLE},
        {"a creator that throws", throwing.module, FIRST_CLASS, RESULT_CLASS_NOT_AVAILABLE},
        {"no creator", incomplete.module, FIRST_CLASS, RESULT_CLASS_NOT_AVAILABLE},
        {"the class after it", failing.module, SECOND_CLASS, RESULT_OK},
    };
    for (const auto& [name, module, classId, result] : cases) {
        Reference<IVXUnknown> factory;
        void* out = &out;
        EXPECT_EQ(module.GetClassObject(classId, IVXUnknown::IID, &out), result) << name;
        EXPECT_EQ(out != nullptr, result == RESULT_OK) << name;
        factory.attach(static_cast<IVXUnknown*>(out));
        EXPECT_EQ(module.GetClassObject(classId, IVXUnknown::IID, nullptr), RESULT_POINTER) << name;
    }
    for (const FactoryCreator creator : {FAILS, THROWS}) {
        ClassData table[] = {Library::row(FIRST_CLASS, creator), {}};
        Module module(table);
        void* out = nullptr;
        EXPECT_EQ(module.GetClassObject(FIRST_CLASS, IVXUnknown::IID, &out),
            creator == FAILS ? RESULT_END_OF_FILE : RESULT_OUT_OF_MEMORY);
        table[0].factoryCreator = createFactory;
        EXPECT_EQ(module.GetClassObject(FIRST_CLASS, IVXUnknown::IID, &out), RESULT_OK) << "the next try may do better";
        static_cast<IVXUnknown*>(out)->Release();
    }
}

TEST(Module, StaysWhileAnObjectOrALockKeepsIt)
{
    Library library;
    Module& module = library.module;
    Reference<IVXClassFactory> factory;
    ASSERT_EQ(library.get(FIRST_CLASS, factory), RESULT_OK);
    EXPECT_EQ(module.CanUnloadNow(), RESULT_OK);

    Reference<IVXComparable> object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IVXComparable::IID, object.outVoid()), RESULT_OK);
    EXPECT_TRUE(module.CanUnloadNow() == RESULT_FALSE && module.GetRefCount() == 1);
    object = nullptr;
    EXPECT_EQ(module.CanUnloadNow(), RESULT_OK);

    for (const std::int16_t lock : {1, -1, 0})
        EXPECT_EQ(factory->LockServer(lock), RESULT_OK);
    EXPECT_EQ(module.AddRef(), 2U);
    EXPECT_TRUE(module.Release() == 1 && module.CanUnloadNow() == RESULT_FALSE);
}

TEST(ComponentFactory, GivesBackNoLockThatItDidNotTake)
{
    Module module(nullptr);
    Reference<IVXClassFactory> factory; // the only reference to it
    const auto create = createComponent<Object>;
    ASSERT_EQ(createComponentFactory(&module, create, IVXClassFactory::IID, factory.outVoid()), RESULT_OK);
    module.AddRef();
    factory = nullptr;
    EXPECT_EQ(module.GetRefCount(), 1U);
}

TEST(Module, ReleasesItsFactoriesAtItsEnd)
{
    struct TellsItsEnd : ClassFactory {
        ~TellsItsEnd() noexcept(false) override { g_events += "factory gone "; }
    };
    const FactoryCreator creator = [](Module*, InstanceCreator, const _GUID& iid, void** out) {
        return (new TellsItsEnd)->QueryInterface(iid, out);
    };
    g_events.clear();
    ClassData table[] = {Library::row(FIRST_CLASS, creator), Library::row(SECOND_CLASS, creator), {}};
    {
        DllModule module(table);
        for (const _GUID& classId : {FIRST_CLASS, SECOND_CLASS})
            EXPECT_EQ(module.GetClassObject(classId, IVXUnknown::IID, Reference<IVXUnknown>().outVoid()), RESULT_OK);
        EXPECT_EQ(g_events, "");
    }
    EXPECT_EQ(g_events, "factory gone factory gone ");
    EXPECT_EQ(table[0].factory, nullptr) << "another module may use the table";
}

TEST(ClassFactory, ChecksWhatItIsAsked)
{
    Module module(nullptr);
    const Reference<ClassFactory> factory(new ClassFactory);
    IVXClassFactory& view = *factory;
    Object outer;
    void* out = &out;
    EXPECT_EQ(view.CreateInstance(nullptr, IVXUnknown::IID, &out), RESULT_FAIL) << "it has no creator";
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(view.LockServer(1), RESULT_FAIL);

    factory->SetComModule(&module);
    factory->SetCreateInstanceQIFunc([](Module* given, IVXUnknown* aggregating, const _GUID& iid, void** place) {
        EXPECT_TRUE(iid == IVXUnknown::IID);
        *place = aggregating;
        return given->GetRefCount() == 0 ? RESULT_FALSE : RESULT_FAIL;
    });
    out = &out;
    EXPECT_EQ(view.CreateInstance(outer.GetUnknown(), IVXComparable::IID, &out), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(view.CreateInstance(outer.GetUnknown(), IVXUnknown::IID, &out), RESULT_FALSE) << "as the creator has it";
    EXPECT_EQ(out, outer.GetUnknown());

    factory->SetCreateInstanceQIFunc(
        [](Module*, IVXUnknown*, const _GUID&, void**) -> std::int32_t { throw OutOfMemoryException(); });
    EXPECT_EQ(view.CreateInstance(nullptr, IVXUnknown::IID, &out), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(out, nullptr);
    out = &out;
    EXPECT_EQ(createComponent<Object>(nullptr, outer.GetUnknown(), IVXUnknown::IID, &out), RESULT_NO_AGGREGATION);
    EXPECT_EQ(out, nullptr);
    out = &out;
    EXPECT_EQ(createComponentFactory(nullptr, nullptr, IVXComparable::IID, &out), RESULT_NO_INTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(createComponentFactory(nullptr, nullptr, IVXUnknown::IID, nullptr), RESULT_POINTER);
}

template <class Path>
concept RegistersServer = requires(Module& module, const Path& path)
{
    module.RegisterServer(path);
};
static_assert(RegistersServer<char16_t[2]> && RegistersServer<const void*>);
static_assert(!RegistersServer<char[2]> && !RegistersServer<char8_t[2]> && !RegistersServer<wchar_t[2]>);

} // namespace
