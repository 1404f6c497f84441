#include "tests/Slots.h"
#include "tests/vxsys/Scratch.h"
#include "vxsys/Component.h"
#include "vxsys/Module.h"
#include "vxsys/Registry.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace vxsys::results;
using std::filesystem::perms;

constexpr _GUID INTERFACE {7, 7, 7, {}};
constexpr std::size_t RELEASE = 2;

/// A store of its own, and copies of the libraries where nobody else writes.
class ComponentLibrary : public testing::Test {
protected:
    ComponentLibrary()
    {
        m_library = copyOf(VX_TEST_COMPONENT, "component.so");
        m_withoutClasses = copyOf(VX_TEST_COMPONENT_WITHOUT_CLASSES, "without.so");
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
    static std::u16string textOf(const _GUID& classId)
    {
        char16_t text[39];
        EXPECT_EQ(VXComStringFromGUID(&classId, text, std::size(text)), RESULT_OK);
        return text;
    }
    /// The class whose first number is `behaviour`, by the name Test.NUMBER.
    static std::u16string enter(std::uint32_t behaviour, const std::u16string& path)
    {
        const _GUID classId {behaviour, 1, 1, {}};
        const std::u16string progId = u"Test." + std::u16string(1, static_cast<char16_t>(u'0' + behaviour));
        setText(progId + u"\\CLSID", textOf(classId));
        setText(u"CLSID\\" + textOf(classId) + u"\\InprocServer32", path);
        return progId;
    }
    static std::int32_t create(const std::u16string& progId, void** object, const _GUID& iid = INTERFACE)
    {
        return VXComCreateObjectByProgID(progId.c_str(), nullptr, &iid, object);
    }
    /// What the creation of an object from `path` gives.
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
    std::filesystem::path m_withoutClasses;
};

TEST_F(ComponentLibrary, StaysInTheProcessWhileAnObjectLives)
{
    const std::u16string progId = enter(1, m_library.u16string());
    void* first = nullptr;
    void* second = nullptr;
    EXPECT_EQ(mapsOf(m_library), 0);
    ASSERT_EQ(create(u"tEST.1", &first), RESULT_OK);
    ASSERT_EQ(create(progId, &second), RESULT_OK);
    EXPECT_NE(first, second);
    EXPECT_GT(mapsOf(m_library), 0);
    callSlot<std::uint32_t>(first, RELEASE);
    EXPECT_EQ(VXComFreeUnusedLibraries(), 0);
    EXPECT_GT(mapsOf(m_library), 0);
    callSlot<std::uint32_t>(second, RELEASE);
    EXPECT_EQ(VXComFreeUnusedLibraries(), 1) << "it was loaded once";
    EXPECT_EQ(mapsOf(m_library), 0);
    EXPECT_EQ(resultOf(m_library.u16string()), RESULT_OK) << "and comes again";
    EXPECT_EQ(VXRegistryDeleteKey(VX_HKEY_CLASSES_32, progId.c_str()), RESULT_OK);
    EXPECT_EQ(create(progId, &first), RESULT_CLASS_NOT_AVAILABLE);
}

TEST_F(ComponentLibrary, TurnsMisbehaviourIntoAResult)
{
    struct {
        const char* what;
        std::uint32_t behaviour;
        std::int32_t result;
    } cases[] = {
        {"no such class, but a pointer", 2, RESULT_END_OF_FILE},
        {"no factory", 3, RESULT_NO_INTERFACE},
        {"a factory that throws for memory", 4, RESULT_OUT_OF_MEMORY},
        {"a factory that throws", 5, RESULT_FAIL},
        {"no object", 6, RESULT_NO_INTERFACE},
        {"a failure with a pointer", 7, RESULT_NO_INTERFACE},
    };
    for (const auto& row : cases) {
        void* object = &object;
        EXPECT_EQ(create(enter(row.behaviour, m_library.u16string()), &object), row.result) << row.what;
        EXPECT_EQ(object, nullptr) << row.what;
    }
    void* object = &object;
    EXPECT_EQ(create(enter(1, m_library.u16string()), &object, _GUID {8, 8, 8, {}}), RESULT_NO_INTERFACE);
    EXPECT_EQ(VXComFreeUnusedLibraries(), 1) << "every factory was let go";
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
    struct {
        std::u16string path;
        std::int32_t result;
    } cases[] = {
        {at("component.so"), RESULT_OK},
        {m_scratch.full("component.so"), RESULT_OK},
        {at("missing.so"), RESULT_NOT_FOUND},
        {at("text.so"), RESULT_BAD_MODULE},
        {at("foreign.so"), RESULT_BAD_MODULE},
        {m_scratch.getPath().u16string(), RESULT_BAD_MODULE},
        {at("broken.so"), RESULT_BAD_MODULE},
        {at("without.so"), RESULT_SYMBOL_NOT_FOUND},
        {u"component.so", RESULT_INVALID_NAME},
        {u"./component.so", RESULT_INVALID_NAME},
        {u"", RESULT_NOT_FOUND},
    };
    std::filesystem::current_path(m_scratch.getPath());
    for (const auto& row : cases) {
        EXPECT_EQ(resultOf(row.path), row.result) << std::filesystem::path(row.path);
        EXPECT_EQ(VXComCheckLibrary(row.path.c_str()), row.result) << std::filesystem::path(row.path);
    }
    setText(u"Test.Text\\CLSID", u"no identifier");
    void* object = &object;
    EXPECT_EQ(create(u"Test.Text", &object), RESULT_CLASS_NOT_AVAILABLE);
    EXPECT_EQ(create(u"Test.Text\\CLSID", &object), RESULT_CLASS_NOT_AVAILABLE);
    EXPECT_EQ(create(std::u16string(5000, u'x'), &object), RESULT_CLASS_NOT_AVAILABLE);
    EXPECT_EQ(object, nullptr);
}

TEST_F(ComponentLibrary, TrustsWhatOnlyTheUserAndRootCanChange)
{
    const std::filesystem::path folder = m_scratch / "folder";
    std::filesystem::create_directory(folder);
    const std::filesystem::path library = copyOf(VX_TEST_COMPONENT, "folder/component.so");
    std::filesystem::create_directory_symlink(folder, m_scratch / "link");
    struct {
        const char* what;
        perms folder;
        perms file;
        std::int32_t result;
    } cases[] = {
        {"others read", perms(0755), perms(0755), RESULT_OK},
        {"others write the file", perms(0755), perms(0757), RESULT_ACCESS_DENIED},
        {"the group writes the file", perms(0755), perms(0775), RESULT_ACCESS_DENIED},
        {"others write the folder", perms(0757), perms(0755), RESULT_ACCESS_DENIED},
        {"the group writes the folder", perms(0775), perms(0755), RESULT_ACCESS_DENIED},
        {"each writes his own in the folder", perms(01777), perms(0755), RESULT_OK},
    };
    for (const auto& row : cases) {
        std::filesystem::permissions(folder, row.folder);
        std::filesystem::permissions(library, row.file);
        EXPECT_EQ(resultOf(library.u16string()), row.result) << row.what;
        EXPECT_EQ(resultOf((m_scratch / "link/component.so").u16string()), row.result) << row.what << ", by a link";
        EXPECT_EQ(VXComRegisterLibrary(library.u16string().c_str()), row.result) << row.what;
    }
    std::filesystem::permissions(folder, perms(0757));
    std::filesystem::create_symlink(m_library, folder / "link.so");
    EXPECT_EQ(resultOf((folder / "link.so").u16string()), RESULT_ACCESS_DENIED) << "others can set the link";
    std::filesystem::permissions(folder, perms(0755));
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(library.c_str(), 12345, 0), 0);
        EXPECT_EQ(resultOf(library.u16string()), RESULT_ACCESS_DENIED) << "somebody else's";
    }
}

TEST_F(ComponentLibrary, WritesItselfIntoTheRegistry)
{
    const std::u16string path = m_library.u16string();
    EXPECT_EQ(VXComRegisterLibrary(path.c_str()), RESULT_OK);
    EXPECT_EQ(VXComUnregisterLibrary(path.c_str()), RESULT_OK);
    EXPECT_EQ(VXComUnregisterLibrary(path.c_str()), RESULT_NOT_FOUND) << "what the library says";
    EXPECT_EQ(VXComRegisterLibrary(nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(mapsOf(m_library), 0);
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

TEST_F(ComponentLibrary, KnowsItsOwnFile)
{
    char16_t name[4096];
    VXLibHandle handle = VX_LIB_INVALID_HANDLE;
    ASSERT_EQ(VXModuleLibOpen(nullptr, m_library.u16string().c_str(), &handle), RESULT_OK);
    void* symbol = nullptr;
    ASSERT_EQ(VXLibGetSymbol(handle, u"VXCanUnloadNow", &symbol), RESULT_OK);
    EXPECT_EQ(VXModuleGetFileName(symbol, name, std::size(name)), RESULT_OK);
    EXPECT_EQ(std::filesystem::path(name), m_library);
    EXPECT_EQ(VXModuleGetFileName(symbol, name, 10), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(*name, 0);
    EXPECT_EQ(VXModuleLibClose(nullptr, handle), RESULT_OK);
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    for (const void* module : {static_cast<const void*>(nullptr), reinterpret_cast<const void*>(&openDescriptors)}) {
        EXPECT_EQ(VXModuleGetFileName(module, name, std::size(name)), RESULT_OK);
        EXPECT_EQ(std::filesystem::path(name), program);
    }
    EXPECT_EQ(VXModuleGetFileName(&m_library, name, std::size(name)), RESULT_NOT_FOUND);
}

} // namespace
