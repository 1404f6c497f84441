#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/Str1HashMap.h"

#include <atomic>
#include <memory>

namespace vx::text::charset {

/// Finds converters by the name of their encoding, without regard to case. It is filled when the library starts, and
/// read without a lock afterwards: a program that registers a codec later does so while no other thread uses the
/// manager.
class VX_API CodecManager {
public:
    CodecManager(const CodecManager&) = delete;
    CodecManager& operator=(const CodecManager&) = delete;

    /// The only manager, created by the first call. Throws IllegalStateException while the library is not started.
    static CodecManager* getInstance();
    /// Removes all codecs. A manager that is created later has none.
    static void freeInstance();

    /// Only the first registration of a name is used. The classes are found by their registered names; an unknown one
    /// throws ClassNotFoundException. If a class is no encoder or no decoder, `getConverter` throws
    /// CastFailedException.
    void registerCodec(const char16_t* name, const char16_t* encoderClassName, const char16_t* decoderClassName);

    /// A new converter with reference count 0, or null if `name` is unknown.
    Object* getEncoder(const char16_t* name);
    Object* getDecoder(const char16_t* name);

private:
    CodecManager();
    ~CodecManager();

    enum class Side { ENCODER, DECODER };
    Object* create(const char16_t* name, Side side);

    std::unique_ptr<Str1HashMap<Reference<ComObject>>> m_codecs;

    static std::atomic<CodecManager*> m_instance;
};

} // namespace vx::text::charset
