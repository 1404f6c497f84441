#include "vxsys/Component.h"

#include "vxsys/Result.h"
#include "vxsys/Text.h"
#include "vxsys/detail/Chain.h"
#include "vxsys/detail/StateLock.h"
#include "vxsys/posix/ComponentLibrary.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <new>
#include <pthread.h>
#include <string>
#include <string_view>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constinit StateLock g_lock;

struct ReadyModule {
    const void* address;
    ReadyModule* next;
};

struct ClassOffer {
    std::u16string progId; // lower-case; empty for a class without one
    _GUID classId;
    VXCreateFunction create;
    void* context;
    std::uint32_t token = 0;
    /// One until it is revoked, and one for each call of `create` that has not returned.
    std::uint32_t uses VX_GUARDED_BY(g_lock) = 1;
    ClassOffer* next = nullptr;
};

// Plain pointers and no destructors: a library that is unloaded late may still revoke its offers.
constinit ReadyModule* g_modules VX_GUARDED_BY(g_lock) = nullptr;
constinit ClassOffer* g_offers VX_GUARDED_BY(g_lock) = nullptr; // the last offer first
constinit std::uint32_t g_lastToken VX_GUARDED_BY(g_lock) = 0;
constinit std::atomic<std::uint32_t> g_offerCount = 0; // changed under the lock, and read first without it
pthread_cond_t g_useEnded = PTHREAD_COND_INITIALIZER;

void endUse(ClassOffer* offer) noexcept VX_REQUIRES(g_lock)
{
    if (--offer->uses == 0)
        delete offer;
    else
        pthread_cond_broadcast(&g_useEnded);
}

ClassOffer** findOffer(std::uint32_t token) noexcept VX_REQUIRES(g_lock)
{
    return findPlace(g_offers, [&](const ClassOffer& offer) { return offer.token == token; });
}

bool isReady(const void* module) noexcept
{
    if (module == nullptr)
        return true;
    const StateGuard guard(g_lock);
    return *findPlace(g_modules, [&](const ReadyModule& ready) { return ready.address == module; }) != nullptr;
}

bool isSameText(std::u16string_view folded, std::u16string_view text) noexcept
{
    return std::equal(folded.begin(), folded.end(), text.begin(), text.end(),
        [](char16_t left, char16_t right) { return left == VXToLowerW(right); });
}

/// One call of an offer's `create`, during which the offer is kept. Each thread has a list of the calls
/// that it is in, the innermost first.
class [[nodiscard]] Creation {
public:
    explicit Creation(const _GUID& classId) noexcept
        : m_enclosing(s_innermost)
    {
        if (g_offerCount == 0)
            return;
        const StateGuard guard(g_lock);
        m_offer = *findPlace(g_offers, [&](const ClassOffer& offer) { return offer.classId == classId; });
        if (m_offer == nullptr)
            return;
        ++m_offer->uses;
        s_innermost = this;
    }
    ~Creation()
    {
        if (m_offer == nullptr)
            return;
        s_innermost = m_enclosing;
        const StateGuard guard(g_lock);
        endUse(m_offer);
    }
    Creation(const Creation&) = delete;
    Creation& operator=(const Creation&) = delete;

    bool hasOffer() const noexcept { return m_offer != nullptr; }

    std::int32_t run(IVXUnknown* outer, const _GUID* iid, void** object) const
    {
        return callOut([&] { return m_offer->create(m_offer->context, outer, iid, object); });
    }

    /// How many calls of `create` of `offer` the calling thread is inside.
    static std::uint32_t countOwn(const ClassOffer* offer) noexcept
    {
        std::uint32_t count = 0;
        for (const Creation* creation = s_innermost; creation != nullptr; creation = creation->m_enclosing)
            count += creation->m_offer == offer;
        return count;
    }

private:
    static constinit thread_local const Creation* s_innermost;

    const Creation* m_enclosing;
    ClassOffer* m_offer = nullptr;
};

constinit thread_local const Creation* Creation::s_innermost = nullptr;

bool findOffered(std::u16string_view progId, _GUID& classId) noexcept
{
    if (progId.empty() || g_offerCount == 0)
        return false;
    const StateGuard guard(g_lock);
    const ClassOffer* found
        = *findPlace(g_offers, [&](const ClassOffer& offer) { return isSameText(offer.progId, progId); });
    if (found != nullptr)
        classId = found->classId;
    return found != nullptr;
}

std::int32_t createObject(RegisteredClass& registered, IVXUnknown* outer, const _GUID* iid, void** object)
{
    const Creation creation(registered.classId());
    const std::int32_t result
        = creation.hasOffer() ? creation.run(outer, iid, object) : registered.create(outer, iid, object);
    if (failed(result))
        *object = nullptr;
    else if (*object == nullptr)
        return RESULT_NO_INTERFACE;
    return result;
}

} // namespace

void VXModuleSetInitialized(const void* module, std::int32_t initialized) noexcept
{
    if (module == nullptr)
        return;
    const StateGuard guard(g_lock);
    ReadyModule** place = findPlace(g_modules, [&](const ReadyModule& ready) { return ready.address == module; });
    if (initialized == 0)
        delete unlink(place);
    else if (*place == nullptr)
        *place = new (std::nothrow) ReadyModule {module, nullptr}; // if memory is exhausted it is not ready
}

std::int32_t VXComClassIDFromProgID(const char16_t* progId, _GUID* classId) noexcept
{
    if (classId == nullptr)
        return RESULT_POINTER;
    *classId = {};
    if (progId == nullptr)
        return RESULT_INVALID_ARGUMENT;

    if (findOffered(progId, *classId))
        return RESULT_OK;
    RegisteredClass registered;
    const std::int32_t result = registered.find(progId);
    *classId = registered.classId();
    return result;
}

std::int32_t VXModuleComCreateObject(
    const void* module, const _GUID* classId, IVXUnknown* outer, const _GUID* iid, void** object)
{
    if (object == nullptr)
        return RESULT_POINTER;
    *object = nullptr;
    if (classId == nullptr || iid == nullptr)
        return RESULT_INVALID_ARGUMENT;
    if (!isReady(module))
        return RESULT_NOT_AVAILABLE;
    RegisteredClass registered;
    registered.setClass(*classId);
    return createObject(registered, outer, iid, object);
}

std::int32_t VXComCreateObjectByProgID(const char16_t* progId, IVXUnknown* outer, const _GUID* iid, void** object)
{
    if (object == nullptr)
        return RESULT_POINTER;
    *object = nullptr;
    if (progId == nullptr)
        return RESULT_INVALID_ARGUMENT;
    RegisteredClass registered;
    if (_GUID classId; findOffered(progId, classId))
        registered.setClass(classId);
    else if (const std::int32_t result = registered.find(progId); failed(result))
        return result;
    return iid == nullptr ? RESULT_INVALID_ARGUMENT : createObject(registered, outer, iid, object);
}

std::int32_t VXComRegisterClassObject(
    const char16_t* progId, const _GUID* classId, VXCreateFunction create, void* context, std::uint32_t* token) noexcept
{
    if (token == nullptr)
        return RESULT_POINTER;
    *token = 0;
    if (classId == nullptr || create == nullptr)
        return RESULT_INVALID_ARGUMENT;
    try {
        auto offer = std::make_unique<ClassOffer>();
        offer->progId = progId != nullptr ? progId : u"";
        std::transform(offer->progId.begin(), offer->progId.end(), offer->progId.begin(), VXToLowerW);
        offer->classId = *classId;
        offer->create = create;
        offer->context = context;

        holdDuringFork<g_lock>();
        const StateGuard guard(g_lock);
        do
            offer->token = ++g_lastToken;
        while (offer->token == 0 || *findOffer(offer->token) != nullptr);
        *token = offer->token;
        pushFront(g_offers, offer.release());
        ++g_offerCount;
        return RESULT_OK;
    } catch (const std::exception&) {
        return RESULT_OUT_OF_MEMORY;
    }
}

std::int32_t VXComRevokeClassObject(std::uint32_t token) noexcept
{
    const StateGuard guard(g_lock);
    ClassOffer* offer = unlink(findOffer(token));
    if (offer == nullptr)
        return RESULT_NOT_FOUND;
    --g_offerCount;
    const std::uint32_t own = Creation::countOwn(offer); // it would wait for itself
    while (offer->uses != 1 + own)
        pthread_cond_wait(&g_useEnded, g_lock.native());
    endUse(offer);
    return RESULT_OK;
}
