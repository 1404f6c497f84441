#include "tests/Outcome.h"
#include "tests/Slots.h"
#include "tests/Threads.h"
#include "vx/Class.h"
#include "vx/ClassManagerBase.h"
#include "vx/Exceptions.h"
#include "vx/GlobalLock.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/exec/IRunnable.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/util/Singleton.h"
#include "vx/vorb/Module.h"

#include <gtest/gtest.h>

#include <iterator>
#include <typeinfo>
#include <utility>

using namespace vx;

namespace {

// clang-format off
/// Classes that can be created by name.
constexpr const char16_t* CREATABLE[] = {
    u"CVXArrayList", u"CVXBigDecimal", u"CVXBigInteger", u"CVXByteArrayOutputStream", u"CVXEvent", u"CVXFakeMutex",
    u"CVXGate", u"CVXHashMap", u"CVXLinkedList", u"CVXMTByteBuffer", u"CVXMTCharBuffer", u"CVXMutex",
    u"CVXNullOutputStream", u"CVXNullWriter", u"CVXObject", u"CVXROByteBuffer", u"CVXROCharBuffer",
    u"CVXRWByteBuffer", u"CVXRWCharBuffer", u"CVXRWLock", u"CVXSemaphore", u"CVXStdioInputStream",
    u"CVXStdioOutputStream", u"CVXString", u"CVXStringWriter", u"vx::CastFailedException",
    u"vx::ClassNotFoundException", u"vx::CloneNotSupportedException", u"vx::Exception", u"vx::IllegalAccessException",
    u"vx::IllegalStateException", u"vx::IntDivByZeroException", u"vx::IntErrorException", u"vx::IntOverflowException",
    u"vx::text::charset::InvalidCharacterException", u"vx::InvalidPathException", u"vx::io::IoException",
    u"vx::io::TimeoutException", u"vx::OutOfMemoryException", u"vx::RangeErrorException", u"vx::ReadOnlyException",
    u"vx::io::UnexpectedEOFException", u"vx::text::charset::UnknownEncodingException",
    u"vx::text::charset::UnmappableCharacterException", u"vx::UnsupportedOperationException",
    u"vx::text::charset::CTBASCII", u"vx::text::charset::BTCASCII", u"vx::text::charset::CTBISO8859_1",
    u"vx::text::charset::BTCISO8859_1", u"vx::text::charset::CTBCP437", u"vx::text::charset::BTCCP437",
    u"vx::text::charset::CTBCP1252", u"vx::text::charset::BTCCP1252", u"vx::text::charset::BTCUTF8",
    u"vx::text::charset::CTBUTF8", u"vx::text::charset::CTBUTF16LE", u"vx::text::charset::BTCUTF16LE",
    u"vx::text::charset::CTBUTF16BE", u"vx::text::charset::BTCUTF16BE", u"vx::text::charset::CTBUTF32LE",
    u"vx::text::charset::BTCUTF32LE", u"vx::text::charset::CTBUTF32BE", u"vx::text::charset::BTCUTF32BE",
    u"vx::text::charset::BTCAMP7", u"vx::text::charset::CTBAMP7",
};

/// Classes that are known by name and no more.
constexpr const char16_t* KNOWN[] = {
    u"CVXAbstractByteBuffer", u"CVXAbstractCharBuffer", u"CVXAlphaNumInputStream", u"CVXAlphaNumOutputStream",
    u"CVXAtomic", u"CVXBitInputStream", u"CVXBitOutputStream", u"CVXBTCSingleByte", u"CVXBTCSingleByteTable",
    u"CVXBufferedInputStream", u"CVXBufferedOutputStream", u"CVXBufferedReader", u"CVXBufferedWriter",
    u"CVXByteArrayInputStream", u"CVXByteToCharConverter", u"CVXCharToByteConverter", u"vx::Class",
    u"CVXCTBSingleByte", u"CVXCTBSingleByteTable", u"CVXCollection", u"vx::vorb::ClassFactory", u"CVXComDllModule",
    u"CVXComObject", u"CVXComparator", u"CVXConstIterator", u"CVXConstListIterator", u"CVXDataInputStream",
    u"CVXDataOutputStream", u"CVXDouble", u"vx::sync::FakeAtomic", u"CVXFilePath", u"CVXFilterInputStream",
    u"CVXFilterOutputStream", u"CVXFilterReader", u"CVXFilterWriter", u"CVXFloat", u"CVXGuid", u"CVXInputStream",
    u"CVXInputStreamReader", u"CVXInteger16", u"CVXInteger32", u"CVXInteger64", u"CVXInteger8", u"CVXIterator",
    u"CVXList", u"CVXListIterator", u"CVXLocale", u"CVXLockObject", u"CVXMap", u"CVXNumber", u"CVXOutputStream",
    u"CVXOutputStreamWriter", u"CVXPrintWriter", u"CVXReader", u"CVXResourceBundle", u"CVXRunnable", u"CVXSet",
    u"CVXSignedInteger", u"vx::i18n::StringMapBundle", u"CVXSyncObject", u"vx::net::TcpServerSocket",
    u"vx::net::TcpSocket", u"CVXThread", u"CVXUInteger16", u"CVXUInteger32", u"CVXUInteger64", u"CVXUInteger8",
    u"CVXUnsignedInteger", u"CVXWriter", u"vx::AccessViolationException", u"vx::ArrayBoundsException",
    u"vx::ExternalException", u"vx::IllegalInstructionException", u"vx::MathDivByZeroException",
    u"vx::MathErrorException", u"vx::MathInvalidOpException", u"vx::MathOverflowException",
    u"vx::MathUnderflowException", u"vx::StackOverflowException", u"vx::UserAbortException",
};
// clang-format on
static_assert(std::size(CREATABLE) + std::size(KNOWN) == 145);

TEST(Class, CreatesByNameWhatCanBeCreatedAndRefusesTheOthers)
{
    expectSlots("Class", 11, {&Class::getName, &Class::isInstance, &Class::createInstance});
    for (const char16_t* name : CREATABLE) {
        const Class* record = Class::forName(name);
        EXPECT_EQ(record->getName(), String(name));
        const Reference<Object> object(record->createInstance());
        ASSERT_NE(object, nullptr) << String(name);
        EXPECT_EQ(object->GetRefCount(), 1U) << String(name);
        EXPECT_TRUE(record->isInstance(*object)) << String(name);
        EXPECT_EQ(object->getClass(), record) << String(name);
        EXPECT_FALSE(record->isInstance(*record)) << String(name);
    }
    class Derived : public String { };
    EXPECT_FALSE(Class::forName(u"CVXString")->isInstance(Derived())) << "but the exact type";
    for (const char16_t* name : KNOWN) {
        const Class* record = Class::forName(name);
        EXPECT_EQ(record->getName(), String(name));
        EXPECT_EQ(saidBy<IllegalAccessException>([&] { record->createInstance(); }), "") << String(name);
    }
}

TEST(Class, GoesByTheNameThatIsNotTheTypes)
{
    const std::pair<const std::type_info&, const char16_t*> cases[]
        = {{typeid(Class), u"vx::Class"}, {typeid(ComObject), u"CVXComObject"},
            {typeid(sync::Object), u"CVXSyncObject"}, {typeid(sync::LockObject), u"CVXLockObject"},
            {typeid(sync::ReaderWriterLock), u"CVXRWLock"}, {typeid(exec::IRunnable), u"CVXRunnable"},
            {typeid(vorb::DllModule), u"CVXComDllModule"}, {typeid(util::AbstractCharBuffer), u"CVXAbstractCharBuffer"},
            {typeid(MathErrorException), u"vx::MathErrorException"}};
    for (const auto& row : cases) {
        EXPECT_EQ(Class::forType(&row.first)->getName(), String(row.second));
        EXPECT_EQ(Class::forType(&row.first), Class::forName(row.second)) << String(row.second);
    }
    EXPECT_EQ(Class::forName(u"CVXObject")->getClass(), Class::forName(u"vx::Class")) << "a record is an object";
}

struct LocalType { };

TEST(Class, TellsWhatItDidNotFind)
{
    const std::pair<const char16_t*, const char*> names[]
        = {{u"CVXstring", "CVXstring"}, {u"vx::Object", "vx::Object"}, {u"", ""}, {nullptr, ""}};
    for (const auto& row : names)
        EXPECT_EQ(saidBy<ClassNotFoundException>([&] { Class::forName(row.first); }), row.second);
    EXPECT_EQ(
        saidBy<ClassNotFoundException>([] { Class::forType(&typeid(LocalType)); }), "(anonymous namespace)::LocalType");
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

    EXPECT_THROW(manager.registerClass(nullptr, &typeid(int), nullptr), ResultException);
    EXPECT_THROW(manager.registerClass(u"third", nullptr, nullptr), ResultException);
    EXPECT_THROW(manager.lookupName(u"third"), ClassNotFoundException);
}

sync::LockObject* g_lock = nullptr;
int g_instances = 0;
bool g_fails = false;

class Single {
public:
    Single()
    {
        if (g_fails)
            throw IllegalStateException(u"of its own");
        ++g_instances;
    }
    ~Single() { --g_instances; }
};

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
        Single* seen[4] {}; // who get it wait for a lock that a failed creation left free
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

TEST(Library, HasAGlobalLockWhileItRuns)
{
    ASSERT_NE(g_pGlobalLock, nullptr);
    EXPECT_EQ(g_pGlobalLock->getClass(), Class::forName(u"CVXMutex"));
    EXPECT_TRUE(g_pGlobalLock->tryWait());
    g_pGlobalLock->signal();
}

} // namespace
