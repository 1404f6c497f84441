#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/text/charset/BTCMultiByte.h"
#include "vx/text/charset/CTBMultiByte.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vx/util/RWByteBuffer.h"

#include <algorithm>
#include <iterator>

namespace vx::text::charset {

using namespace detail;

namespace {

/// Asks a codec for its name and sizes.
void describe(IVXCharCodec* codec, String& name, std::int32_t& maxBytesPerChar, std::int32_t& maxCharsPerByte)
{
    if (codec == nullptr)
        throwResult(RESULT_POINTER);
    const Reference<String> received(new String); // a component may keep a reference on it
    throwIfFailed(codec->GetName(received.get()));
    throwIfFailed(codec->GetMaxBytesPerChar(&maxBytesPerChar));
    throwIfFailed(codec->GetMaxCharsPerByte(&maxCharsPerByte));
    name = *received;
}

} // namespace

BTCMultiByte::BTCMultiByte() = default;

BTCMultiByte::~BTCMultiByte() noexcept = default;

std::int32_t BTCMultiByte::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    while (pass.in < pass.inEnd) {
        const int left = static_cast<int>(pass.left());
        int length = left;
        std::uint32_t value = convertBytes(pass.in, length);
        if (length == 0)
            break;
        if (length < 0 || length > left) { // as if the hook had changed nothing
            length = left;
            value = REPLACEMENT;
        }

        if (value == REPLACEMENT || value > LAST_CODE_POINT) {
            if (!storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength, 0))
                break;
        } else if (value > 0xFFFF) {
            if (!storePair(pass, value))
                break;
        } else {
            if (pass.room() < 1)
                break;
            if (isSurrogate(value))
                throw InvalidCharacterException(u"Invalid byte sequence (decoded chars in surrogate range)");
            *pass.out++ = static_cast<char16_t>(value);
        }
        pass.in += length;
    }
    return pass.produced();
}

std::int32_t BTCMultiByte::flush(char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    if (m_trail == 0)
        return 0;
    if (std::int64_t {*dstPos} + 1 >= dstLen)
        throw InvalidCharacterException(u"Not enough room in buffer for trailing surrogate");
    dst[*dstPos] = m_trail;
    return 1;
}

void BTCMultiByte::reset()
{
    m_trail = 0;
}

const char16_t* BTCMultiByte::getEncodingName()
{
    return m_name.getData();
}

int BTCMultiByte::getMaxBytesPerChar()
{
    return m_maxBytesPerChar;
}

int BTCMultiByte::getMaxCharsPerByte()
{
    return m_maxCharsPerByte;
}

BTCCom::BTCCom(IVXCharCodec* codec)
    : m_codec(codec)
{
    describe(codec, m_name, m_maxBytesPerChar, m_maxCharsPerByte);
}

BTCCom::~BTCCom() noexcept = default;

std::uint32_t BTCCom::convertBytes(const signed char* bytes, int& length)
{
    std::uint32_t codePoint = REPLACEMENT;
    static_cast<void>(m_codec->ConvertBytes(bytes, &length, &codePoint)); // a failure shows in both values
    return codePoint;
}

CTBMultiByte::CTBMultiByte() = default;

CTBMultiByte::~CTBMultiByte() noexcept = default;

std::int32_t CTBMultiByte::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    while (pass.in < pass.inEnd) {
        const char16_t unit = *pass.in;
        if (m_lead != 0 && !isTrail(unit))
            throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);

        signed char bytes[6];
        const int room = static_cast<int>(std::size(bytes));
        const int count = convertChar(m_lead != 0 ? codePoint(m_lead, unit) : unit, bytes, room);
        if (count >= 1 && count <= room) {
            if (count > pass.room())
                break;
            pass.out = std::copy_n(bytes, count, pass.out);
            m_lead = 0;
        } else if (m_lead == 0 && isLead(unit)) {
            m_lead = unit;
        } else if (m_lead == 0 && isTrail(unit)) {
            throw InvalidCharacterException(u"trailing surrogate without leading");
        } else {
            if (!storeSubstitution(pass, m_substitutionMode, m_substitutionBytes, m_substitutionLength, 0))
                break;
            m_lead = 0;
        }
        ++pass.in;
    }
    return pass.produced();
}

std::int32_t CTBMultiByte::flush(signed char*, std::int32_t*, std::int32_t)
{
    throwIfHeld(m_lead);
    return 0;
}

void CTBMultiByte::reset()
{
    m_lead = 0;
}

const char16_t* CTBMultiByte::getEncodingName()
{
    return m_name.getData();
}

int CTBMultiByte::getMaxBytesPerChar()
{
    return m_maxBytesPerChar;
}

int CTBMultiByte::getMaxCharsPerByte()
{
    return m_maxCharsPerByte;
}

CTBCom::CTBCom(IVXCharCodec* codec)
    : m_codec(codec)
{
    describe(codec, m_name, m_maxBytesPerChar, m_maxCharsPerByte);
}

CTBCom::~CTBCom() noexcept = default;

int CTBCom::convertChar(std::uint32_t codePoint, signed char* bytes, int capacity)
{
    util::RWByteBuffer buffer(capacity);
    buffer.AddRef(); // so that a codec that adds and releases a reference does not destroy it
    if (failed(m_codec->ConvertChar(codePoint, &buffer)))
        return -1;
    const int count = buffer.getLength();
    if (count > capacity || count < 1)
        return 0;
    std::copy_n(buffer.getData(), count, bytes);
    return count;
}

} // namespace vx::text::charset
