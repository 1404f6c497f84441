#include "Codec.h"

#include <vx/Exception.h>
#include <vx/Result.h>
#include <vx/util/BufferLocks.h>
#include <vx/util/CopyCharBuffer.h>
#include <vx/vorb/Boundary.h>

#include <algorithm>
#include <cerrno>
#include <iconv.h>

namespace vx::components {

namespace {

constexpr std::uint32_t REPLACEMENT = 0xFFFD;

/// A conversion of the system, which is reset after each character.
class Conversion {
public:
    Conversion(const char* to, const char* from)
        : m_handle(::iconv_open(to, from))
    {
        if (m_handle == reinterpret_cast<iconv_t>(-1))
            throw Exception(String(u"The system has no conversion for ").append(String(from)));
    }
    ~Conversion() { ::iconv_close(m_handle); }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    struct Outcome {
        int taken;
        int given;
        bool needsMore;
    };
    Outcome run(const char* source, int length, char* target, int room) noexcept
    {
        char* in = const_cast<char*>(source);
        auto inLeft = static_cast<std::size_t>(length);
        auto outLeft = static_cast<std::size_t>(room);
        const bool failed = ::iconv(m_handle, &in, &inLeft, &target, &outLeft) == static_cast<std::size_t>(-1);
        const bool needsMore = failed && errno == EINVAL;
        ::iconv(
            m_handle, nullptr, nullptr, &target, &outLeft); // some keep a letter until they know that no mark follows
        return {length - static_cast<int>(inLeft), room - static_cast<int>(outLeft), needsMore};
    }

private:
    iconv_t m_handle;
};

/// A codec that uses the system's converter.
class SystemCodec final : public Codec {
public:
    explicit SystemCodec(const CodePage& codePage)
        : Codec(codePage)
        , m_decoding("UTF-32BE", codePage.systemName)
        , m_encoding(codePage.systemName, "UTF-32BE")
        , m_mostBytes(codePage.number > 1250 && codePage.number < 1259 ? 1 : codePage.maxBytesPerChar)
    {
    }

private:
    int decode(const signed char* bytes, int length, std::uint32_t& codePoint) override
    {
        const auto* const source = reinterpret_cast<const char*>(bytes);
        const int most = std::min(length, m_mostBytes);
        for (int count = 1; count <= most; ++count) {
            unsigned char unit[4];
            const Conversion::Outcome outcome = m_decoding.run(source, count, reinterpret_cast<char*>(unit), 4);
            if (outcome.given == 4) {
                codePoint = static_cast<std::uint32_t>(unit[0]) << 24 | unit[1] << 16 | unit[2] << 8 | unit[3];
                return count;
            }
            if (!outcome.needsMore) // ASCII after an invalid first byte is a separate character
                return count > 1 && bytes[count - 1] >= 0 ? count - 1 : count;
        }
        return length < m_mostBytes ? 0 : most;
    }
    int encode(std::uint32_t codePoint, char* bytes) override
    {
        const unsigned char unit[]
            = {static_cast<unsigned char>(codePoint >> 24), static_cast<unsigned char>(codePoint >> 16),
                static_cast<unsigned char>(codePoint >> 8), static_cast<unsigned char>(codePoint)};
        const Conversion::Outcome outcome
            = m_encoding.run(reinterpret_cast<const char*>(unit), sizeof unit, bytes, MOST_BYTES);
        return outcome.taken == sizeof unit ? outcome.given : 0;
    }

    Conversion m_decoding;
    Conversion m_encoding;
    const int m_mostBytes; ///< of a character in the input, where letters and marks are separate
};

} // namespace

const vorb::InterfaceData* Codec::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<Codec, IVXCharCodec>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

std::int32_t Codec::GetName(IVXCharBuffer* name)
{
    return vorb::atBoundary([&] {
        String text(m_page.name());
        VXCopyCharBuffer(name, &text);
    });
}

std::int32_t Codec::GetMaxBytesPerChar(std::int32_t* value)
{
    return vorb::atBoundary(value, [&] { return m_page.maxBytesPerChar; });
}

std::int32_t Codec::GetMaxCharsPerByte(std::int32_t* value)
{
    return vorb::atBoundary(value, [] { return 1; });
}

std::int32_t Codec::ConvertBytes(const signed char* bytes, std::int32_t* length, std::uint32_t* codePoint)
{
    if (bytes == nullptr || length == nullptr || codePoint == nullptr)
        return RESULT_POINTER;
    *codePoint = REPLACEMENT;
    *length = *length > 0 ? decode(bytes, *length, *codePoint) : 0;
    return RESULT_OK;
}

std::int32_t Codec::ConvertChar(std::uint32_t codePoint, IVXByteBuffer* bytes)
{
    if (bytes == nullptr)
        return RESULT_POINTER;
    char encoded[MOST_BYTES];
    const int count = encode(codePoint, encoded);
    if (count == 0)
        return RESULT_UNMAPPABLE_CHARACTER;
    return vorb::atBoundary([&] {
        util::ByteWriteLock target(*bytes, count);
        std::copy_n(encoded, count, target.data());
        target.setLength(count);
    });
}

Codec* makeCodec(const CodePage& page)
{
    return page.systemName == nullptr ? page.make(page) : new SystemCodec(page);
}

} // namespace vx::components
