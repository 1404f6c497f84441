#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "vx/Class.h"
#include "vx/ClassManagerBase.h"
#include "vx/GlobalLock.h"
#include "vx/NumberBoxes.h"
#include "vx/exec/IRunnable.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/math/BigInteger.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/Semaphore.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/vorb/Module.h"

#include <string>
#include <typeinfo>
#include <vector>

using namespace vx;

namespace {

TEST(Class, IsFoundByNameAndTypeAndCreatesWhatItCan)
{
    const struct {
        const char16_t* name;
        const std::type_info& type;
        bool isCreatable;
    } cases[] = {
        // most of them have names that are not those of their types
        {u"vx::Class", typeid(Class), false},
        {u"CVXComObject", typeid(ComObject), false},
        {u"CVXSyncObject", typeid(sync::Object), false},
        {u"CVXLockObject", typeid(sync::LockObject), false},
        {u"CVXRWLock", typeid(sync::ReaderWriterLock), true},
        {u"CVXRunnable", typeid(exec::IRunnable), false},
        {u"CVXComDllModule", typeid(vorb::DllModule), false},
        {u"CVXAbstractCharBuffer", typeid(util::AbstractCharBuffer), false},
        {u"vx::MathErrorException", typeid(MathErrorException), false},
        {u"vx::IntErrorException", typeid(IntErrorException), true},
        {u"CVXByteArrayOutputStream", typeid(io::ByteArrayOutputStream), true},
        {u"CVXSemaphore", typeid(sync::Semaphore), true},
        {u"CVXString", typeid(String), true},
        {u"CVXNumber", typeid(Number), false},
        {u"CVXBigInteger", typeid(math::BigInteger), true},
    };
    for (const auto& row : cases) {
        const String name(row.name);
        const Class* record = Class::forName(row.name);
        EXPECT_EQ(record->getName(), name);
        EXPECT_EQ(record, Class::forType(&row.type)) << name;
        EXPECT_EQ(record->isInstance(*record), name == u"vx::Class") << name;
        if (!row.isCreatable) {
            EXPECT_EQ(saidBy<IllegalAccessException>([&] { record->createInstance(); }), "") << name;
            continue;
        }
        const Reference<Object> object(record->createInstance());
        ASSERT_NE(object, nullptr) << name;
        EXPECT_EQ(object->GetRefCount(), 1U) << name;
        EXPECT_TRUE(record->isInstance(*object) && object->getClass() == record) << name;
    }
    class Derived : public String { };
    EXPECT_FALSE(Class::forName(u"CVXString")->isInstance(Derived())) << "but the exact type";
    EXPECT_FALSE(Class(u"nothing", nullptr, nullptr).isInstance(Object()));
}

sync::LockObject* g_lock = nullptr;
int g_instances = 0;
bool g_fails = false;

struct Single {
    Single()
    {
        if (g_fails)
            throw IllegalStateException();
        ++g_instances;
    }
    ~Single() { --g_instances; }
};

TEST(Class, TellsWhatItDidNotFind)
{
    for (const char16_t* name : {u"CVXstring", u"vx::Object", u"", static_cast<const char16_t*>(nullptr)})
        EXPECT_EQ(saidBy<ClassNotFoundException>([&] { Class::forName(name); }), String(name).toUtf8());
    EXPECT_EQ(saidBy<ClassNotFoundException>([] { Class::forType(&typeid(Single)); }), "(anonymous namespace)::Single");
    EXPECT_THROW(Class::forType(nullptr), ClassNotFoundException);
}

TEST(ClassManagerBase, KeepsTheFirstRegistration)
{
    ClassManagerBase manager;
    manager.registerClass(u"first", &typeid(int), []() -> Object* { return new Object; });
    const Class* first = manager.lookupName(u"first");
    manager.registerClass(u"first", &typeid(long), nullptr);
    EXPECT_EQ(manager.lookupName(u"first"), first);
    EXPECT_NO_THROW(Reference<Object>(first->createInstance()));
    EXPECT_THROW(manager.lookupType(&typeid(long)), ClassNotFoundException) << "the later type was dropped";

    manager.registerClass(u"second", &typeid(int), nullptr);
    EXPECT_THROW(manager.lookupName(u"second")->createInstance(), IllegalAccessException);
    EXPECT_EQ(manager.lookupType(&typeid(int)), first) << "a type keeps its first name";
    EXPECT_EQ(first->GetRefCount(), 2U) << "one for each map";

    const Reference<const Class> kept(first);
    for (const char16_t* name : {u"second", u"first", u"first", static_cast<const char16_t*>(nullptr)})
        manager.unregisterClass(name);
    EXPECT_THROW(manager.lookupName(u"first"), ClassNotFoundException);
    EXPECT_THROW(manager.lookupType(&typeid(int)), ClassNotFoundException);
    EXPECT_EQ(kept->GetRefCount(), 1U);
    manager.registerClass(u"first", &typeid(int), nullptr);
    EXPECT_EQ(manager.lookupType(&typeid(int))->getName(), String(u"first"));

    EXPECT_THROW(manager.registerClass(nullptr, &typeid(int), nullptr), ResultException);
    EXPECT_THROW(manager.registerClass(u"third", nullptr, nullptr), ResultException);
    EXPECT_THROW(manager.lookupName(u"third"), ClassNotFoundException);
}

TEST(ClassManagerBase, FindsEachOfManyNamesWhileOthersComeAndGo)
{
    constexpr int NAMES = 1500;
    ClassManagerBase manager;
    Random random;
    std::vector<std::u16string> names; // which outlive their records
    for (int number = 0; number < NAMES; ++number)
        names.push_back(u"test::" + std::u16string(static_cast<std::size_t>(number % 30), u'C')
            + static_cast<char16_t>(u'a' + number));
    std::vector<char> isKnown(NAMES);
    for (int step = 0; step < 4 * NAMES; ++step) {
        const int number = random.below(NAMES);
        const char16_t* const name = names[static_cast<std::size_t>(number)].c_str();
        char& known = isKnown[static_cast<std::size_t>(number)];
        if (known != 0)
            ASSERT_EQ(manager.lookupName(name)->getName(), name);
        else
            ASSERT_THROW(manager.lookupName(name), ClassNotFoundException);
        known = static_cast<char>(random.below(3) != 0);
        if (known != 0)
            manager.registerClass(name, &typeid(int), nullptr);
        else
            manager.unregisterClass(name);
    }
}

/// Those of a library that was unloaded without its registrations may be gone.
TEST(ClassManagerBase, ReadsNoNameOfAnotherHashWhenItRemovesOne)
{
    constexpr int NAMES = 200;
    ClassManagerBase manager;
    std::vector<std::u16string> names;
    for (int number = 0; number < NAMES; ++number)
        names.push_back(u"test::" + std::u16string(1, static_cast<char16_t>(u'a' + number)));
    for (const std::u16string& name : names)
        manager.registerClass(name.c_str(), &typeid(int), nullptr);
    const std::vector<std::u16string> original = names;
    for (std::size_t removed = names.size(); removed-- > 0;) { // the last ones are after rows of other hashes
        for (std::u16string& name : names)
            std::ranges::copy(original[removed], name.begin()); // in its place
        manager.unregisterClass(names[removed].c_str());
        ASSERT_THROW(manager.lookupName(names[removed].c_str()), ClassNotFoundException);
        for (std::size_t number = 0; number < names.size(); ++number)
            std::ranges::copy(original[number], names[number].begin());
        manager.registerClass(names[removed].c_str(), &typeid(int), nullptr);
    }
}

TEST(ClassRegistration, MakesAClassOfTheProgramKnownForAsLongAsItLives)
{
    class Own : public Object { };
    const auto create = []() -> Object* { return new Own; };
    const auto isKnown = [](const Own& own) {
        try {
            return own.getClass() == Class::forName(u"test::Own") && own.toString().startsWith(u"test::Own@");
        } catch (const ClassNotFoundException&) {
            return false;
        }
    };
    const Own own;
    EXPECT_FALSE(isKnown(own));
    for (int round = 0; round < 2; ++round) {
        const ClassRegistration registration(u"test::Own", &typeid(Own), create);
        EXPECT_TRUE(isKnown(own));
        EXPECT_TRUE(isKnown(dynamic_cast<Own&>(*Reference<Object>(Class::forName(u"test::Own")->createInstance()))));
        EXPECT_FALSE(ClassRegistration(u"test::Own", &typeid(Own), create).isRegistered());
        EXPECT_TRUE(isKnown(own)) << "the first stands";
    }
    EXPECT_FALSE(isKnown(own));
    ClassManager::getInstance()->registerClass(u"test::Own", &typeid(Own), create);
    EXPECT_TRUE(isKnown(own));
    ClassRegistration(u"CVXString", &typeid(Own), create);
    EXPECT_TRUE(Class::forName(u"CVXString")->isInstance(String()));
    ClassManager::getInstance()->unregisterClass(u"test::Own");
    EXPECT_FALSE(ClassRegistration(u"none", nullptr, create).isRegistered());
}

using Holder = util::Singleton<Single, &g_lock>;

TEST(Singleton, LivesFromTheFirstUseToTheFree)
{
    EXPECT_THROW(Holder::getInstance(), IllegalStateException) << "there is no lock yet";
    EXPECT_NO_THROW(Holder::freeInstance()) << "nothing to free needs no lock";
    sync::Mutex lock;
    g_lock = &lock;

    g_fails = true;
    EXPECT_THROW(Holder::getInstance(), IllegalStateException);
    g_fails = false;
    for (int round = 0; round < 2; ++round) {
        Single* seen[4] {}; // a failed creation has released the lock
        inThreads(4, [&seen](int thread) { seen[thread] = Holder::getInstance(); });
        EXPECT_EQ(g_instances, 1);
        for (const Single* instance : seen)
            EXPECT_EQ(instance, Holder::getInstance());

        g_lock = nullptr;
        EXPECT_NO_THROW(Holder::getInstance()) << "an instance that is there needs no lock";
        EXPECT_THROW(Holder::freeInstance(), IllegalStateException);
        g_lock = &lock;
        Holder::freeInstance();
        Holder::freeInstance();
        EXPECT_EQ(g_instances, 0);
    }
    g_lock = nullptr;
}

} // namespace
