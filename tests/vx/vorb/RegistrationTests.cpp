#include "examples/component/IGreeter.h"
#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Class.h"
#include "vx/util/RWCharBuffer.h"
#include "vx/util/RegKeyIterator.h"
#include "vx/util/RegistryKey.h"
#include "vx/vorb/Component.h"
#include "vx/vorb/CreateByProgId.h"
#include "vxsys/Component.h"

using namespace vx;
using namespace vx::vorb;

namespace {

constexpr _GUID CLASS {0x12345678, 0x9ABC, 0xDEF0, {0, 1, 2, 3, 4, 5, 6, 7}};
constexpr const char16_t* CLASS_TEXT = u"{12345678-9ABC-DEF0-0001-020304050607}";

struct Texts {
    static const char16_t* progId() { return u"Test.Class.1"; }
    static const char16_t* description() { return u"a class"; }
    static const char16_t* generalProgId() { return u"Test.Class"; }
    static const char16_t* nothing() { return nullptr; }
};

class Registration : public testing::Test {
protected:
    /// All keys with their default values, one on each line.
    static std::string entries(const util::RegistryKey& key = util::RegistryKey(u"VX_HKEY_CLASSES_32"))
    {
        std::string text;
        const auto subkeys = key.getSubkeyIterator();
        while (subkeys->hasNext()) {
            const util::RegistryKey below(*subkeys->next());
            const String path = below.getKey(true);
            if (below.valueExists(u""))
                text += std::string(path.getBytes() + 2) + "=" + below.getValueString(u"").getBytes() + "\n";
            text += entries(below);
        }
        return text;
    }

    Scratch m_scratch;
    ScopedVariable m_store {"VXSYS4_REGISTRY", (m_scratch / "store").c_str()};
};

TEST_F(Registration, WritesWhatAClassHasAndRemovesItAgain)
{
    const std::string classId(String(CLASS_TEXT).getBytes()), classKey = "CLSID\\" + classId;
    const std::string library = classKey + "\\InprocServer32=/lib/x.so\n";
    using T = Texts;
    const auto rowOf = [](auto... texts) { return ClassData {&CLASS, nullptr, nullptr, texts..., nullptr}; };
    const std::tuple<const char*, ClassData, std::string> cases[] = {
        {"all texts", rowOf(T::progId, T::description, T::generalProgId),
            classKey + "=Test.Class.1\n" + library + classKey + "\\ProgID=Test.Class.1\n" + classKey
                + "\\VersionIndependentProgID=Test.Class\nTest.Class=a class\nTest.Class\\CLSID=" + classId
                + "\nTest.Class\\CurVer=Test.Class.1\nTest.Class.1=a class\nTest.Class.1\\CLSID=" + classId + "\n"},
        {"no general name", rowOf(T::progId, T::nothing, T::nothing),
            classKey + "=Test.Class.1\n" + library + classKey
                + "\\ProgID=Test.Class.1\nTest.Class.1=\nTest.Class.1\\CLSID=" + classId + "\n"},
        {"no name", rowOf(T::nothing, T::description, T::nothing), classKey + "=\n" + library},
    };
    for (const auto& [what, row, wanted] : cases) {
        SCOPED_TRACE(what);
        ClassData table[] = {row, {}};
        DllModule module(table);
        EXPECT_EQ(module.RegisterServer(u"/lib/x.so"), RESULT_OK);
        EXPECT_EQ(entries(), wanted);
        EXPECT_EQ(module.UnregisterServer(), RESULT_OK);
        EXPECT_EQ(entries(), "");
        EXPECT_EQ(module.UnregisterServer(), RESULT_NOT_FOUND);
        Module plain(table);
        EXPECT_EQ(plain.RegisterServer(u"/lib/x.so"), RESULT_OK);
        EXPECT_EQ(entries().find("InprocServer32"), std::string::npos);
        EXPECT_EQ(plain.UnregisterServer(), RESULT_OK);
    }
}

TEST_F(Registration, NamesTheFileThatAnAddressLiesInAndGivesTheFailureOfTheStore)
{
    ClassData table[] = {{&CLASS, nullptr, nullptr, Texts::progId, Texts::nothing, Texts::nothing, nullptr}, {}};
    DllModule module(table);
    EXPECT_EQ(module.RegisterServer(reinterpret_cast<const void*>(&Texts::progId)), RESULT_OK);
    const util::RegistryKey server(VX_HKEY_CLASSES_32, String(u"CLSID\\") + CLASS_TEXT + u"\\InprocServer32");
    EXPECT_EQ(server.getValueString(u""), std::filesystem::read_symlink("/proc/self/exe").u16string());
    std::filesystem::permissions(m_scratch / "store", std::filesystem::perms(0777));
    EXPECT_EQ(module.RegisterServer(u"/lib/x.so"), RESULT_ACCESS_DENIED);
    EXPECT_EQ(module.UnregisterServer(), RESULT_ACCESS_DENIED);
}

TEST_F(Registration, HasALibraryServeItsClassesByName)
{
    const std::filesystem::path library = m_scratch / "greeter.so";
    std::filesystem::copy_file(VX_GREETER, library);
    std::filesystem::permissions(library, std::filesystem::perms(0755));
    const std::u16string path = library.u16string();
    ASSERT_EQ(VXComRegisterLibrary(path.c_str()), RESULT_OK);
    for (const char16_t* name : {u"Example.Greeter", u"example.greeter.1"}) {
        auto greeter = createByProgId<IGreeter>(name);
        const Reference<util::RWCharBuffer> text(new util::RWCharBuffer);
        EXPECT_EQ(greeter->Greet(u"you", text.get()), RESULT_OK);
        EXPECT_EQ(String(text->getData(), text->getLength()), u"Hello, you!");
        const Reference<Object> made(Class::forName(u"example::Greeter")->createInstance());
        EXPECT_EQ(made->getClass()->getName(), String(u"example::Greeter"));
        greeter = nullptr;
        EXPECT_EQ(VXComFreeUnusedLibraries(), 0) << "an object that was made by the name of its class keeps it as well";
    }
    EXPECT_EQ(VXComFreeUnusedLibraries(), 1);
    EXPECT_THROW(Class::forName(u"example::Greeter"), ClassNotFoundException) << "the record went with the library";
    EXPECT_EQ(contentOf("/proc/self/maps").find(library.string()), std::string::npos);
    EXPECT_EQ(VXComUnregisterLibrary(path.c_str()), RESULT_OK);
    EXPECT_EQ(entries(), "");
    try {
        createByProgId<IGreeter>(u"Example.Greeter");
        ADD_FAILURE();
    } catch (const ResultException& failure) {
        EXPECT_EQ(failure.getResult(), RESULT_CLASS_NOT_AVAILABLE);
        EXPECT_EQ(getOccasion(failure), u"create an object of class Example.Greeter");
    }
}

} // namespace
