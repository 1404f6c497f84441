#include "TextCodec.h"

#include <vx/vorb/Boundary.h>

namespace vx::components {

namespace {

template <class Pass, class In, class Out, class Convert>
std::int32_t convert(const In* input, std::int32_t* length, Out* output, std::int32_t* count, Convert work)
{
    if (length == nullptr || count == nullptr || (input == nullptr && *length > 0) || (output == nullptr && *count > 0))
        return RESULT_POINTER;
    Pass pass {input, input + std::max(*length, 0), output, output + std::max(*count, 0)};
    std::int32_t result = RESULT_OK;
    const std::int32_t failure = vorb::atBoundary([&] { result = work(pass); });
    *length = static_cast<std::int32_t>(pass.in - input);
    *count = static_cast<std::int32_t>(pass.out - output);
    return failed(failure) ? failure : result;
}

} // namespace

const vorb::InterfaceData* TextCodec::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<TextCodec, IVXTextCodec>(), vorb::forwardRow<Codec>(), vorb::endRow()};
    return map;
}

std::int32_t TextCodec::Decode(const signed char* bytes, std::int32_t* length, char16_t* units, std::int32_t* count)
{
    return convert<Decoding>(reinterpret_cast<const unsigned char*>(bytes), length, units, count,
        [this](Decoding& pass) { return decodeText(pass); });
}

std::int32_t TextCodec::Encode(const char16_t* units, std::int32_t* length, signed char* bytes, std::int32_t* count)
{
    return convert<Encoding>(units, length, reinterpret_cast<unsigned char*>(bytes), count,
        [this](Encoding& pass) { return encodeText(pass); });
}

std::int32_t TextCodec::EndText(signed char*, std::int32_t* count)
{
    if (count == nullptr)
        return RESULT_POINTER;
    *count = 0;
    return RESULT_OK;
}

std::int32_t TextCodec::Reset()
{
    return RESULT_OK;
}

} // namespace vx::components
