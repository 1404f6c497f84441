#include "vx/text/charset/CodecManager.h"

#include "vx/Class.h"
#include "vx/Exceptions.h"
#include "vx/GlobalLock.h"
#include "vx/Result.h"
#include "vx/Str1.h"
#include "vx/TerminatedText.h"
#include "vx/detail/OwnModule.h"
#include "vx/sync/ScopedLock.h"
#include "vx/text/charset/BTCMultiByte.h"
#include "vx/text/charset/CTBMultiByte.h"
#include "vx/text/charset/EncInfo.h"
#include "vx/text/charset/detail/CodecStart.h"
#include "vx/text/charset/detail/CodecTable.h"
#include "vx/text/charset/detail/EncodingNames.h"
#include "vx/text/charset/detail/TextCodecs.h"
#include "vxsys/Component.h"

namespace vx::text::charset {

namespace {

/// The encoder class and the decoder class of one name.
class CodecClasses : public ComObject {
public:
    CodecClasses(const Class* encoderClass, const Class* decoderClass) noexcept
        : encoder(encoderClass)
        , decoder(decoderClass)
    {
    }

    const Class* encoder;
    const Class* decoder;
};

/// A name in upper case. Only a long one takes memory.
class Key : public Str1Fixed<64> {
public:
    explicit Key(const char16_t* name)
    {
        copy(name);
        toUpper();
    }
};

constinit std::atomic<bool> g_areRegistered {false};

/// Null if there is no component for exactly this name.
Reference<IVXCharCodec> createCodec(const char16_t* name)
{
    String progId(u"Velmaris.CharCodec.");
    progId.append(name);
    _GUID classId;
    Reference<IVXCharCodec> codec;
    if (failed(VXComClassIDFromProgID(TerminatedText(progId), &classId))
        || failed(VXModuleComCreateObject(
            vx::detail::getOwnModule(), &classId, nullptr, &IVXCharCodec::IID, codec.outVoid()))) {
        return nullptr;
    }
    return codec;
}

sync::LockObject& globalLock()
{
    if (g_pGlobalLock == nullptr)
        throw IllegalStateException();
    return *g_pGlobalLock;
}

} // namespace

constinit std::atomic<CodecManager*> CodecManager::m_instance {nullptr};

CodecManager::CodecManager()
    : m_codecs(std::make_unique<Str1HashMap<Reference<ComObject>>>(101, 0.75F))
{
}

CodecManager::~CodecManager() = default;

CodecManager* CodecManager::getInstance()
{
    if (CodecManager* instance = m_instance.load(std::memory_order_acquire))
        return instance;
    sync::LockObject& lock = globalLock();
    const sync::ScopedLock guard(lock);
    if (m_instance.load(std::memory_order_relaxed) == nullptr)
        m_instance.store(new CodecManager, std::memory_order_release);
    return m_instance.load(std::memory_order_relaxed);
}

void CodecManager::freeInstance()
{
    if (m_instance.load(std::memory_order_acquire) == nullptr)
        return;
    sync::LockObject& lock = globalLock();
    const sync::ScopedLock guard(lock);
    g_areRegistered.store(false, std::memory_order_release);
    delete m_instance.exchange(nullptr);
}

void CodecManager::registerCodec(
    const char16_t* name, const char16_t* encoderClassName, const char16_t* decoderClassName)
{
    const Key key(name);
    if (m_codecs->containsKey(key))
        return;
    m_codecs->put(key,
        Reference<ComObject>(new CodecClasses(Class::forName(encoderClassName), Class::forName(decoderClassName))));
}

Object* CodecManager::getEncoder(const char16_t* name)
{
    return create(name, Side::ENCODER);
}

Object* CodecManager::getDecoder(const char16_t* name)
{
    return create(name, Side::DECODER);
}

Object* CodecManager::create(const char16_t* name, Side side)
{
    if (name == nullptr)
        return nullptr;
    const Key key(name);
    Reference<ComObject> found;
    if (m_codecs->get(key, found)) {
        const auto& classes = static_cast<const CodecClasses&>(*found);
        return (side == Side::ENCODER ? classes.encoder : classes.decoder)->createInstance();
    }

    if (const Reference<IVXCharCodec> codec = createCodec(name)) {
        Reference<IVXTextCodec> text;
        if (!failed(codec->QueryInterface(IVXTextCodec::IID, text.outVoid())))
            return side == Side::ENCODER ? static_cast<Object*>(new detail::CTBText(codec.get(), text.get()))
                                         : new detail::BTCText(codec.get(), text.get());
        if (side == Side::ENCODER)
            return new CTBCom(codec.get());
        return new BTCCom(codec.get());
    }

    VXEncInfo info;
    if (!failed(VXGetEncInfoByName(name, &info)))
        return key == info.name ? nullptr : create(info.name, side);
    const String registered = detail::encodingOf(key);
    return registered.isEmpty() ? nullptr : create(TerminatedText(registered), side);
}

namespace detail {

void registerCodecs()
{
    CodecManager& manager = *CodecManager::getInstance();
    for (const CodecRow& row : codecTable())
        manager.registerCodec(row.name, row.encoderClass, row.decoderClass);
    g_areRegistered.store(true, std::memory_order_release);
}

void freeCodecs()
{
    CodecManager::freeInstance();
}

bool areCodecsRegistered() noexcept
{
    return g_areRegistered.load(std::memory_order_acquire);
}

} // namespace detail

} // namespace vx::text::charset
