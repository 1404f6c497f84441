#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/Str1HashMap.h"

#include <atomic>
#include <memory>

namespace vx::text::charset {

/// Finds converters by the name of their encoding, in any case of letters. Filled at the start of the library and read
/// without a lock afterwards: whoever registers a codec later does so while no other thread asks for one.
class VX_API CodecManager {
public:
    CodecManager(const CodecManager&) = delete;
    CodecManager& operator=(const CodecManager&) = delete;

    /// The one manager, made at the first call. Throws IllegalStateException while the library is not started.
    static CodecManager* getInstance();
    /// Forgets all codecs; a manager made later knows none.
    static void freeInstance();

    /// The first registration of a name stands. The classes are found by their registered names; one that nobody knows
    /// throws ClassNotFoundException. A class that is no converter of its side fails at `getConverter`, by a
    /// CastFailedException.
    void registerCodec(const char16_t* name, const char16_t* encoderClassName, const char16_t* decoderClassName);

    /// A new converter with count 0, or null where nobody answers to `name`.
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
