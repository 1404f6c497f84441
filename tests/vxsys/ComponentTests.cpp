#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vxsys/Component.h"
#include "vxsys/Module.h"
#include "vxsys/Registry.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace {

using namespace vxsys::results;
using std::filesystem::perms;

constexpr _GUID INTERFACE {7, 7, 7, {}};
constexpr std::size_t RELEASE = 2;

/// A registry for each test, and copies of the libraries in a folder where no other user may write.
class ComponentLibrary : public testing::Test {
protected:
    ComponentLibrary()
    {
        m_library = copyOf(VX_TEST_COMPONENT, "component.so");
        copyOf(VX_TEST_COMPONENT_WITHOUT_CLASSES, "without.so");
    }
    ~ComponentLibrary() override { VXComFreeUnusedLibraries(); }

    std::filesystem::path copyOf(const char* library, const char* name) const
    {
        std::filesystem::copy_file(library, m_scratch / name);
        std::filesystem::permissions(m_scratch / name, perms(0755));
        return m_scratch / name;
    }

    static void setText(const std::u16string& key, const std::u16string& text)
    {
        EXPECT_EQ(VXRegistrySetValue(VX_HKEY_CLASSES_32, key.c_str(), u"", VX_REG_STRING, text.c_str(),
                      static_cast<std::int32_t>(2 * text.size() + 2)),
            RESULT_OK);
    }
    /// Registers the class whose first number is `behaviour` under the name Test.NUMBER, which it returns.
    static std::u16string enter(int behaviour, const std::u16string& path)
    {
        const char16_t number[] = {static_cast<char16_t>(u'0' + behaviour), 0};
        const std::u16string classId = std::u16string(u"{0000000") + number + u"-0001-0001-0000-000000000000}";
        setText(std::u16string(u"Test.") + number + u"\\CLSID", classId);
        setText(u"CLSID\\" + classId + u"\\InprocServer32", path);
        return std::u16string(u"Test.") + number;
    }
    static std::int32_t create(const std::u16string& progId, void** object)
    {
        return VXComCreateObjectByProgID(progId.c_str(), nullptr, &INTERFACE, object);
    }
    static std::int32_t resultOf(const std::u16string& path)
    {
        void* object = &object;
        const std::int32_t result = create(enter(1, path), &object);
        EXPECT_EQ(object == nullptr, failed(result));
        if (object != nullptr)
            callSlot<std::uint32_t>(object, RELEASE);
        VXComFreeUnusedLibraries();
        return result;
    }
    static int mapsOf(const std::filesystem::path& library)
    {
        std::ifstream maps("/proc/self/maps");
        int count = 0;
        for (std::string line; std::getline(maps, line);)
            count += line.ends_with(library.string());
        return count;
    }

    Scratch m_scratch;
    ScopedVariable m_store {"VXSYS4_REGISTRY", (m_scratch / "store").c_str()};
    std::filesystem::path m_library;
};

TEST_F(ComponentLibrary, TurnsMisbehaviourIntoAResult)
{
    // No class but a pointer, no factory, a factory that throws, no object, and a failure with a pointer
    const std::pair<int, std::int32_t> cases[] = {{2, RESULT_END_OF_FILE}, {3, RESULT_NO_INTERFACE},
        {4, RESULT_OUT_OF_MEMORY}, {5, RESULT_FAIL}, {6, RESULT_NO_INTERFACE}, {7, RESULT_NO_INTERFACE}};
    for (const auto& [behaviour, result] : cases) {
        void* object = &object;
        EXPECT_EQ(create(enter(behaviour, m_library.u16string()), &object), result) << behaviour;
        EXPECT_EQ(object, nullptr) << behaviour;
    }
    EXPECT_EQ(VXComFreeUnusedLibraries(), 1) << "every factory was released";
}

TEST_F(ComponentLibrary, LetsAThreadEndInsideIt)
{
    for (const std::uint8_t behaviour : {8, 9}) { // when it creates a factory, and when it creates an object
        const std::u16string progId = enter(behaviour, m_library.u16string());
        void* object = nullptr;
        EXPECT_EQ(endOf([&] { create(progId, &object); }), reinterpret_cast<void*>(behaviour)) << behaviour;
        EXPECT_EQ(VXComFreeUnusedLibraries(), 1) << "nothing of it is in use";
    }
}

TEST_F(ComponentLibrary, TellsWhyALibraryCannotServe)
{
    const std::string content = contentOf(m_library);
    put(m_scratch / "text.so", "no library at all");
    put(m_scratch / "broken.so", content.substr(0, 4000));
    std::string foreign = content;
    foreign[18] = 40; // e_machine: a 32-bit ARM
    put(m_scratch / "foreign.so", foreign);
    const auto at = [&](const char* name) { return (m_scratch / name).u16string(); };
    const std::pair<std::u16string, std::int32_t> cases[] = {{at("component.so"), RESULT_OK},
        {m_scratch.full("component.so"), RESULT_OK}, {at("missing.so"), RESULT_NOT_FOUND},
        {at("text.so"), RESULT_BAD_MODULE}, {at("foreign.so"), RESULT_BAD_MODULE}, {at(""), RESULT_BAD_MODULE},
        {at("broken.so"), RESULT_BAD_MODULE}, {at("without.so"), RESULT_SYMBOL_NOT_FOUND},
        {u"component.so", RESULT_INVALID_NAME}, {u"./component.so", RESULT_INVALID_NAME}, {u"", RESULT_NOT_FOUND}};
    std::filesystem::current_path(m_scratch.getPath());
    for (const auto& [path, result] : cases) {
        EXPECT_EQ(resultOf(path), result) << std::filesystem::path(path);
        EXPECT_EQ(VXComCheckLibrary(path.c_str()), result) << std::filesystem::path(path);
    }
    setText(u"Test.Text\\CLSID", u"no identifier");
    void* object = &object;
    EXPECT_EQ(create(u"Test.Text", &object), RESULT_CLASS_NOT_AVAILABLE);
    EXPECT_EQ(object, nullptr);
}

TEST_F(ComponentLibrary, TrustsWhatOnlyTheUserAndRootCanChange)
{
    const std::filesystem::path folder = m_scratch / "folder";
    std::filesystem::create_directory(folder);
    const std::filesystem::path library = copyOf(VX_TEST_COMPONENT, "folder/component.so");
    std::filesystem::create_directory_symlink(folder, m_scratch / "link");
    // The rights of folder and library, and whether the library is trusted
    const std::tuple<unsigned, unsigned, bool> cases[] = {{0755, 0755, true}, {0755, 0757, false}, {0755, 0775, false},
        {0757, 0755, false}, {0775, 0755, false}, {01777, 0755, true}};
    for (const auto& [ofFolder, ofFile, isTrusted] : cases) {
        std::filesystem::permissions(folder, perms(ofFolder));
        std::filesystem::permissions(library, perms(ofFile));
        const std::int32_t result = isTrusted ? RESULT_OK : RESULT_ACCESS_DENIED;
        EXPECT_EQ(resultOf(library.u16string()), result) << ofFolder << ' ' << ofFile;
        EXPECT_EQ(resultOf((m_scratch / "link/component.so").u16string()), result) << ofFolder << ' ' << ofFile;
    }
    std::filesystem::permissions(folder, perms(0757));
    std::filesystem::create_symlink(m_library, folder / "link.so");
    EXPECT_EQ(resultOf((folder / "link.so").u16string()), RESULT_ACCESS_DENIED) << "others can set the link";
    std::filesystem::permissions(folder, perms(0755));
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(library.c_str(), 12345, 0), 0);
        EXPECT_EQ(resultOf(library.u16string()), RESULT_ACCESS_DENIED) << "another user's";
    }
}

TEST_F(ComponentLibrary, SeesAChangeOfTheRegistryAtTheNextCreation)
{
    const std::u16string inServer = u"CLSID\\{00000001-0001-0001-0000-000000000000}\\InprocServer32";
    const std::u16string missing = (m_scratch / "missing.so").u16string();
    const auto enterAgain = [&] { enter(1, m_library.u16string()); };
    const ScopedVariable machine("VXSYS4_MACHINE_REGISTRY", (m_scratch / "machine").c_str());
    const auto forAllUsers = [&](const std::function<void()>& work) { // in another process, which may write there
        Child([&](Child::Side&) {
            ::setenv("VXSYS4_REGISTRY", (m_scratch / "machine").c_str(), 1);
            work();
        }).wait();
    };
    forAllUsers([] { setText(u"Test.2", u"so that the store is there"); });
    const std::tuple<const char*, std::function<void()>, std::int32_t> cases[] = {
        {"first", enterAgain, RESULT_OK},
        {"the library by this process", [&] { setText(inServer, missing); }, RESULT_NOT_FOUND},
        {"back", enterAgain, RESULT_OK},
        {"the library by another process", [&] { Child([&](Child::Side&) { setText(inServer, missing); }).wait(); },
            RESULT_NOT_FOUND},
        {"back by another process", [&] { Child([&](Child::Side&) { enterAgain(); }).wait(); }, RESULT_OK},
        {"unloaded", [] { EXPECT_EQ(VXComFreeUnusedLibraries(), 1); }, RESULT_OK},
        {"another registry", [&] { ::setenv("VXSYS4_REGISTRY", (m_scratch / "other").c_str(), 1); },
            RESULT_CLASS_NOT_AVAILABLE},
        {"the first registry", [&] { ::setenv("VXSYS4_REGISTRY", (m_scratch / "store").c_str(), 1); }, RESULT_OK},
        {"the class removed", [] { VXRegistryDeleteKey(VX_HKEY_CLASSES_32, u"CLSID"); }, RESULT_CLASS_NOT_AVAILABLE},
        {"back after the removal", enterAgain, RESULT_OK},
        {"another library for all users", [&] { forAllUsers([&] { enter(1, missing); }); }, RESULT_OK},
        {"only that of all users",
            [] {
                for (const char16_t* key : {u"CLSID", u"Test.1"})
                    EXPECT_EQ(VXRegistryDeleteKey(VX_HKEY_CLASSES_32, key), RESULT_OK);
            },
            RESULT_NOT_FOUND},
        {"a good one for all users", [&] { forAllUsers(enterAgain); }, RESULT_OK},
        {"a missing one for all users", [&] { forAllUsers([&] { setText(inServer, missing); }); }, RESULT_NOT_FOUND},
    };
    const _GUID classId {1, 1, 1, {}};
    for (const auto& [what, change, result] : cases) {
        change();
        for (int i = 0; i < 4; ++i) {
            void* object = &object;
            EXPECT_EQ(i % 2 == 0 ? create(u"test.1", &object)
                                 : VXModuleComCreateObject(nullptr, &classId, nullptr, &INTERFACE, &object),
                result)
                << what;
            ASSERT_EQ(object == nullptr, failed(result)) << what;
            if (object != nullptr)
                callSlot<std::uint32_t>(object, RELEASE);
        }
    }
}

TEST_F(ComponentLibrary, IsNotCountedAsFreedWhileItStaysInTheProcess)
{
    const std::filesystem::path permanent = copyOf(VX_TEST_COMPONENT_PERMANENT, "permanent.so");
    std::int32_t kept = 7;
    const auto useAndFree = [&](const std::filesystem::path& library) {
        void* object = nullptr;
        EXPECT_EQ(create(enter(1, library.u16string()), &object), RESULT_OK);
        callSlot<std::uint32_t>(object, RELEASE);
        return VXComFreeUnusedLibrariesAndCountKept(&kept);
    };
    EXPECT_EQ(useAndFree(m_library), 1);
    EXPECT_EQ(kept, 0);
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(useAndFree(permanent), 0) << "the loader keeps it";
        EXPECT_EQ(kept, 1);
    }
    EXPECT_GT(mapsOf(permanent), 0);
    VXLibHandle other = VX_LIB_INVALID_HANDLE;
    ASSERT_EQ(VXModuleLibOpen(nullptr, m_library.u16string().c_str(), &other), RESULT_OK);
    EXPECT_EQ(useAndFree(m_library), 0) << "the program has it open";
    EXPECT_EQ(kept, 1);
    EXPECT_EQ(VXModuleLibClose(nullptr, other), RESULT_OK);
    EXPECT_EQ(mapsOf(m_library), 0);
    EXPECT_EQ(VXComFreeUnusedLibrariesAndCountKept(&kept) + kept, 0);
    EXPECT_EQ(VXComFreeUnusedLibrariesAndCountKept(nullptr), RESULT_POINTER);
}

TEST_F(ComponentLibrary, MayBeFreedWhileThreadsCreate)
{
    const std::u16string progId = enter(1, m_library.u16string());
    for (int round = 0; round < 20; ++round) {
        std::vector<void*> objects[3];
        std::atomic<std::size_t> running {std::size(objects)};
        std::vector<std::thread> creators;
        for (std::vector<void*>& own : objects)
            creators.emplace_back([&] {
                own.resize(10);
                for (void*& object : own)
                    EXPECT_EQ(create(progId, &object), RESULT_OK);
                --running;
            });
        while (running != 0)
            VXComFreeUnusedLibraries();
        for (std::thread& creator : creators)
            creator.join();
        EXPECT_EQ(VXComFreeUnusedLibraries(), 0);
        for (const std::vector<void*>& own : objects) {
            for (void* object : own)
                callSlot<std::uint32_t>(object, RELEASE);
        }
        EXPECT_GE(VXComFreeUnusedLibraries(), 1);
        EXPECT_EQ(mapsOf(m_library), 0);
    }
}

constexpr _GUID FIRST_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr _GUID SECOND_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 12}};

/// An offer until the end of the block. The object that it creates is the context itself.
class Offer : NotCopied {
public:
    Offer(const char16_t* progId, const _GUID& classId, void* context, VXCreateFunction create = giveContext)
    {
        EXPECT_EQ(VXComRegisterClassObject(progId, &classId, create, context, &m_token), 0);
        EXPECT_NE(m_token, 0U);
    }
    ~Offer() { EXPECT_EQ(VXComRevokeClassObject(m_token), 0); }

    static std::int32_t giveContext(void* context, IVXUnknown*, const _GUID* iid, void** object)
    {
        *object = context;
        return *iid == INTERFACE ? RESULT_OK : RESULT_NO_INTERFACE;
    }

private:
    std::uint32_t m_token = 0;
};

/// The object that `progId` creates, which is the context of the offer; null after RESULT_CLASS_NOT_AVAILABLE.
void* createdBy(const char16_t* progId)
{
    void* object = &object;
    const std::int32_t result = VXComCreateObjectByProgID(progId, nullptr, &INTERFACE, &object);
    EXPECT_EQ(result, object != nullptr ? RESULT_OK : RESULT_CLASS_NOT_AVAILABLE);
    return object;
}

TEST(Component, FindsWhatTheProcessOffersUntilItIsRevoked)
{
    int first = 0, second = 0;
    EXPECT_EQ(createdBy(u"Test.One"), nullptr);
    std::optional<Offer> one(std::in_place, u"Test.One", FIRST_CLASS, &first);
    EXPECT_EQ(createdBy(u"tEST.oNE"), &first);
    EXPECT_EQ(createdBy(u"Test.On"), nullptr);
    EXPECT_EQ(createdBy(u"Test.One.1"), nullptr);
    {
        Offer newer(u"TEST.ONE", SECOND_CLASS, &second);
        Offer nameless(nullptr, FIRST_CLASS, &second);
        EXPECT_EQ(createdBy(u"Test.One"), &second) << "the last offer serves";
        EXPECT_EQ(createdBy(u""), nullptr) << "no name names nothing";
        _GUID classId {};
        EXPECT_EQ(VXComClassIDFromProgID(u"Test.One", &classId), 0);
        EXPECT_TRUE(classId == SECOND_CLASS);
    }
    EXPECT_EQ(createdBy(u"Test.One"), &first);
    one.reset();
    EXPECT_EQ(createdBy(u"Test.One"), nullptr);
}

TEST(Component, RevokesAnOfferFromInsideItsCreation)
{
    std::uint32_t token = 0;
    const auto create = [](void* context, IVXUnknown*, const _GUID*, void** object) -> std::int32_t {
        EXPECT_EQ(VXComRevokeClassObject(*static_cast<std::uint32_t*>(context)), 0);
        EXPECT_EQ(createdBy(u"Test.One"), nullptr);
        *object = context;
        return 0;
    };
    ASSERT_EQ(VXComRegisterClassObject(u"Test.One", &FIRST_CLASS, create, &token, &token), 0);
    EXPECT_EQ(createdBy(u"Test.One"), &token);
}

TEST(Component, LetsAThreadEndInsideACreation)
{
    int end = 0;
    Offer offer(u"Test.One", FIRST_CLASS, &end,
        [](void* context, IVXUnknown*, const _GUID*, void**) -> std::int32_t { ::pthread_exit(context); });
    EXPECT_EQ(endOf([] { createdBy(u"Test.One"); }), &end);
}

TEST(Component, WaitsForCreationsBeforeAnOfferIsGone)
{
    struct Context {
        std::atomic<int> inside {0};
        std::atomic<int> created {0};
        bool isRevoked = false; // not atomic on purpose: a creation after the revocation would be a race
    };
    const auto create = [](void* context, IVXUnknown*, const _GUID*, void** object) -> std::int32_t {
        auto* state = static_cast<Context*>(context);
        ++state->inside;
        std::this_thread::yield();
        EXPECT_FALSE(state->isRevoked);
        ++state->created;
        *object = context;
        --state->inside;
        return 0;
    };
    for (int round = 0; round < 50; ++round) {
        Context context;
        std::optional<Offer> offer(std::in_place, u"Test.One", FIRST_CLASS, &context, create);
        std::thread creators[2];
        for (std::thread& creator : creators)
            creator = std::thread([] {
                while (createdBy(u"Test.One") != nullptr) { }
            });
        while (context.created == 0)
            std::this_thread::yield();
        offer.reset();
        EXPECT_EQ(context.inside, 0);
        context.isRevoked = true;
        for (std::thread& creator : creators)
            creator.join();
    }
}

TEST(Component, ComparesIdentifiersFieldByField)
{
    const _GUID rising[] = {{1, 2, 3, {4, 5}}, {1, 2, 3, {4, 0x85}}, {1, 2, 3, {0x84}}, {1, 2, 0x8003, {}},
        {1, 0x8002, 0, {}}, {0x01000001, 0, 0, {}}, {0x80000000, 0, 0, {}}};
    const _GUID* previous = nullptr;
    for (const _GUID& guid : rising) {
        const _GUID same = guid;
        EXPECT_EQ(VXComCompareGUID(&guid, &same), 0);
        EXPECT_EQ(VXComCompareGUID(previous, &guid), -1);
        EXPECT_EQ(VXComCompareGUID(&guid, previous), 1);
        previous = &guid;
    }
}

TEST(Component, PrintsAndParsesIdentifiers)
{
    constexpr _GUID GUID {0x0123ABCD, 0x4567, 0x89EF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};
    char16_t text[39];
    EXPECT_EQ(VXComStringFromGUID(&GUID, text, 39), RESULT_OK);
    const std::u16string whole = u"{0123ABCD-4567-89EF-FEDC-BA9876543210}";
    EXPECT_EQ(text, whole);
    _GUID parsed {};
    EXPECT_EQ(VXComGUIDFromString(u"{0123abCD-4567-89eF-feDC-BA9876543210}", &parsed), RESULT_OK);
    EXPECT_TRUE(parsed == GUID);
    EXPECT_EQ(VXComStringFromGUID(&GUID, text, 38), RESULT_BUFFER_TOO_SMALL);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        parsed = GUID;
        EXPECT_EQ(VXComGUIDFromString(whole.substr(0, length).c_str(), &parsed), RESULT_INVALID_ARGUMENT) << length;
        EXPECT_TRUE(parsed == _GUID {}) << length;
        for (const char16_t wrong :
            {u' ', u'g', u'/', u':', u'@', u'`', u'\uFF11', whole[length] == u'-' ? u'0' : u'-'}) {
            std::u16string changed = whole;
            changed[length] = wrong;
            EXPECT_EQ(VXComGUIDFromString(changed.c_str(), &parsed), RESULT_INVALID_ARGUMENT) << length;
        }
    }
    EXPECT_EQ(VXComGUIDFromString((whole + u" ").c_str(), &parsed), RESULT_INVALID_ARGUMENT);
}

} // namespace
