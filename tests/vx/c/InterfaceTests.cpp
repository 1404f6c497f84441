#include "examples/component/IGreeter.h"
#include "legacy/IVXConnector.h"
#include "legacy/IVXPropertySet.h"
#include "tests/Slots.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/c/vxlib4.h"
#include "vx/util/RWCharBuffer.h"
#include "vx/vxlib4.h"
#include "vxsys/Registry.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <type_traits>

using namespace vx;

namespace {

template <class In, class InC>
constexpr bool samePlace = std::is_arithmetic_v<In> || std::is_void_v<In>
    ? std::is_same_v<In, InC>
    : (std::is_pointer_v<In> || std::is_reference_v<In>)&&std::is_pointer_v<InC>;

/// An operation in C takes and returns the same as in C++, and what is const in one is const in the other.
template <class T, class Self, class R, class RC, class... P, class... PC>
constexpr bool agree(R (T::*)(P...), RC (*)(Self*, PC...))
{
    static_assert(sizeof...(P) == sizeof...(PC));
    return !std::is_const_v<Self> && samePlace<R, RC> && (samePlace<P, PC> && ...);
}
template <class T, class Self, class R, class RC, class... P, class... PC>
constexpr bool agree(R (T::*)(P...) const, RC (*)(Self*, PC...))
{
    static_assert(sizeof...(P) == sizeof...(PC));
    return std::is_const_v<Self> && samePlace<R, RC> && (samePlace<P, PC> && ...);
}

template <class Interface>
struct Appended : Interface {
    virtual void appended() { }

protected:
    ~Appended() = default;
};

TEST(InterfacesInC, HaveTheSlotsAndIdentifiersOfTheClasses)
{
#define INTERFACE(CLASS, NAME)                                                                                         \
    EXPECT_TRUE(CLASS::IID == c::VX_IID_##NAME) << #NAME;                                                              \
    EXPECT_EQ(slotOf(&Appended<CLASS>::appended), sizeof(c::NAME##Operations) / sizeof(void*)) << #NAME;
#define OPERATION(CLASS, NAME, OPERATION)                                                                              \
    EXPECT_EQ(slotOf(&CLASS::OPERATION), offsetof(c::NAME##Operations, OPERATION) / sizeof(void*))                     \
        << #NAME "::" #OPERATION;                                                                                      \
    static_assert(agree(&CLASS::OPERATION, decltype(c::NAME##Operations::OPERATION) {}), #NAME "::" #OPERATION);
#define RESULT(NAME) static_assert(VX_##NAME == NAME);
#include "InterfaceRows.inc"
}

/// A library in C that is registered, in a separate store, until the end of the block.
class GreeterInC : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(VXComRegisterLibrary(u"" VX_GREETER_IN_C), RESULT_OK); }
    void TearDown() override { EXPECT_EQ(VXComUnregisterLibrary(u"" VX_GREETER_IN_C), RESULT_OK); }

private:
    Scratch m_scratch;
    ScopedVariable m_store {"VXSYS4_REGISTRY", (m_scratch / "store").c_str()};
};

TEST_F(GreeterInC, ServesProgramsInCpp)
{
    {
        Reference<IGreeter> greeter;
        throwIfFailed(VXComCreateObjectByProgID(u"example.greeterinc", nullptr, &IGreeter::IID, greeter.outVoid()));
        const Reference<util::RWCharBuffer> text(new util::RWCharBuffer);
        EXPECT_EQ(greeter->Greet(u"世界", text.get()), RESULT_OK);
        EXPECT_EQ(String(text->getData(), text->getLength()), u"Greetings, 世界");
        EXPECT_EQ(greeter->Greet(nullptr, text.get()), RESULT_POINTER);
        void* other = this;
        EXPECT_EQ(greeter->QueryInterface(IVXCharBuffer::IID, &other), RESULT_NO_INTERFACE);
        EXPECT_EQ(other, nullptr);
        EXPECT_EQ(VXComFreeUnusedLibraries(), 0) << "an object is left";
    }
    EXPECT_EQ(VXComFreeUnusedLibraries(), 1);
    void* object = this;
    Reference<IVXUnknown> outer(new String);
    EXPECT_EQ(VXComCreateObjectByProgID(u"Example.GreeterInC", outer.get(), &IGreeter::IID, &object),
        RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXComCreateObjectByProgID(u"Example.GreeterInC", outer.get(), &IVXUnknown::IID, &object),
        RESULT_NO_AGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(VXComFreeUnusedLibraries(), 1) << "failures leave no lock";
}

TEST_F(GreeterInC, ServesProgramsInC)
{
    const auto outputOf = [](const char* arguments) {
        std::string output;
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(
            ::popen((std::string(VX_GREET_IN_C " ") + arguments + " 2>&1").c_str(), "r"), ::pclose);
        for (int byte = std::fgetc(pipe.get()); byte != EOF; byte = std::fgetc(pipe.get()))
            output += static_cast<char>(byte);
        return output;
    };
    EXPECT_EQ(outputOf("世界"), "Greetings, 世界\n1 unloaded\n");
    EXPECT_EQ(outputOf("Ada Not.There"),
        "Greetings, Ada\ngreet_in_c: Not.There: the component does not have this class (0x80040111)\n");
#ifdef VX_BUNDLES
    ASSERT_EQ(VXComRegisterLibrary(u"" VX_BUNDLES), RESULT_OK);
    const std::string listed = outputOf("Ada Velmaris.Tools.StringBundle.fr");
    EXPECT_TRUE(listed.find("\ngreeting\n") != listed.npos && listed.ends_with("\n2 unloaded\n")) << listed;
#endif
}

TEST(TextsInC, AreTakenAndGivenWhole)
{
    constexpr char GRUSS[] = "Gr\xC3\xBC\xC3\x9F";
    c::IVXCharBuffer* text = nullptr;
    EXPECT_EQ(c::IVXCharBuffer_NewUtf8(GRUSS, 5, &text), RESULT_INVALID_CHARACTER) << "a sequence is cut";
    EXPECT_EQ(text, nullptr);
    ASSERT_EQ(c::IVXCharBuffer_NewUtf8(GRUSS, 6, &text), RESULT_OK);
    char narrow[7];
    EXPECT_EQ(c::IVXCharBuffer_GetUtf8(text, narrow, 6), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(c::IVXCharBuffer_GetUtf8(text, narrow, 7), RESULT_OK);
    EXPECT_STREQ(narrow, GRUSS);
    EXPECT_EQ(c::IVXCharBuffer_SetText(text, nullptr, 1), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(c::IVXCharBuffer_SetText(text, u"\xD800", -1), RESULT_OK);
    EXPECT_EQ(c::IVXCharBuffer_GetUtf8(text, narrow, 7), RESULT_INVALID_CHARACTER);
    VX_RELEASE_OBJECT(text);
    EXPECT_EQ(c::IVXCharBuffer_New(nullptr, 1, &text), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(text, nullptr);
}

} // namespace
