#include "EncodingList.h"

#include <vx/Exception.h>
#include <vx/Reference.h>
#include <vx/Result.h>
#include <vx/io/BufferedWriter.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/io/PrintWriter.h>
#include <vx/io/StdioOutputStream.h>
#include <vx/text/charset/ByteToCharConverter.h>
#include <vx/text/charset/CharsetException.h>
#include <vx/text/charset/EncInfo.h>

#include <vector>

namespace vxconv {

using namespace vx;

namespace {

/// Encodings without a code page are not enumerated.
constexpr VXEncInfo WITHOUT_CODE_PAGE[] = {
    {u"UTF-16LE", 0, 0},
    {u"UTF-16BE", 0, 0},
    {u"UTF-32LE", 0, 0},
    {u"UTF-32BE", 0, 0},
    {u"AMP-7", 0, 0},
};

bool hasConverter(const char16_t* encoding)
{
    using text::charset::ByteToCharConverter;
    try {
        return Reference<ByteToCharConverter>(ByteToCharConverter::getConverter(encoding)) != nullptr;
    } catch (const text::charset::UnknownEncodingException&) {
        return false;
    }
}

std::vector<VXEncInfo> encodings()
{
    std::uint32_t count = 0;
    VXEnumerateEncInfo(&count, nullptr);
    std::vector<VXEncInfo> infos(count);
    throwIfFailed(VXEnumerateEncInfo(&count, infos.data()));
    infos.insert(infos.end(), std::begin(WITHOUT_CODE_PAGE), std::end(WITHOUT_CODE_PAGE));
    return infos;
}

} // namespace

void listEncodings()
{
    constexpr int NAME_WIDTH = 12;

    const Reference<io::OutputStreamWriter> encoder(
        new io::OutputStreamWriter(new io::StdioOutputStream, u"UTF-8", 4096));
    const Reference<io::PrintWriter> out(new io::PrintWriter(encoder.get(), false));
    for (const VXEncInfo& info : encodings()) {
        String line(info.name);
        if (info.codePage != 0) {
            line.resize(NAME_WIDTH, u' ');
            line += String::valueOf(info.codePage);
        }
        if (hasConverter(info.name))
            out->println(line);
    }
    out->flush();
}

} // namespace vxconv
