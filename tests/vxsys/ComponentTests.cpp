#include "vxsys/Component.h"

#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using namespace vxsys::results;

constexpr _GUID FIRST_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr _GUID SECOND_CLASS {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 12}};
constexpr _GUID INTERFACE {7, 7, 7, {}};

/// An offer to the end of the block. The object that it creates is the context itself.
class Offer {
public:
    Offer(const char16_t* progId, const _GUID& classId, void* context, VXCreateFunction create = giveContext)
    {
        EXPECT_EQ(VXComRegisterClassObject(progId, &classId, create, context, &m_token), 0);
        EXPECT_NE(m_token, 0U);
    }
    ~Offer() { revoke(); }
    Offer(const Offer&) = delete;
    Offer& operator=(const Offer&) = delete;

    void revoke()
    {
        if (m_token != 0) {
            EXPECT_EQ(VXComRevokeClassObject(std::exchange(m_token, 0)), 0);
        }
    }

    static std::int32_t giveContext(void* context, IVXUnknown*, const _GUID* iid, void** object)
    {
        *object = context;
        return *iid == INTERFACE ? RESULT_OK : RESULT_NO_INTERFACE;
    }

private:
    std::uint32_t m_token = 0;
};

/// What `progId` creates: the context of the offer that served, null after RESULT_CLASS_NOT_AVAILABLE.
void* createdBy(const char16_t* progId)
{
    void* object = &object;
    const std::int32_t result = VXComCreateObjectByProgID(progId, nullptr, &INTERFACE, &object);
    EXPECT_EQ(result, object != nullptr ? RESULT_OK : RESULT_CLASS_NOT_AVAILABLE);
    return object;
}

TEST(Component, FindsWhatTheProcessOffersUntilItIsRevoked)
{
    int first = 0;
    int second = 0;
    EXPECT_EQ(createdBy(u"Test.One"), nullptr);
    Offer one(u"Test.One", FIRST_CLASS, &first);
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
    one.revoke();
    EXPECT_EQ(createdBy(u"Test.One"), nullptr);
}

TEST(Component, ClearsItsOutParameters)
{
    int context = 0;
    const Offer offer(u"Test.One", FIRST_CLASS, &context);
    void* object = &object;
    EXPECT_EQ(VXModuleComCreateObject(nullptr, &FIRST_CLASS, nullptr, &FIRST_CLASS, &object), RESULT_NO_INTERFACE);
    EXPECT_EQ(object, nullptr) << "although the create function left something there";

    struct {
        const char* name;
        const _GUID* classId;
        const _GUID* iid;
        std::int32_t result;
    } cases[] = {
        {"unknown class", &SECOND_CLASS, &INTERFACE, RESULT_CLASS_NOT_AVAILABLE},
        {"no class", nullptr, &INTERFACE, RESULT_INVALID_ARGUMENT},
        {"no interface", &FIRST_CLASS, nullptr, RESULT_INVALID_ARGUMENT},
    };
    for (const auto& row : cases) {
        object = &object;
        EXPECT_EQ(VXModuleComCreateObject(nullptr, row.classId, nullptr, row.iid, &object), row.result) << row.name;
        EXPECT_EQ(object, nullptr) << row.name;
    }
    EXPECT_EQ(VXModuleComCreateObject(nullptr, &FIRST_CLASS, nullptr, &INTERFACE, nullptr), RESULT_POINTER);
    EXPECT_EQ(VXComCreateObjectByProgID(u"Test.One", nullptr, &INTERFACE, nullptr), RESULT_POINTER);
    EXPECT_EQ(VXComCreateObjectByProgID(nullptr, nullptr, &INTERFACE, &object), RESULT_INVALID_ARGUMENT);

    _GUID classId = FIRST_CLASS;
    EXPECT_EQ(VXComClassIDFromProgID(u"Test.Two", &classId), RESULT_CLASS_NOT_AVAILABLE);
    EXPECT_TRUE(classId == _GUID {});
    EXPECT_EQ(VXComClassIDFromProgID(u"Test.Two", nullptr), RESULT_POINTER);
    EXPECT_EQ(VXComClassIDFromProgID(nullptr, &classId), RESULT_INVALID_ARGUMENT);

    std::uint32_t token = 7;
    EXPECT_EQ(VXComRegisterClassObject(u"a", &FIRST_CLASS, nullptr, nullptr, &token), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(token, 0U);
    EXPECT_EQ(VXComRevokeClassObject(0), RESULT_NOT_FOUND);
}

TEST(Component, TurnsWhatACreateFunctionDoesWrongIntoAResult)
{
    struct {
        const char* name;
        VXCreateFunction create;
        std::int32_t result;
    } cases[] = {
        {"no memory", [](void*, IVXUnknown*, const _GUID*, void**) -> std::int32_t { throw std::bad_alloc(); },
            RESULT_OUT_OF_MEMORY},
        {"another exception",
            [](void*, IVXUnknown*, const _GUID*, void**) -> std::int32_t { throw std::runtime_error("no"); },
            RESULT_FAIL},
        {"nothing created", [](void*, IVXUnknown*, const _GUID*, void**) -> std::int32_t { return 0; },
            RESULT_NO_INTERFACE},
    };
    for (const auto& row : cases) {
        const Offer offer(u"Test.One", FIRST_CLASS, nullptr, row.create);
        void* object = nullptr;
        EXPECT_EQ(VXComCreateObjectByProgID(u"Test.One", nullptr, &INTERFACE, &object), row.result) << row.name;
    }
}

TEST(Component, CreatesForReadyModulesOnly)
{
    int context = 0;
    const int module = 0;
    const Offer offer(u"Test.One", FIRST_CLASS, &context);
    void* object = nullptr;
    const auto create = [&] { return VXModuleComCreateObject(&module, &FIRST_CLASS, nullptr, &INTERFACE, &object); };
    EXPECT_EQ(create(), RESULT_NOT_AVAILABLE);
    VXModuleSetInitialized(&module, 1);
    VXModuleSetInitialized(&module, 1);
    EXPECT_EQ(create(), RESULT_OK);
    VXModuleSetInitialized(&module, 0);
    EXPECT_EQ(create(), RESULT_NOT_AVAILABLE);
    EXPECT_EQ(object, nullptr);
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

TEST(Component, WaitsForCreationsBeforeAnOfferIsGone)
{
    struct Context {
        std::atomic<int> inside {0};
        std::atomic<int> created {0};
        bool isRevoked = false; // on purpose no atomic: a creation behind the revocation would be a race
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
        Offer offer(u"Test.One", FIRST_CLASS, &context, create);
        std::thread creators[2];
        for (std::thread& creator : creators)
            creator = std::thread([] {
                while (createdBy(u"Test.One") != nullptr) { }
            });
        while (context.created == 0)
            std::this_thread::yield();
        offer.revoke();
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
    EXPECT_EQ(VXComCompareGUID(nullptr, nullptr), 0);
}

TEST(Component, PrintsAndParsesIdentifiers)
{
    constexpr _GUID GUID {0x0123ABCD, 0x4567, 0x89EF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};
    char16_t text[39];
    EXPECT_EQ(VXComStringFromGUID(&GUID, text, 39), RESULT_OK);
    EXPECT_EQ(std::u16string(text), u"{0123ABCD-4567-89EF-FEDC-BA9876543210}");
    _GUID parsed {};
    EXPECT_EQ(VXComGUIDFromString(u"{0123abCD-4567-89eF-feDC-BA9876543210}", &parsed), RESULT_OK);
    EXPECT_TRUE(parsed == GUID);

    EXPECT_EQ(VXComStringFromGUID(&GUID, text, 38), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(text[0], 0);
    const std::u16string whole = u"{0123ABCD-4567-89EF-FEDC-BA9876543210}";
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
    EXPECT_EQ(VXComGUIDFromString(nullptr, &parsed), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXComGUIDFromString(whole.c_str(), nullptr), RESULT_POINTER);
    EXPECT_EQ(VXComStringFromGUID(nullptr, text, 39), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXComStringFromGUID(&GUID, nullptr, 39), RESULT_POINTER);
}

TEST(Component, GeneratesIdentifiersThatSayHowTheyWereMade)
{
    _GUID last {};
    for (int i = 0; i < 100; ++i) {
        _GUID guid {};
        ASSERT_EQ(VXComGenerateGUID(&guid), RESULT_OK);
        EXPECT_EQ(guid.Data3 >> 12, 4);
        EXPECT_EQ(guid.Data4[0] >> 6, 2);
        EXPECT_FALSE(guid == last);
        last = guid;
    }
    EXPECT_EQ(VXComGenerateGUID(nullptr), RESULT_POINTER);
}

} // namespace
