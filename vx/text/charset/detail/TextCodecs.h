#pragma once

#include "vx/text/charset/BTCMultiByte.h"
#include "vx/text/charset/CTBMultiByte.h"
#include "vx/text/charset/IVXTextCodec.h"

namespace vx::text::charset::detail {

/// The decoder of a codec that converts many characters in a call. The results are those of BTCCom.
class BTCText final : public BTCCom {
public:
    BTCText(IVXCharCodec* codec, IVXTextCodec* text);
    ~BTCText() noexcept override;

    // BTCCom
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;

private:
    Reference<IVXTextCodec> m_text;
};

/// The encoder of such a codec.
class CTBText final : public CTBCom {
public:
    CTBText(IVXCharCodec* codec, IVXTextCodec* text);
    ~CTBText() noexcept override;

    // CTBCom
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    /// Stores what leads back to the initial state.
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    /// Drops a held lead surrogate, and otherwise the state: a caller that keeps the lead itself goes on with the text.
    void reset() override;

private:
    bool endText(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen);

    Reference<IVXTextCodec> m_text;
};

} // namespace vx::text::charset::detail
